#include "shell/preferences/sheetPreview.h"

#include "app/rowChoices.h"
#include "app/sheetDisplay.h"
#include "app/sheetDriver.h"
#include "classShared/format.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/imageExport.h"
#include "sheet/sheetDrawing.h"
#include "shell/colours.h"
#include "shell/preferences/previewPictures.h"
#include "shell/preferences/sampleSource.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QPointer>
#include <QThreadPool>

#include <limits>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Room for the shadow around the page.
constexpr int margin = 6;
/// As much of a sheet as a preview shows on the finest screens.
constexpr QSize largestPicture{2000, 2000};

/// Between the record of a source and the layout that it was planned for, in one
/// dictionary, so that one comparison tells whether a plan still holds.
SourceDico planningInputOf(const SourceDico &source, int layout)
{
    SourceDico input = SheetDriver::planningInput(source, layout);
    write(input, Keys::out, layout);
    return input;
}

/// The picture of a file, reduced while it is read; its whole size in size.
QImage reducedPicture(const QString &path, QSize &size)
{
    QImageReader reader(path);
    size = reader.size();
    if (size.width() > largestPicture.width() || size.height() > largestPicture.height())
        reader.setScaledSize(size.scaled(largestPicture, Qt::KeepAspectRatio));
    return reader.read();
}

void paintShadow(QPainter &painter, const QRectF &page)
{
    painter.setPen(Qt::NoPen);
    for (int ring = 4; ring > 0; --ring) {
        painter.setBrush(QColor(0, 0, 0, 14));
        painter.drawRoundedRect(page.adjusted(-ring, 1 - ring, ring, 1 + ring), ring, ring);
    }
}

} // namespace

SheetPreview::SheetPreview(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAccessibleName(localised(u"V_preview"_s));
    m_timer.setSingleShot(true);
    m_timer.setInterval(0);
    connect(&m_timer, &QTimer::timeout, this, &SheetPreview::drawIfVisible);
}

SheetPreview::~SheetPreview() = default;

void SheetPreview::setRow(const SourceDico &source, std::optional<int> layout,
                          const QStringList &pictures)
{
    // A row that changes in nothing that shows need not read its files again.
    if (m_row && m_row->source == source && m_row->layout == layout && m_row->pictures == pictures)
        return;
    const QString poster = readStr(source, Keys::imgPathStr);
    m_row = Row{source, layout, pictures,
                pictures.isEmpty() && !poster.isEmpty() ? loadedPicture(poster) : QImage()};
    m_planningInput.clear();
    refresh();
}

void SheetPreview::setSheet(const QString &path)
{
    const Sheet sheet{path, QFileInfo(path).lastModified(), {}, {}};
    if (sheet.path == m_sheet.path && sheet.modified == m_sheet.modified)
        return;
    m_sheet = sheet;
    refresh();
    if (path.isEmpty())
        return;
    // Large sheets take a moment to read.
    QThreadPool::globalInstance()->start([sheet, self = QPointer<SheetPreview>(this)] {
        Sheet read = sheet;
        read.picture = reducedPicture(read.path, read.size);
        QMetaObject::invokeMethod(qApp, [read, self] {
            if (self)
                self->takeSheet(read);
        });
    });
}

void SheetPreview::takeSheet(const Sheet &sheet)
{
    if (sheet.path != m_sheet.path || sheet.modified != m_sheet.modified)
        return;
    m_sheet = sheet;
    refresh();
}

void SheetPreview::clearRow()
{
    if (!m_row)
        return;
    m_row.reset();
    m_planningInput.clear();
    refresh();
}

void SheetPreview::refresh()
{
    m_isStale = true;
    m_timer.start();
}

void SheetPreview::drawIfVisible()
{
    if (m_isStale && isVisible())
        draw();
}

QString SheetPreview::description()
{
    if (m_isStale)
        draw();
    return m_description;
}

QImage SheetPreview::picture()
{
    if (m_isStale)
        draw();
    return m_picture;
}

int SheetPreview::layoutIndex() const
{
    return m_row && m_row->layout ? *m_row->layout : prefValue(Prefs::prefCheckMatrix);
}

/// Reads the file's properties and writes to the log: only when the plan is another one.
void SheetPreview::plan()
{
    const SourceDico input = planningInputOf(m_row ? m_row->source : sampleSource(), layoutIndex());
    if (m_pictures && input == m_planningInput)
        return;
    m_planningInput = input;
    const ThumbnailPlan plan = planThumbnails(layoutIndex(), input);
    m_planned = plannedDisplay(plan, input);
    if (!m_row)
        completeSampleTexts(m_planned);
    m_pictures =
        m_row && !m_row->pictures.isEmpty()
            ? std::make_unique<PreviewPictures>(m_row->pictures)
            : std::make_unique<PreviewPictures>(plan.count, m_row ? m_row->poster : QImage());
}

void SheetPreview::draw()
{
    m_isStale = false;
    m_timer.stop();
    m_picture = {};
    if (!m_sheet.picture.isNull()) {
        drawMadeSheet();
        return;
    }
    plan();
    if (m_pictures->count() == 0)
        m_description = localisedCapitalised(u"V_reason_noRow"_s);
    else
        drawSheet(sheetDisplay(m_planned, layoutIndex()));
    tell();
}

void SheetPreview::tell()
{
    setAccessibleDescription(m_description);
    update();
    Q_EMIT drawn();
}

void SheetPreview::drawMadeSheet()
{
    const QSize room = size().shrunkBy({margin, margin, margin, margin}) * devicePixelRatioF();
    m_picture = m_sheet.picture.scaled(room.expandedTo({1, 1}), Qt::KeepAspectRatio,
                                       Qt::SmoothTransformation);
    m_picture.setDevicePixelRatio(devicePixelRatioF());
    m_description = filled(localised(u"V_preview_made"_s), QString::number(m_sheet.size.width()),
                           QString::number(m_sheet.size.height()));
    tell();
}

/// Why the sheet could not be made, as a sentence; null where it can.
QString SheetPreview::faultOf(Dico display) const
{
    BatchEntry row;
    write(row, Keys::out, layoutIndex());
    write(row, Keys::dpi, prefValue(Prefs::prefDpi));
    const RowChoices choices = choicesOf(row);
    if (choices.width > 0)
        write(display, Keys::pageWidth, choices.width);
    const Result<void> fits = sheetFits(display, m_pictures->count(), choices.format);
    QString fault = fits ? QString() : fits.reason();
    if (!fault.isEmpty())
        fault[0] = fault.at(0).toUpper();
    return fault;
}

void SheetPreview::drawSheet(const Dico &display)
{
    if (const QString fault = faultOf(display); !fault.isNull()) {
        m_description = fault;
        return;
    }
    // The file's limits have been looked at; this page is drawn as small as the window.
    const auto sheet =
        sheetDrawing(display, m_pictures->count(), 1, std::numeric_limits<int>::max());
    if (!sheet) {
        m_description = localisedCapitalised(u"V_reason_noRoom"_s);
        return;
    }
    const QSizeF room = QSizeF(size().shrunkBy({margin, margin, margin, margin}));
    const QSizeF page = sheet->geometry.page;
    const double fit = std::min({room.width() / page.width(), room.height() / page.height(), 1.0});
    const double scale = std::max(fit, 0.02) * devicePixelRatioF();
    m_picture = QImage((page * scale).toSize().expandedTo({1, 1}), QImage::Format_RGB32);
    m_picture.setDevicePixelRatio(devicePixelRatioF());
    m_pictures->setScale(scale);
    QPainter painter(&m_picture);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.scale(scale / devicePixelRatioF(), scale / devicePixelRatioF());
    sheet->draw(painter, *m_pictures);
    describe(sheet->geometry.page);
}

void SheetPreview::describe(const QSize &page)
{
    const QString count = QString::number(m_pictures->count());
    if (prefValue(Prefs::prefDpi) == 0) {
        m_description = filled(localised(u"V_preview_pdf"_s), count);
        return;
    }
    const int width = prefValue(Prefs::prefComputerWidthAuto) ? basePageWidth
                                                              : prefValue(Prefs::prefComputerWidth);
    const int height = int(double(width) * page.height() / page.width());
    m_description = filled(localised(u"V_preview_jpeg"_s), count, QString::number(width),
                           QString::number(height));
}

void SheetPreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_picture.isNull()) {
        painter.setPen(secondaryText(palette()));
        painter.drawText(rect().adjusted(margin, margin, -margin, -margin),
                         Qt::AlignCenter | Qt::TextWordWrap, m_isStale ? QString() : m_description);
        return;
    }
    const QSizeF size = m_picture.deviceIndependentSize();
    const QPointF corner(std::floor((width() - size.width()) / 2), margin);
    const QRectF page(corner, size);
    paintShadow(painter, page);
    painter.drawImage(corner, m_picture);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(128, 128, 128, 110), 1));
    painter.drawRect(page.adjusted(-0.5, -0.5, 0.5, 0.5));
}

void SheetPreview::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    refresh();
}

void SheetPreview::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Not an event later: the first look would be an empty one.
    drawIfVisible();
}

} // namespace vignar
