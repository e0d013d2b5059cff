#pragma once

#include <QWidget>

class QSlider;
class QSpinBox;

namespace vignar
{

/// A whole number to slide to or to type.
class SliderField : public QWidget
{
    Q_OBJECT

public:
    /// The label, which may hold a mnemonic, names the number to assistive programs. The
    /// slider moves in steps; the field takes every number. unit may be null.
    SliderField(const QString &label, int lowest, int highest, int step, const QString &unit,
                QWidget *parent = nullptr);

    int value() const;
    /// Does not emit edited(). Beyond the range the range grows.
    void setValue(int value);

Q_SIGNALS:
    void edited();

private:
    QSlider *m_slider;
    QSpinBox *m_field;
    int m_step;
};

} // namespace vignar
