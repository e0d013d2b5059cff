#include "shell/preferences/preferenceControl.h"

#include "classShared/paths.h"
#include "settings/preferenceRanges.h"
#include "sheet/thumbnailPlan.h"
#include "shell/choiceRow.h"
#include "shell/preferences/colourField.h"
#include "shell/preferences/folderField.h"
#include "shell/preferences/presetChooser.h"
#include "shell/preferences/sliderField.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSpinBox>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

using Edited = std::function<void()>;

const PreferenceRange &rangeOf(const PreferenceRow &row)
{
    const PreferenceRange *range = preferenceRange(row.key);
    Q_ASSERT(range);
    return *range;
}

PreferenceControl makeCheckBox(const PreferenceRow &row, const Edited &edited)
{
    auto *box = new QCheckBox(row.label());
    QObject::connect(box, &QCheckBox::clicked, box, edited);
    return {box, box, [box] { return int(box->isChecked()); },
            [box](const QVariant &value) { box->setChecked(value.toInt() != 0); }};
}

PreferenceControl makeTextField(const PreferenceRow &row, const Edited &edited)
{
    auto *field = new QLineEdit;
    field->setPlaceholderText(row.placeholder());
    const auto longest = qsizetype(rangeOf(row).highest);
    QObject::connect(field, &QLineEdit::textEdited, field, [field, longest, edited] {
        if (const QString cut = cutToBytes(field->text(), longest); cut != field->text())
            field->setText(cut);
        edited();
    });
    // An emptied field is a text, and none at all could not be stored.
    return {field, field, [field] { return field->text().isNull() ? u""_s : field->text(); },
            [field](const QVariant &value) {
                // Setting the same text would send the cursor to its end while typing.
                if (field->text() != value.toString())
                    field->setText(value.toString());
            }};
}

PreferenceControl makeFolderField(const PreferenceRow &row, const Edited &edited)
{
    auto *field = new FolderField(row.label());
    QObject::connect(field, &FolderField::edited, field, edited);
    return {field, field->focusProxy(), [field] { return field->path(); },
            [field](const QVariant &value) { field->setPath(value.toString()); }};
}

PreferenceControl makeColourField(const PreferenceRow &row, const Edited &edited)
{
    auto *field = new ColourField(row.label());
    QObject::connect(field, &ColourField::edited, field, edited);
    return {field, field->focusProxy(), [field] { return field->colour(); },
            [field](const QVariant &value) { field->setColour(value.toString()); }};
}

PreferenceControl makeSlider(const PreferenceRow &row, const Edited &edited)
{
    const PreferenceRange &range = rangeOf(row);
    auto *field = new SliderField(row.label(), int(range.lowest), int(range.highest), int(row.step),
                                  row.unit());
    QObject::connect(field, &SliderField::edited, field, edited);
    return {field, field->focusProxy(), [field] { return double(field->value()); },
            [field](const QVariant &value) { field->setValue(qRound(value.toDouble())); }};
}

template <class Field, class Number>
PreferenceControl makeNumberField(const PreferenceRow &row, const Edited &edited)
{
    auto *field = new Field;
    field->setRange(Number(rangeOf(row).lowest), Number(rangeOf(row).highest));
    field->setSingleStep(Number(row.step));
    if (!row.unit().isNull())
        field->setSuffix(u' ' + row.unit());
    QObject::connect(field, &Field::valueChanged, field, edited);
    return {field, field, [field] { return field->value(); },
            [field](const QVariant &value) {
                const QSignalBlocker blocker(field);
                field->setValue(value.value<Number>());
            }};
}

PreferenceControl makeDecimalField(const PreferenceRow &row, const Edited &edited)
{
    PreferenceControl control = makeNumberField<QDoubleSpinBox, double>(row, edited);
    static_cast<QDoubleSpinBox *>(control.widget)->setDecimals(1);
    return control;
}

void showLimit(QComboBox &box, int limit)
{
    int index = 0;
    while (index < box.count() && box.itemText(index).toInt() < limit)
        ++index;
    // A number between whole rows is still the user's.
    if (index == box.count() || box.itemText(index).toInt() != limit)
        box.insertItem(index, QString::number(limit));
    box.setCurrentIndex(index);
}

PreferenceControl makeLimit(const PreferenceRow &row, const Edited &edited)
{
    auto *box = new QComboBox;
    const LayoutGrid grid = layoutGrid(layoutOfLimit(row.key));
    for (int line = 1; line <= grid.maxRows; ++line)
        box->addItem(QString::number(line * grid.columns));
    QObject::connect(box, &QComboBox::activated, box, edited);
    return {box, box, [box] { return box->currentText(); },
            [box](const QVariant &value) { showLimit(*box, value.toInt()); }};
}

PreferenceControl makeChoice(const PreferenceRow &row, const Edited &edited)
{
    auto *box = new QComboBox;
    for (const PreferenceRow::Option &option : row.options)
        box->addItem(QLatin1String(option.name), QString(QLatin1String(option.value)));
    QObject::connect(box, &QComboBox::activated, box, edited);
    return {box, box, [box] { return box->currentData(); },
            [box](const QVariant &value) {
                // What is unknown counts as the first.
                box->setCurrentIndex(std::max(0, box->findData(value.toString())));
            }};
}

/// Segments are values from 0 on.
PreferenceControl makeChooser(ChoiceRow *chooser, int segmentCount, const Edited &edited)
{
    QObject::connect(chooser, &ChoiceRow::chosenByUser, chooser, edited);
    return {chooser, chooser, [chooser] { return chooser->chosen(); },
            [chooser](const QVariant &value) { chooser->choose(value.toInt()); }, segmentCount};
}

PreferenceControl makeFormatControl(const Edited &edited)
{
    ChoiceRow *chooser = makeFormatChooser(nullptr);
    PreferenceControl control = makeChooser(chooser, 2, edited);
    // Every format but 0 is a picture.
    control.show = [chooser](const QVariant &value) {
        namePictureFormat(*chooser);
        chooser->choose(value.toInt() == 0 ? 0 : 1);
    };
    return control;
}

PreferenceControl made(const PreferenceRow &row, const Edited &edited)
{
    switch (row.kind) {
    case ControlKind::checkBox:
        return makeCheckBox(row, edited);
    case ControlKind::text:
        return makeTextField(row, edited);
    case ControlKind::folder:
        return makeFolderField(row, edited);
    case ControlKind::colour:
        return makeColourField(row, edited);
    case ControlKind::slider:
        return makeSlider(row, edited);
    case ControlKind::decimal:
        return makeDecimalField(row, edited);
    case ControlKind::integer:
        return makeNumberField<QSpinBox, int>(row, edited);
    case ControlKind::limit:
        return makeLimit(row, edited);
    case ControlKind::choice:
        return makeChoice(row, edited);
    case ControlKind::layoutChoice:
        return makeChooser(makeLayoutChooser(nullptr), 4, edited);
    case ControlKind::formatChoice:
        return makeFormatControl(edited);
    case ControlKind::presetChoice:
        return makeChooser(makePresetChooser(), ownColours() + 1, edited);
    }
    return {};
}

} // namespace

PreferenceControl makePreferenceControl(const PreferenceRow &row,
                                        const std::function<void()> &edited)
{
    PreferenceControl control = made(row, edited);
    control.widget->setObjectName(row.key);
    if (const QString tip = row.toolTip(); !tip.isNull()) {
        control.widget->setToolTip(tip);
        control.buddy->setAccessibleDescription(tip);
    }
    if (control.widget->accessibleName().isEmpty())
        control.widget->setAccessibleName(QString(row.label()).remove(u'&'));
    return control;
}

} // namespace vignar
