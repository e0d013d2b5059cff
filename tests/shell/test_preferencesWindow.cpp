#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "shell/choiceRow.h"
#include "shell/preferences/colourPresets.h"
#include "shell/preferences/nameExample.h"
#include "shell/preferences/preferencesDialog.h"
#include "shell/preferences/sheetPreview.h"

#include <QAbstractSpinBox>
#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QSlider>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

void type(QWidget &widget, const QString &text)
{
    auto *field = qobject_cast<QLineEdit *>(&widget);
    if (!field)
        field = widget.findChild<QLineEdit *>();
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Return);
}

void press(QWidget &chooser, int segment)
{
    chooser.findChildren<QAbstractButton *>().at(segment)->click();
}

/// Another value, chosen with the control's own keys and buttons.
void change(QWidget &control)
{
    if (auto *chooser = qobject_cast<ChoiceRow *>(&control))
        press(control, chooser->findChildren<QAbstractButton *>().at(0)->isChecked() ? 1 : 0);
    else if (auto *box = qobject_cast<QCheckBox *>(&control))
        box->click();
    else if (qobject_cast<QComboBox *>(&control))
        QTest::keyClick(&control, Qt::Key_Down);
    else if (qobject_cast<QAbstractSpinBox *>(&control))
        QTest::keyClick(&control, Qt::Key_Up);
    else if (auto *slider = control.findChild<QSlider *>())
        QTest::keyClick(slider, Qt::Key_Right);
    else
        type(control, u"#1a2B3c"_s);
}

/// Of the same kind as the default, valid, and different from it.
QVariant otherValue(const QString &key, const QVariant &value)
{
    static const Dico chosen{{Prefs::prefDefautDstPathStr, QDir::rootPath()},
                             {Prefs::prefColor, 2},
                             {Prefs::prefCheckMatrix, 2},
                             {Prefs::prefSheetFormat, u"webp"_s},
                             {Prefs::pageBkgColor, u"102030"_s},
                             {Prefs::prefBorderColor, u"405060"_s},
                             {Prefs::prefBorderSize, 2.5},
                             {Prefs::prefComputerWidth, 2000.0},
                             {Prefs::prefDerushInterval, 86400}};
    if (chosen.contains(key))
        return chosen.value(key);
    if (value.typeId() == QMetaType::QString)
        return u"a “text”"_s;
    return value.toInt() > 1 ? value.toInt() + 1 : 1 - value.toInt();
}

/// The preferences that have a control, as the window shows them when nothing is stored.
Dico shownDefaults()
{
    Dico shown = prefDefaults();
    for (const auto &key :
         {QString(Prefs::rateDeclined), QString(Prefs::ratedVersion), QString(Prefs::rateVersion)})
        shown.remove(key);
    write(shown, Prefs::prefColor, 1);
    return shown;
}

QList<QAction *> restoreActions(const PreferencesDialog &window)
{
    return window.findChild<QMenu *>()->actions();
}

QAbstractButton *buttonNamed(const QWidget &window, const QString &words)
{
    const auto buttons = window.findChildren<QAbstractButton *>();
    const auto found = std::find_if(buttons.begin(), buttons.end(),
                                    [&](const auto *button) { return button->text() == words; });
    return found == buttons.end() ? nullptr : *found;
}

} // namespace

class TestPreferencesWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        setInterfaceLanguage(u"en"_s);
        setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    }

    void everyPreferenceGoesBothWays_data()
    {
        QTest::addColumn<QVariant>("value");
        Dico defaults = shownDefaults();
        // Kept, and shown nowhere.
        defaults.remove(Prefs::update);
        for (auto row = defaults.cbegin(); row != defaults.cend(); ++row)
            QTest::newRow(qPrintable(row.key())) << row.value();
    }

    void everyPreferenceGoesBothWays()
    {
        QFETCH(QVariant, value);
        const QString key = QString::fromLatin1(QTest::currentDataTag());
        PreferencesDialog window;
        QWidget *control = window.findChild<QWidget *>(key);
        QVERIFY(control && !control->accessibleName().isEmpty());
        QCOMPARE(*prefs2GuiApp(window, std::nullopt), shownDefaults());

        Dico values = shownDefaults();
        values[key] = otherValue(key, value);
        prefs2GuiApp(window, values);
        QCOMPARE(*prefs2GuiApp(window, std::nullopt), values);

        window.reload();
        QVERIFY(sharedPreferenceStore().keys().isEmpty());
        QSignalSpy changed(&window, &PreferencesDialog::preferenceChanged);
        control->setEnabled(true);
        change(*control);
        QVERIFY(changed.contains(QVariantList{key}));
        QVERIFY(prefRead(key) != value);
        QCOMPARE(prefRead(key), prefs2GuiApp(window, std::nullopt)->value(key));
        // Another window shows what this one has stored.
        PreferencesDialog later;
        QCOMPARE(*prefs2GuiApp(later, std::nullopt), *prefs2GuiApp(window, std::nullopt));
    }

    void emptiedTextsAreStored()
    {
        PreferencesDialog window;
        type(*window.findChild<QWidget *>(Prefs::prefSuffix), {});
        QCOMPARE(prefRead(Prefs::prefSuffix), QVariant(u""_s));
        // Half a colour is none; the one before stays.
        type(*window.findChild<QWidget *>(Prefs::pageBkgColor), u"#12"_s);
        QVERIFY(!prefRead(Prefs::pageBkgColor).isValid());
        type(*window.findChild<QWidget *>(Prefs::prefSuffix), u"s/s"_s);
        QCOMPARE(window.findChild<NameExample *>()->text(), u"Example: A day by the sea-s-s.jpg"_s);
        type(*window.findChild<QWidget *>(Prefs::prefSuffix), u"s"_s.repeated(120));
        QCOMPARE(prefRead(Prefs::prefSuffix), u"s"_s.repeated(100));
    }

    void presetsBringTheirColours()
    {
        PreferencesDialog window;
        QWidget &presets = *window.findChild<QWidget *>(Prefs::prefColor);
        const auto colours = [] {
            return QStringList{prefReadStr(Prefs::pageBkgColor),
                               prefReadStr(Prefs::prefBorderColor)};
        };
        press(presets, 0);
        const ColourPreset &dark = colourPresets()[0];
        QCOMPARE(colours(), (QStringList{dark.page, dark.border}));
        type(*window.findChild<QWidget *>(Prefs::pageBkgColor), u"#102030"_s);
        QCOMPARE(prefRead(Prefs::prefColor), ownColours());
        const QStringList own = colours();
        press(presets, 1);
        QCOMPARE(colours(), (QStringList{u"ffffff"_s, u"b3b3b3"_s}));
        press(presets, ownColours());
        QCOMPARE(colours(), own);

        // The colours that are stored win over the segment that is.
        prefWrite(Prefs::prefColor, 0);
        window.reload();
        QCOMPARE(window.control(Prefs::prefColor), ownColours());
        QCOMPARE(colours(), own);
    }

    void controlsFollowThoseTheyDependOn()
    {
        PreferencesDialog window;
        const auto isEnabled = [&](const QString &key) {
            return window.findChild<QWidget *>(key)->isEnabled();
        };
        const auto set = [&](const QString &key) { window.findChild<QCheckBox *>(key)->click(); };
        QVERIFY(!isEnabled(Prefs::prefLimitBig) && !isEnabled(Prefs::prefComputerWidth));
        set(Prefs::prefLimitAuto);
        set(Prefs::prefComputerWidthAuto);
        QVERIFY(isEnabled(Prefs::prefLimitBig) && isEnabled(Prefs::prefComputerWidth));
        QVERIFY(!isEnabled(Prefs::prefDerushNoMultimediaHd));
        set(Prefs::prefDerush);
        QVERIFY(isEnabled(Prefs::prefDerushNoMultimediaHd));
        window.setControl(Prefs::prefDpi, 0);
        window.perform(PreferencePanel::Action::prefDpi);
        QVERIFY(!isEnabled(Prefs::prefComputerWidth));
    }

    void defaultsComeAndGoBack()
    {
        prefWrite(Prefs::prefSuffix, u"mine"_s);
        prefWrite(Prefs::prefDpi, 0);
        prefWrite(Prefs::pageName, 0);
        PreferencesDialog window;
        window.showPane(PreferencePane::output);
        restoreActions(window).at(0)->trigger();
        QCOMPARE(sharedPreferenceStore().keys(), QStringList{Prefs::pageName});
        QCOMPARE(window.control(Prefs::prefSuffix), u"index"_s);
        QVERIFY(!restoreActions(window).at(0)->isEnabled());
        restoreActions(window).at(1)->trigger();
        QVERIFY(sharedPreferenceStore().keys().isEmpty());

        // What was changed since is not taken back.
        type(*window.findChild<QWidget *>(Prefs::prefSuffix), u"new"_s);
        buttonNamed(window, localised(u"V_prefs_undo"_s))->click();
        QCOMPARE(window.control(Prefs::pageName), 0);
        buttonNamed(window, localised(u"V_prefs_undo"_s))->click();
        QCOMPARE(window.control(Prefs::prefDpi), 0);
        QCOMPARE(window.control(Prefs::prefSuffix), u"new"_s);
        QVERIFY(!buttonNamed(window, localised(u"V_prefs_undo"_s)));
    }

    void previewFollowsThePreferences()
    {
        PreferencesDialog window;
        SheetPreview &preview = window.preview();
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const Dico looks{{Prefs::prefCheckMatrix, 1},
                         {Prefs::pageBkgColor, u"000000"_s},
                         {Prefs::prefBorderColor, u"0000ff"_s},
                         {Prefs::prefBorderSize, 9.0},
                         {Prefs::prefLimitAuto, 0},
                         {Prefs::prefTimecode, 0},
                         {Prefs::pageName, 0},
                         {Prefs::pageLocation, 1},
                         {Prefs::pageDate, 1},
                         {Prefs::pageDuration, 0},
                         {Prefs::pageVIdentity, 0},
                         {Prefs::pagePoids, 0},
                         {Prefs::pageEssence, 0},
                         {Prefs::pageComment, 1}};
        for (auto look = looks.cbegin(); look != looks.cend(); ++look) {
            const QImage before = preview.picture();
            prefWrite(look.key(), look.value());
            preview.refresh();
            QVERIFY2(preview.picture() != before, qPrintable(look.key()));
        }
        // However many changes, one drawing before the next event.
        QSignalSpy drawn(&preview, &SheetPreview::drawn);
        for (int change = 0; change < 5; ++change)
            preview.refresh();
        QTRY_COMPARE(drawn.count(), 1);
        // What a run would refuse, in the very words.
        const SourceDico wide{{Keys::srcPathStr, u"/v/wide.mp4"_s},
                              {Keys::w_duration, 60},
                              {Keys::v_width(0), 1920},
                              {Keys::v_height(0), 800}};
        prefWrite(Prefs::prefBorderSize, 40.0);
        preview.setRow(wide, int(minLayout));
        QVERIFY(preview.picture().isNull());
        QCOMPARE(preview.description(), localisedCapitalised(u"V_reason_noRoom"_s));
        prefWrite(Prefs::prefBorderSize, 1.0);
        prefWrite(Prefs::prefLimitMin, 600);
        prefWrite(Prefs::prefComputerWidthAuto, 0);
        prefWrite(Prefs::prefComputerWidth, 7680);
        preview.refresh();
        QVERIFY2(preview.description().contains(u"7680 × "_s), qPrintable(preview.description()));
    }

    void previewShowsTheRow()
    {
        QTemporaryDir folder;
        const auto painted = [&](const QString &name, Qt::GlobalColor colour) {
            QImage picture(160, 90, QImage::Format_RGB32);
            picture.fill(colour);
            picture.save(folder.filePath(name));
            return folder.filePath(name);
        };
        SourceDico source;
        write(source, Keys::srcPathStr, folder.filePath(u"film.mp4"_s));
        write(source, Keys::imgPathStr, painted(u"poster.png"_s, Qt::red));
        write(source, Keys::w_duration, 300.0);
        SheetPreview preview;
        preview.resize(400, 400);
        const auto at = [&](double x, double y) {
            const QImage sheet = preview.picture();
            return sheet.pixelColor(int(sheet.width() * x), int(sheet.height() * y));
        };
        preview.setRow(source, bigLayout);
        QCOMPARE(preview.description(), u"Thumbnails: 4 · 1280 × %1 pixels"_s.arg(
                                            QString(preview.description()).section(u' ', 5, 5)));
        QCOMPARE(at(0.25, 0.75), QColor(Qt::red));
        preview.setRow(source, bigLayout,
                       {painted(u"img00.png"_s, Qt::blue), painted(u"img01.png"_s, Qt::green)});
        QCOMPARE(at(0.25, 0.75), QColor(Qt::blue));
        QCOMPARE(at(0.75, 0.75), QColor(Qt::green));
        preview.clearRow();
        QVERIFY(preview.description().startsWith(u"Thumbnails: 36 "_s));
    }

    void everyPageFitsAndHasItsLetters_data()
    {
        QTest::addColumn<QString>("language");
        QTest::newRow("English") << u"en"_s;
        QTest::newRow("French") << u"fr"_s;
    }

    void everyPageFitsAndHasItsLetters()
    {
        QFETCH(QString, language);
        setInterfaceLanguage(language);
        PreferencesDialog window;
        window.show();
        const auto *tabs = window.findChild<QTabWidget *>();
        QVERIFY(window.width() <= 1280 && window.height() <= 740);
        for (int page = 0; page < tabs->count(); ++page) {
            window.showPane(PreferencePane(page));
            auto *area = qobject_cast<QScrollArea *>(tabs->widget(page));
            QVERIFY(area->widget()->minimumSizeHint().width() <= area->viewport()->width());
            QStringList words;
            for (int tab = 0; tab < tabs->count(); ++tab)
                words.append(tabs->tabText(tab));
            for (const auto *label : area->findChildren<QLabel *>())
                words.append(label->text());
            for (const auto *button : window.findChildren<QAbstractButton *>()) {
                if (button->isVisible())
                    words.append(button->text());
            }
            for (auto *control : area->findChildren<QWidget *>()) {
                if (control->focusPolicy() == Qt::NoFocus || control->focusProxy())
                    continue;
                const auto *interface = QAccessible::queryAccessibleInterface(control);
                QVERIFY2(!interface->text(QAccessible::Name).isEmpty(),
                         control->metaObject()->className());
            }
            QSet<QChar> letters;
            for (const QString &word : std::as_const(words)) {
                QVERIFY2(!word.startsWith(u"V_"), qPrintable(word));
                const QKeySequence letter = QKeySequence::mnemonic(word);
                if (letter.isEmpty())
                    continue;
                const QChar key = letter.toString().back();
                QVERIFY2(!letters.contains(key), qPrintable(word));
                letters.insert(key);
            }
            QVERIFY(letters.size() >= tabs->count() + 2);
        }
    }
};

QTEST_MAIN(TestPreferencesWindow)
#include "test_preferencesWindow.moc"
