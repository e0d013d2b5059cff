#include "shell/preferences/sliderField.h"

#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>

namespace vignar
{

SliderField::SliderField(const QString &label, int lowest, int highest, int step,
                         const QString &unit, QWidget *parent)
    : QWidget(parent), m_slider(new QSlider(Qt::Horizontal)), m_field(new QSpinBox), m_step(step)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(m_slider, 1);
    row->addWidget(m_field);
    for (QWidget *part : {static_cast<QWidget *>(m_slider), static_cast<QWidget *>(m_field)})
        part->setAccessibleName(QString(label).remove(u'&'));
    m_slider->setRange(lowest / step, highest / step);
    m_slider->setPageStep(10);
    m_slider->setMinimumWidth(120);
    // One edit for each movement, told when it ends; the field shows where it is.
    m_slider->setTracking(false);
    m_field->setRange(lowest, highest);
    m_field->setSingleStep(step);
    // Digits of a number that is being typed are no widths to draw sheets in.
    m_field->setKeyboardTracking(false);
    if (!unit.isNull())
        m_field->setSuffix(u' ' + unit);
    setFocusProxy(m_field);

    connect(m_slider, &QSlider::sliderMoved, this, [this](int position) {
        const QSignalBlocker blocker(m_field);
        m_field->setValue(position * m_step);
    });
    connect(m_slider, &QSlider::valueChanged, this, [this](int position) {
        setValue(position * m_step);
        Q_EMIT edited();
    });
    connect(m_field, &QSpinBox::valueChanged, this, [this](int value) {
        setValue(value);
        Q_EMIT edited();
    });
}

int SliderField::value() const
{
    return m_field->value();
}

void SliderField::setValue(int value)
{
    const QSignalBlocker sliderBlocker(m_slider);
    const QSignalBlocker fieldBlocker(m_field);
    m_field->setRange(std::min(m_field->minimum(), value), std::max(m_field->maximum(), value));
    m_field->setValue(value);
    m_slider->setValue(value / m_step);
}

} // namespace vignar
