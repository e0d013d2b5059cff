#include "shell/preferences/preferencesDialog.h"

#include "classShared/format.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "shell/colours.h"
#include "shell/noticeBar.h"
#include "shell/preferences/colourPresets.h"
#include "shell/preferences/nameExample.h"
#include "shell/preferences/preferencePage.h"
#include "shell/preferences/sheetPreview.h"
#include "shell/preferences/storedPreferences.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int gap = 12;
constexpr int previewWidth = 300;
/// Shows every page whole in the fonts of most desktops, and fits a small screen.
constexpr QSize usualSize{860, 620};

/// By PreferencePane.
constexpr QLatin1String paneTexts[preferencePaneCount] = {
    QLatin1String("V_prefs_general"), QLatin1String("V_prefs_sheet"),
    QLatin1String("V_prefs_thumbnails"), QLatin1String("V_prefs_output")};

} // namespace

PreferencesDialog::PreferencesDialog(QWidget *parent)
    : QDialog(parent),
      m_tabs(new QTabWidget),
      m_notices(new NoticeBar),
      m_preview(new SheetPreview),
      m_description(new QLabel),
      m_nameExample(new NameExample)
{
    setWindowTitle(localised(u"V_prefs"_s));
    setModal(false);
    m_tabs->setAccessibleName(windowTitle());
    for (const QLatin1String text : paneTexts)
        m_tabs->addTab(new PreferencePage, localised(text));
    makeRows();

    auto *body = new QHBoxLayout;
    body->setSpacing(gap);
    body->addWidget(m_tabs, 3);
    body->addWidget(makePreviewColumn(), 2);
    body->setContentsMargins(0, gap, 0, gap);
    auto *column = new QVBoxLayout(this);
    // The notices bring their distance from the edge along.
    column->setContentsMargins(gap, 0, gap, gap);
    column->setSpacing(0);
    column->addWidget(m_notices);
    column->addLayout(body, 1);
    column->addWidget(makeFooter());
    resize(sizeHint().expandedTo(usualSize));

    connect(this, &PreferencesDialog::preferenceChanged, this, &PreferencesDialog::updateRestore);
    connect(this, &PreferencesDialog::preferenceChanged, m_preview, &SheetPreview::refresh);
    connect(this, &PreferencesDialog::preferenceChanged, m_nameExample, &NameExample::refresh);
    connect(m_tabs, &QTabWidget::currentChanged, this, &PreferencesDialog::updateRestore);
    quietNotes();
    reload();
    m_tabs->setFocus();
}

void PreferencesDialog::makeRows()
{
    for (const PreferenceRow &row : preferenceRows()) {
        const PreferenceControl control = makePreferenceControl(row, [this, &row] { edited(row); });
        m_controls.insert(row.key, control);
        pageOf(row).add(row, control);
        if (row.key == Prefs::prefNameTemplate.text)
            pageOf(row).addNote(m_nameExample);
    }
}

QWidget *PreferencesDialog::makePreviewColumn()
{
    auto *side = new QWidget;
    side->setMinimumWidth(previewWidth);
    auto *title = new QLabel(localised(u"V_preview"_s));
    title->setAlignment(Qt::AlignHCenter);
    m_description->setAlignment(Qt::AlignHCenter);
    auto *column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(title);
    column->addWidget(m_description);
    column->addWidget(m_preview, 1);
    connect(m_preview, &SheetPreview::drawn, this,
            [this] { m_description->setText(m_preview->description()); });
    return side;
}

QWidget *PreferencesDialog::makeFooter()
{
    auto *footer = new QWidget;
    auto *row = new QHBoxLayout(footer);
    row->setContentsMargins(0, 0, 0, 0);
    m_restore = new QPushButton(localised(u"V_prefs_restore"_s));
    m_restore->setAutoDefault(false);
    // Styles leave the arrow of the menu no distance.
    m_restore->setMinimumWidth(m_restore->sizeHint().width() + 2 * gap);
    auto *menu = new QMenu(m_restore);
    m_restorePane =
        menu->addAction(localised(u"V_prefs_restorePane"_s), this, &PreferencesDialog::restorePane);
    menu->addAction(localised(u"V_prefs_restoreAll"_s), this, &PreferencesDialog::restoreAll);
    m_restore->setMenu(menu);
    auto *close = new QPushButton(localised(u"V_prefs_close"_s));
    close->setAutoDefault(false);
    connect(close, &QPushButton::clicked, this, &QDialog::close);
    row->addWidget(m_restore);
    row->addStretch();
    row->addWidget(close);
    return footer;
}

PreferencePage &PreferencesDialog::pageOf(const PreferenceRow &row) const
{
    return *static_cast<PreferencePage *>(m_tabs->widget(int(row.pane)));
}

QStringList PreferencesDialog::keysOf(std::optional<PreferencePane> pane)
{
    QStringList keys;
    for (const PreferenceRow &row : preferenceRows()) {
        if (!pane || row.pane == *pane)
            keys.append(row.key);
    }
    return keys;
}

void PreferencesDialog::showPane(PreferencePane pane)
{
    m_tabs->setCurrentIndex(int(pane));
}

/// Plain words have less weight than those of the controls, in any palette.
void PreferencesDialog::quietNotes()
{
    QPalette quiet = palette();
    quiet.setColor(QPalette::WindowText, secondaryText(quiet));
    m_description->setPalette(quiet);
    m_nameExample->setPalette(quiet);
}

void PreferencesDialog::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        quietNotes();
}

void PreferencesDialog::keyPressEvent(QKeyEvent *event)
{
    // Enter ends the typing in a field; it must not press a button of the dialog.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        event->accept();
    else
        QDialog::keyPressEvent(event);
}

void PreferencesDialog::setControl(const QString &key, const QVariant &value)
{
    if (const auto control = m_controls.constFind(key); control != m_controls.cend())
        control->show(value);
    else
        m_unshown.insert(key, value);
}

QVariant PreferencesDialog::control(const QString &key) const
{
    const auto control = m_controls.constFind(key);
    return control == m_controls.cend() ? m_unshown.value(key) : control->value();
}

int PreferencesDialog::segmentCount(const QString &key) const
{
    return m_controls.value(key).segmentCount;
}

void PreferencesDialog::perform(Action action)
{
    switch (action) {
    case Action::setColor:
        showPreset();
        return;
    case Action::prepareDestination:
        // The folder is prepared when a batch starts.
        return;
    case Action::showUpdateControls:
        // There are none: updates come with those of the system.
        return;
    default:
        updateDependents();
    }
}

void PreferencesDialog::updateDependents()
{
    const auto isMet = [this](const PreferenceRow::Condition &condition) {
        return !condition.key || control(QLatin1String(condition.key)).toInt() == condition.value;
    };
    for (const PreferenceRow &row : preferenceRows())
        pageOf(row).setRowEnabled(row.key, std::ranges::all_of(row.enabledWhen, isMet));
}

void PreferencesDialog::store(const QString &key)
{
    const QVariant value = control(key);
    const bool isLimit = preferenceRow(key).kind == ControlKind::limit;
    prefWrite(key, isLimit ? QVariant(value.toInt()) : value);
}

void PreferencesDialog::storeAndTell(const QString &key)
{
    store(key);
    Q_EMIT preferenceChanged(key);
}

void PreferencesDialog::edited(const PreferenceRow &row)
{
    const bool isPreset = row.kind == ControlKind::presetChoice;
    if (isPreset)
        keepOwnColours();
    store(row.key);
    if (row.key == Prefs::prefSheetFormat.text)
        setControl(Prefs::prefDpi, control(Prefs::prefDpi));
    if (row.action)
        perform(*row.action);
    updateDependents();
    Q_EMIT preferenceChanged(row.key);
    if (isPreset) {
        storeAndTell(Prefs::pageBkgColor);
        storeAndTell(Prefs::prefBorderColor);
    }
    if (row.kind == ControlKind::colour && followColours())
        storeAndTell(Prefs::prefColor);
}

/// The colours of the segment that shows; of the own ones, those that the user had last.
void PreferencesDialog::showPreset()
{
    const int segment = control(Prefs::prefColor).toInt();
    if (segment < ownColours()) {
        const ColourPreset &preset = colourPresets()[size_t(segment)];
        setControl(Prefs::pageBkgColor, QString(preset.page));
        setControl(Prefs::prefBorderColor, QString(preset.border));
    } else if (!m_ownPage.isNull()) {
        setControl(Prefs::pageBkgColor, m_ownPage);
        setControl(Prefs::prefBorderColor, m_ownBorder);
    }
}

void PreferencesDialog::keepOwnColours()
{
    const QString page = control(Prefs::pageBkgColor).toString();
    const QString border = control(Prefs::prefBorderColor).toString();
    if (segmentOfColours(page, border) != ownColours())
        return;
    m_ownPage = page;
    m_ownBorder = border;
}

/// The segment tells what the colours are, whoever has chosen them; true when it had not.
bool PreferencesDialog::followColours()
{
    const int segment = segmentOfColours(control(Prefs::pageBkgColor).toString(),
                                         control(Prefs::prefBorderColor).toString());
    const bool isOther = control(Prefs::prefColor).toInt() != segment;
    if (isOther)
        setControl(Prefs::prefColor, segment);
    return isOther;
}

void PreferencesDialog::reload()
{
    fill();
    followColours();
    updateDependents();
    updateRestore();
    m_nameExample->refresh();
    m_preview->refresh();
}

void PreferencesDialog::fill()
{
    // What is not stored counts as its default, and is shown as that.
    Dico values = prefDefaults();
    values.insert(storedPreferences(keysOf({})));
    for (const PreferenceRow &row : preferenceRows())
        setControl(row.key, values.value(row.key));
    prefs2GuiApp(*this, values);
    // A folder that is gone, as on a disk that is not there today, stays the user's choice:
    // the field tells of it, and nothing is made before it is back.
    setControl(Prefs::prefDefautDstPathStr, values.value(Prefs::prefDefautDstPathStr));
}

void PreferencesDialog::updateRestore()
{
    const auto pane = PreferencePane(m_tabs->currentIndex());
    m_restorePane->setEnabled(!areDefaults(keysOf(pane)));
    m_restore->setEnabled(!areDefaults(keysOf({})));
}

void PreferencesDialog::restorePane()
{
    const int pane = m_tabs->currentIndex();
    const QString name = localised(paneTexts[pane]).remove(u'&');
    restoreDefaults(keysOf(PreferencePane(pane)), filled(localised(u"V_prefs_restored"_s), name));
}

void PreferencesDialog::restoreAll()
{
    restoreDefaults(keysOf({}), localised(u"V_prefs_restoredAll"_s));
}

void PreferencesDialog::restoreDefaults(const QStringList &keys, const QString &notice)
{
    const auto tell = [this](const QStringList &changed) {
        reload();
        for (const QString &key : changed)
            Q_EMIT preferenceChanged(key);
    };
    const RestoredDefaults restored(keys);
    m_notices->show(
        {NoticeKind::information, notice, {}, {{localised(u"V_prefs_undo"_s), [restored, tell] {
                                                    restored.undo();
                                                    tell(restored.keys());
                                                }}}});
    tell(keys);
}

} // namespace vignar
