#include "shell/preferences/colourField.h"

#include "classShared/colours.h"
#include "settings/stringTables.h"
#include "shell/colours.h"

#include <QAbstractButton>
#include <QColorDialog>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPainter>
#include <QRegularExpressionValidator>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int swatchWidth = 56;
constexpr double cornerRadius = 4;

} // namespace

/// A button filled with the colour that it changes.
class ColourSwatch : public QAbstractButton
{
public:
    explicit ColourSwatch(QWidget *parent) : QAbstractButton(parent)
    {
        setFocusPolicy(Qt::StrongFocus);
        setAttribute(Qt::WA_Hover);
    }

    QSize sizeHint() const override { return {swatchWidth, fontMetrics().height() + 12}; }

    void setColour(const QColor &colour)
    {
        m_colour = colour;
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor ink = palette().color(QPalette::WindowText);
        const bool isMarked = hasFocus() || (underMouse() && isEnabled());
        const QColor edge = isMarked ? palette().color(QPalette::Highlight)
                                     : mixed(ink, palette().color(QPalette::Window), 0.5);
        const double line = hasFocus() ? 2 : 1;
        painter.setPen(QPen(edge, line));
        QColor fill = m_colour;
        fill.setAlphaF(isEnabled() ? 1.0F : 0.4F);
        painter.setBrush(fill);
        const double inset = line / 2;
        painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius,
                                cornerRadius);
    }

private:
    QColor m_colour;
};

ColourField::ColourField(const QString &label, QWidget *parent)
    : QWidget(parent),
      m_name(QString(label).remove(u'&')),
      m_colour(Qt::white),
      m_swatch(new ColourSwatch(this)),
      m_digits(new QLineEdit)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(m_swatch);
    row->addWidget(m_digits);
    row->addStretch();

    m_swatch->setToolTip(localised(u"V_prefs_chooseColour"_s));
    m_swatch->setAccessibleName(m_name);
    m_swatch->setAccessibleDescription(localised(u"V_prefs_chooseColour"_s));
    m_digits->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_digits->setFixedWidth(m_digits->fontMetrics().horizontalAdvance(u"#8888888888"_s));
    m_digits->setToolTip(localised(u"V_prefs_colourDigits"_s));
    m_digits->setAccessibleName(u"%1 (%2)"_s.arg(m_name, localised(u"V_prefs_colourDigits"_s)));
    static const QRegularExpression digits(u"#?[0-9A-Fa-f]{0,6}"_s);
    m_digits->setValidator(new QRegularExpressionValidator(digits, m_digits));
    setFocusProxy(m_swatch);
    setColour(u"ffffff"_s);

    connect(m_swatch, &ColourSwatch::clicked, this, &ColourField::openDialog);
    connect(m_digits, &QLineEdit::textEdited, this, &ColourField::typed);
    // Half a colour becomes the whole one that is still in use.
    connect(m_digits, &QLineEdit::editingFinished, this, [this] { setColour(colour()); });
}

QString ColourField::colour() const
{
    return colorToHexaRgb(m_colour);
}

void ColourField::setColour(const QString &digits)
{
    if (const auto colour = colorHexaRgb(digits))
        m_colour = *colour;
    m_swatch->setColour(m_colour);
    m_digits->setText(u'#' + colour());
}

void ColourField::take(const QColor &colour)
{
    if (!colour.isValid() || colour.rgb() == m_colour.rgb())
        return;
    setColour(colorToHexaRgb(colour));
    Q_EMIT edited();
}

void ColourField::typed(const QString &text)
{
    const auto colour = colorHexaRgb(text);
    if (!colour || colour->rgb() == m_colour.rgb())
        return;
    // The text stays as it is being typed.
    m_colour = *colour;
    m_swatch->setColour(m_colour);
    Q_EMIT edited();
}

void ColourField::openDialog()
{
    if (m_dialog) {
        m_dialog->raise();
        m_dialog->activateWindow();
        return;
    }
    m_dialog = new QColorDialog(m_colour, this);
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    m_dialog->setWindowTitle(m_name);
    connect(m_dialog, &QColorDialog::currentColorChanged, this, &ColourField::take);
    connect(m_dialog, &QColorDialog::rejected, this, [this, before = m_colour] { take(before); });
    m_dialog->open();
}

} // namespace vignar
