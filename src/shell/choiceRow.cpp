#include "shell/choiceRow.h"

#include "classShared/sourceDico.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/sheetComposer.h"
#include "shell/colours.h"
#include "shell/layoutPicture.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int padding = 8;
constexpr int gap = 4;
/// So that short words make buttons of the same width.
constexpr int smallestWidth = 64;

/// A picture with a word under it that stays down.
class ChoiceButton : public QAbstractButton
{
public:
    ChoiceButton(const QSize &pictureSize, IconPainter picture, QWidget *parent)
        : QAbstractButton(parent), m_pictureSize(pictureSize), m_picture(std::move(picture))
    {
        setCheckable(true);
        // Assistive technologies tell by it that one of several is chosen.
        setAutoExclusive(true);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        setFocusPolicy(Qt::StrongFocus);
        setAttribute(Qt::WA_Hover);
    }

    QSize sizeHint() const override
    {
        const QSize words = fontMetrics().size(Qt::TextShowMnemonic, text());
        return {std::max(smallestWidth, words.width() + 2 * padding),
                m_pictureSize.height() + gap + words.height() + 2 * padding};
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        paintFrame(painter);
        const QColor ink = palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled,
                                           QPalette::WindowText);
        const QColor accent = palette().color(QPalette::Highlight);
        const bool isAccented = isChecked() && isEnabled();
        m_picture(painter,
                  QRectF(QPointF((width() - m_pictureSize.width()) / 2, padding), m_pictureSize),
                  isAccented ? mixed(accent, ink, 0.25) : mixed(ink, background(), 0.25));
        painter.setPen(ink);
        const QRect words(0, padding + m_pictureSize.height() + gap, width(),
                          height() - m_pictureSize.height() - gap - 2 * padding);
        painter.drawText(words, Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextShowMnemonic, text());
    }

private:
    QColor background() const { return palette().color(QPalette::Window); }

    void paintFrame(QPainter &painter) const
    {
        const QColor accent = palette().color(QPalette::Highlight);
        QColor fill = Qt::transparent;
        if (isChecked())
            fill = mixed(background(), accent, 0.16);
        else if (underMouse() && isEnabled())
            fill = mixed(background(), palette().color(QPalette::WindowText), 0.06);
        const bool isFramed = isChecked() || hasFocus();
        const double line = hasFocus() ? 2 : 1;
        painter.setBrush(fill);
        painter.setPen(isFramed ? QPen(accent, line) : QPen(Qt::NoPen));
        const double inset = line / 2;
        painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), 6, 6);
    }

    QSize m_pictureSize;
    IconPainter m_picture;
};

} // namespace

ChoiceRow::ChoiceRow(const QString &title, QWidget *parent)
    : QWidget(parent),
      m_title(title),
      m_titleLabel(new QLabel(title)),
      m_row(new QHBoxLayout),
      m_group(new QButtonGroup(this))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(gap);
    column->addWidget(m_titleLabel);
    column->addLayout(m_row);
    m_row->setSpacing(gap);
    m_row->addStretch();
    connect(m_group, &QButtonGroup::idClicked, this, &ChoiceRow::chosenByUser);
    // Tab reaches what is chosen, the arrow keys the others.
    connect(m_group, &QButtonGroup::buttonToggled, this, [this] {
        for (QAbstractButton *button : m_group->buttons())
            button->setFocusPolicy(button->isChecked() ? Qt::StrongFocus : Qt::ClickFocus);
    });
}

QLabel *ChoiceRow::takeTitle()
{
    layout()->removeWidget(m_titleLabel);
    return m_titleLabel;
}

void ChoiceRow::add(int value, const QString &words, const QString &explanation,
                    const QSize &pictureSize, const IconPainter &picture)
{
    auto *button = new ChoiceButton(pictureSize, picture, this);
    m_group->addButton(button, value);
    m_row->insertWidget(m_row->count() - 1, button);
    rename(value, words, explanation);
}

void ChoiceRow::rename(int value, const QString &words, const QString &explanation)
{
    QAbstractButton *button = m_group->button(value);
    button->setText(words);
    button->setToolTip(explanation);
    button->setAccessibleName(m_title + u": "_s + QString(words).remove(u'&'));
    button->setAccessibleDescription(explanation);
    button->updateGeometry();
}

int ChoiceRow::chosen() const
{
    return m_group->checkedId();
}

void ChoiceRow::choose(int value)
{
    if (QAbstractButton *button = m_group->button(value))
        button->setChecked(true);
}

ChoiceRow *makeLayoutChooser(QWidget *parent)
{
    struct Choice {
        Layout layout;
        QString words;
        QString explanation;
    };
    const Choice choices[] = {
        {bigLayout, localised(u"V_layout_big"_s), localised(u"V_layout_bigTip"_s)},
        {medLayout, localised(u"V_layout_med"_s), localised(u"V_layout_medTip"_s)},
        {minLayout, localised(u"V_layout_min"_s), localised(u"V_layout_minTip"_s)},
        {mixLayout, localised(u"V_layout_mix"_s), localised(u"V_layout_mixTip"_s)},
    };
    auto *chooser = new ChoiceRow(localised(u"V_layout"_s), parent);
    for (const Choice &choice : choices)
        chooser->add(
            choice.layout, choice.words, choice.explanation, {42, 52},
            [layout = choice.layout](QPainter &painter, const QRectF &place, const QColor &colour) {
                drawLayout(painter, place, layout, colour);
            });
    return chooser;
}

ChoiceRow *makeFormatChooser(QWidget *parent)
{
    auto *chooser = new ChoiceRow(localised(u"V_format"_s), parent);
    for (const int format : {1, 0}) {
        const FormatWords words = formatWords(format);
        chooser->add(format, words.name, words.explanation, {42, 52},
                     [format](QPainter &painter, const QRectF &place, const QColor &colour) {
                         drawFormat(painter, place, format, colour);
                     });
    }
    return chooser;
}

void namePictureFormat(ChoiceRow &formats)
{
    const FormatWords words = formatWords(1);
    formats.rename(1, words.name, words.explanation);
}

FormatWords formatWords(int format)
{
    const auto words = [](const QString &key) {
        return FormatWords{localised(key), localised(key + u"Tip"_s)};
    };
    if (format == 0)
        return words(u"V_format_pdf"_s);
    switch (pictureFormatOf(prefValue(Prefs::prefSheetFormat))) {
    case SheetFormat::png:
        return words(u"V_format_png"_s);
    case SheetFormat::webp:
        return words(u"V_format_webp"_s);
    default:
        return words(u"V_format_jpeg"_s);
    }
}

} // namespace vignar
