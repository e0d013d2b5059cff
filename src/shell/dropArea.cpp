#include "shell/dropArea.h"

#include "classShared/standIns.h"
#include "settings/stringTables.h"
#include "shell/colours.h"
#include "shell/icons.h"

#include <QDragEnterEvent>
#include <QFile>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QToolButton>
#include <QUrl>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int pictureSize = 64;
constexpr int margin = 16;
constexpr int gap = 8;
constexpr std::chrono::milliseconds turnInterval{60};
constexpr int turnStep = 24;

} // namespace

QStringList localPaths(const QList<QUrl> &urls)
{
    QStringList paths;
    for (const QUrl &url : urls) {
        if (!url.isLocalFile())
            continue;
        const QByteArray bytes =
            QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
        const bool isPlain = QFile::encodeName(QFile::decodeName(bytes)) == bytes;
        const QString path = isPlain ? url.toLocalFile() : openablePath(bytes);
        if (!path.isNull())
            paths.append(path);
    }
    return paths;
}

QStringList localPaths(const QMimeData &data)
{
    return localPaths(data.urls());
}

DropArea::DropArea(QWidget *parent) : QAbstractButton(parent), m_stop(new QToolButton(this))
{
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);
    setMinimumSize(360, 208);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setToolTip(localised(u"V_drop_tip"_s));

    m_stop->setIcon(themedIcon(u"process-stop"_s));
    m_stop->setText(localised(u"V_analysis_stop"_s));
    m_stop->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_stop->setAutoRaise(true);
    m_stop->setCursor(Qt::ArrowCursor);
    m_stop->setFocusPolicy(Qt::StrongFocus);
    m_stop->hide();
    connect(m_stop, &QToolButton::clicked, this, &DropArea::stopRequested);

    m_turn.setInterval(turnInterval);
    connect(&m_turn, &QTimer::timeout, this, [this] {
        m_angle = (m_angle + turnStep) % 360;
        update();
    });
}

QSize DropArea::sizeHint() const
{
    return {440, 240};
}

void DropArea::setCaption(const QString &caption)
{
    m_caption = caption.trimmed();
    updateAccessibleName();
    update();
}

void DropArea::setBusy(bool isBusy)
{
    m_isBusy = isBusy;
    if (isBusy)
        m_turn.start();
    else
        m_turn.stop();
    updateAccessibleName();
    update();
}

void DropArea::setActivity(const QString &words, const QString &fileName)
{
    m_activity = words;
    m_fileName = fileName;
    updateAccessibleName();
    update();
}

void DropArea::setStopVisible(bool isVisible)
{
    // Its focus must not fall on some other control that the next key then presses.
    if (!isVisible && m_stop->hasFocus())
        setFocus();
    m_stop->setVisible(isVisible);
}

void DropArea::setDropWelcome(bool isWelcome)
{
    m_isWelcome = isWelcome;
    update();
}

void DropArea::updateAccessibleName()
{
    const QString words = m_isBusy && !m_activity.isEmpty() ? m_activity : m_caption;
    setAccessibleName(words);
    setAccessibleDescription(m_isBusy ? m_fileName : localised(u"V_drop_hint"_s));
}

void DropArea::dragEnterEvent(QDragEnterEvent *event)
{
    if (localPaths(*event->mimeData()).isEmpty())
        return;
    // Never a move: the file manager would remove what it believes to be ours now.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    setDropWelcome(true);
}

void DropArea::dragLeaveEvent(QDragLeaveEvent *)
{
    setDropWelcome(false);
}

void DropArea::dropEvent(QDropEvent *event)
{
    setDropWelcome(false);
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (const QStringList paths = localPaths(*event->mimeData()); !paths.isEmpty())
        Q_EMIT dropped(paths);
}

void DropArea::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void DropArea::resizeEvent(QResizeEvent *)
{
    m_stop->adjustSize();
    m_stop->move((width() - m_stop->width()) / 2, height() - m_stop->height() - margin / 2);
}

void DropArea::paintFrame(QPainter &painter) const
{
    const QColor accent = palette().color(QPalette::Highlight);
    const QColor base = palette().color(QPalette::Base);
    const QColor ink = palette().color(QPalette::Text);
    const bool isAccented = m_isWelcome || hasFocus();
    QPen line(isAccented ? accent : mixed(ink, base, underMouse() ? 0.45 : 0.62),
              isAccented ? 2 : 1.5);
    if (!m_isWelcome)
        line.setDashPattern({5, 4});
    painter.setPen(line);
    painter.setBrush(m_isWelcome ? mixed(base, accent, 0.12) : base);
    painter.drawRoundedRect(QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5), 12, 12);
}

void DropArea::paintWheel(QPainter &painter, const QRectF &place) const
{
    const QRectF circle = place.adjusted(12, 12, -12, -12);
    const QColor accent = palette().color(QPalette::Highlight);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(mixed(palette().color(QPalette::Base), accent, 0.25), 4));
    painter.drawEllipse(circle);
    painter.setPen(QPen(accent, 4, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(circle, -m_angle * 16, 90 * 16);
}

void DropArea::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintFrame(painter);

    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * 1.25);
    large.setWeight(QFont::DemiBold);
    const QFontMetrics largeMetrics(large);
    const int wordsWidth = width() - 2 * margin;
    const QString words = m_isBusy && !m_activity.isEmpty() ? m_activity : m_caption;
    const QRect bounds =
        largeMetrics.boundingRect(QRect(0, 0, wordsWidth, height()), Qt::TextWordWrap, words);
    const int hintHeight = fontMetrics().height();
    const int all = pictureSize + 2 * gap + bounds.height() + gap / 2 + hintHeight;
    int y = (height() - all) / 2 - (m_stop->isVisible() ? m_stop->height() / 2 : 0);

    const QRectF picture((width() - pictureSize) / 2, y, pictureSize, pictureSize);
    if (m_isBusy)
        paintWheel(painter, picture);
    else
        drawOwnIcon(painter, picture, u"drop-videos"_s,
                    m_isWelcome ? palette().color(QPalette::Highlight) : secondaryText(palette()));
    y += pictureSize + 2 * gap;
    painter.setFont(large);
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(QRect(margin, y, wordsWidth, bounds.height()),
                     Qt::AlignHCenter | Qt::TextWordWrap, words);
    y += bounds.height() + gap / 2;
    painter.setFont(font());
    painter.setPen(secondaryText(palette()));
    const QString hint = m_isBusy ? m_fileName : localised(u"V_drop_hint"_s);
    painter.drawText(QRect(margin, y, wordsWidth, hintHeight), Qt::AlignHCenter,
                     fontMetrics().elidedText(hint, Qt::ElideMiddle, wordsWidth));
}

} // namespace vignar
