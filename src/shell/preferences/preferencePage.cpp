#include "shell/preferences/preferencePage.h"

#include "shell/choiceRow.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QScrollBar>

namespace vignar
{

namespace
{

constexpr int margin = 12;
constexpr int rowGap = 8;
constexpr int groupGap = 8;
constexpr int columnGap = 12;

} // namespace

PreferencePage::PreferencePage(QWidget *parent) : QScrollArea(parent)
{
    auto *content = new QWidget;
    m_form = new QFormLayout(content);
    m_form->setContentsMargins(margin, margin, margin, margin);
    m_form->setVerticalSpacing(rowGap);
    m_form->setHorizontalSpacing(columnGap);
    m_form->setLabelAlignment(Qt::AlignTrailing | Qt::AlignVCenter);
    m_form->setFormAlignment(Qt::AlignLeading | Qt::AlignTop);
    m_form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    m_form->setRowWrapPolicy(QFormLayout::DontWrapRows);
    setWidget(content);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    // It follows the focus of the controls in it.
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The page of the tabs shows through.
    viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
}

QWidget *PreferencePage::labelOf(const PreferenceRow &row, const PreferenceControl &control) const
{
    if (auto *chooser = qobject_cast<ChoiceRow *>(control.widget))
        return chooser->takeTitle();
    if (row.kind == ControlKind::checkBox)
        return row.groupLabel().isNull() ? nullptr : new QLabel(row.groupLabel());
    auto *label = new QLabel(row.label());
    label->setBuddy(control.buddy);
    return label;
}

void PreferencePage::add(const PreferenceRow &row, const PreferenceControl &control)
{
    if (row.beginsGroup && m_form->rowCount() > 0)
        m_form->addItem(new QSpacerItem(0, groupGap, QSizePolicy::Minimum, QSizePolicy::Fixed));
    QWidget *label = labelOf(row, control);
    if (row.isPaired)
        addPaired(label, control.widget, row.beginsGroup);
    else
        m_form->addRow(label, control.widget);
    m_parts.insert(row.key, {label, control.widget});
}

void PreferencePage::addNote(QWidget *note)
{
    m_form->addRow(nullptr, note);
}

void PreferencePage::addPaired(QWidget *label, QWidget *box, bool beginsGroup)
{
    if (beginsGroup || !m_pairs) {
        auto *pairs = new QWidget;
        m_pairs = new QGridLayout(pairs);
        m_pairs->setContentsMargins(0, 0, 0, 0);
        m_pairs->setVerticalSpacing(rowGap);
        m_pairs->setHorizontalSpacing(2 * columnGap);
        m_pairs->setColumnStretch(2, 1);
        m_form->addRow(label, pairs);
    }
    const int place = m_pairs->count();
    m_pairs->addWidget(box, place / 2, place % 2);
}

void PreferencePage::setRowEnabled(const QString &key, bool isEnabled)
{
    const Parts parts = m_parts.value(key);
    parts.control->setEnabled(isEnabled);
    if (parts.label)
        parts.label->setEnabled(isEnabled);
}

QSize PreferencePage::sizeHint() const
{
    return widget()->sizeHint() + QSize(verticalScrollBar()->sizeHint().width(), 0);
}

QSize PreferencePage::minimumSizeHint() const
{
    const int width = widget()->minimumSizeHint().width() + verticalScrollBar()->sizeHint().width();
    return {width, 200};
}

} // namespace vignar
