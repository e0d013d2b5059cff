#pragma once

#include <QColor>
#include <QPointer>
#include <QWidget>

class QColorDialog;
class QLineEdit;

namespace vignar
{

class ColourSwatch;

/// A colour: a swatch that opens the colour dialog, and its six hexadecimal digits to type
/// or paste. Always shows a colour.
class ColourField : public QWidget
{
    Q_OBJECT

public:
    /// The label, which may hold a mnemonic, names the colour to assistive programs.
    explicit ColourField(const QString &label, QWidget *parent = nullptr);

    /// Six lower-case hexadecimal digits.
    QString colour() const;
    /// Does not emit edited(); a text that is no colour leaves the one before.
    void setColour(const QString &digits);

Q_SIGNALS:
    /// Also while the user is trying colours out in the dialog.
    void edited();

private:
    void take(const QColor &colour);
    void typed(const QString &text);
    void openDialog();

    QString m_name;
    QColor m_colour;
    ColourSwatch *m_swatch;
    QLineEdit *m_digits;
    QPointer<QColorDialog> m_dialog;
};

} // namespace vignar
