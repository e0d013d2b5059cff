#include "app/batchList.h"
#include "classShared/format.h"
#include "classShared/standIns.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/extractionPasses.h"
#include "shell/alertBoxes.h"
#include "shell/batchDrawer.h"
#include "shell/batchFile.h"
#include "shell/batchModel.h"
#include "shell/choiceRow.h"
#include "shell/desktopSession.h"
#include "shell/dropArea.h"
#include "shell/mainMenu.h"
#include "shell/noticeBar.h"
#include "shell/openPanel.h"
#include "shell/remainingTime.h"
#include "shell/sessionPreferences.h"
#include "shell/sourceLog.h"
#include "shell/windowPlaces.h"
#include "support/recordingOutlets.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestShellParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windowsAreKeptVisible_data();
    void windowsAreKeptVisible();
    void remainingTimeLeavesPausesOut();
    void logLinesOfOneSource();
    void marksOfTheRunStayInMemory();
    void brokenListIsKeptAside();
    void savedListKnowsNoLanguage();
    void captionFollowsAnyName();
    void panelsOpenInFoldersThatExist();
    void droppedNamesKeepTheirBytes();
    void formatTellsWhatIsMade();
    void alertTellsButtonAndCheckBox();
    void tabGoesDownTheWindow();
    void everyControlIsNamedAndReached_data();
    void everyControlIsNamedAndReached();
};

void TestShellParts::windowsAreKeptVisible_data()
{
    QTest::addColumn<QRect>("place");
    QTest::addColumn<QRect>("kept");
    QTest::newRow("inside stays") << QRect(10, 10, 100, 100) << QRect(10, 10, 100, 100);
    QTest::newRow("screen that is gone") << QRect(5000, 50, 100, 100) << QRect(900, 50, 100, 100);
    QTest::newRow("half out") << QRect(-50, 700, 200, 200) << QRect(0, 600, 200, 200);
    QTest::newRow("second screen") << QRect(1100, 20, 100, 100) << QRect(1100, 20, 100, 100);
    QTest::newRow("too large") << QRect(0, 0, 3000, 900) << QRect(1000, 0, 1200, 900);
}

void TestShellParts::windowsAreKeptVisible()
{
    QFETCH(QRect, place);
    QTEST(keptVisible(place, {QRect(0, 0, 1000, 800), QRect(1000, 0, 1200, 1000)}), "kept");
}

void TestShellParts::remainingTimeLeavesPausesOut()
{
    RemainingTime time;
    time.start(1000ms);
    QVERIFY(!time.estimate(3000ms, 0.5));
    QVERIFY(!time.estimate(9000ms, 0));
    QCOMPARE(time.estimate(11000ms, 0.25), std::optional(30000ms));
    time.pause(11000ms);
    QVERIFY(!time.estimate(12000ms, 0.25));
    time.resume(111000ms);
    QCOMPARE(time.estimate(111000ms, 0.25), std::optional(30000ms));
}

void TestShellParts::logLinesOfOneSource()
{
    const QString log = u"start\nnew current src: '/v/a.mp4'\nduration\nnew src: '/v/a.mp4.mov'\n"
                        "not ours\n/v/other.txt\n'/v/a.mp4' again"_s;
    QCOMPARE(linesOfSource(log, u"/v/a.mp4"_s, {u"/v/a.mp4.mov"_s}),
             (QStringList{u"new current src: '/v/a.mp4'"_s, u"duration"_s, u"'/v/a.mp4' again"_s}));
}

void TestShellParts::marksOfTheRunStayInMemory()
{
    auto owned = std::make_unique<MemoryPreferenceStore>();
    const PreferenceStore &file = *owned;
    SessionPreferences store(std::move(owned));
    store.setValue(RunKeys::analysisFin, 1);
    store.setValue(Prefs::prefDpi, 0);
    QCOMPARE(file.keys(), QStringList{Prefs::prefDpi});
    QCOMPARE(store.value(RunKeys::analysisFin), QVariant(1));
    store.removeValue(RunKeys::analysisFin);
    QCOMPARE(store.keys(), QStringList{Prefs::prefDpi});
}

void TestShellParts::brokenListIsKeptAside()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(u"batch.json"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("{\"rows\": [") > 0);
    file.close();
    SavedBatch saved(folder.path(), [] { return SessionState(); });
    QVERIFY(saved.load().rows.isEmpty());
    QVERIFY(saved.save());
    QVERIFY(QFile::exists(path + u".broken"_s));
}

void TestShellParts::savedListKnowsNoLanguage()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(u"batch.json"_s);
    const auto named = [](const QString &key) { return localised(key, fieldsTable); };
    setInterfaceLanguage(u"fr"_s);
    SessionState state;
    for (const QString &order : {u"PFF"_s, u"BFF"_s}) {
        SourceDico record;
        write(record, Keys::srcPathStr, u"/v/"_s + order);
        write(record, Keys::v_fields, 0, named(order));
        state.rows.append({makeBatchEntry(record, 1, mixLayout, 1), {}});
    }
    state.rows[0].fate.reason = localised(u"V_reason_noThumbnail"_s);
    state.rows[1].fate.reason = u"la disquette « x » est pleine"_s;
    QVERIFY(BatchFile(folder.path()).write(state));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QByteArray json = file.readAll();
    QVERIFY(json.contains("\"v0_fields\":\"PFF\""));
    file.close();

    const QByteArray french = named(u"PFF"_s).toUtf8();
    setInterfaceLanguage(u"en"_s);
    // As this version writes it, and as older ones did.
    for (const QByteArray &spelling : {QByteArray("PFF"), french}) {
        json.replace("\"v0_fields\":\"PFF\"", "\"v0_fields\":\"" + spelling + '"');
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(json) == json.size());
        file.close();
        const SessionState restored = BatchFile(folder.path()).read();
        QCOMPARE(restored.rows.size(), 2);
        const auto record = [&restored](int row) {
            return read(restored.rows.at(row).entry, RowKeys::dico).value_or(Dico());
        };
        QCOMPARE(read(record(0), Keys::v_fields, 0), named(u"PFF"_s));
        QCOMPARE(read(record(1), Keys::v_fields, 0), named(u"BFF"_s));
        QVERIFY(!thumbnailFilter(record(0), {64, 48}).contains(u"yadif"));
        QVERIFY(thumbnailFilter(record(1), {64, 48}).contains(u"yadif"));
        QCOMPARE(restored.rows.at(0).fate.reason, localised(u"V_reason_noThumbnail"_s));
        QCOMPARE(restored.rows.at(1).fate.reason, state.rows.at(1).fate.reason);
    }
    setInterfaceLanguage({});
}

void TestShellParts::captionFollowsAnyName()
{
    RecordingOutlets outlets;
    BatchList batch(outlets);
    BatchModel model(batch);
    for (const QString &name : {u"film.mp4"_s, u"first\nsecond\nthird.mp4"_s}) {
        SourceDico record;
        write(record, Keys::srcPathStr, u"/v/"_s + name);
        write(record, Keys::w_duration, 60.0);
        batch.append(makeBatchEntry(record, batch.count() + 1, mixLayout, 1));
        const QString caption =
            model.index(batch.count() - 1).data(BatchModel::captionRole).toString();
        QVERIFY2(caption.startsWith(u"(0x)0i"_s) && caption.endsWith(u" · 0h01'00\""_s),
                 qPrintable(caption));
    }
}

void TestShellParts::panelsOpenInFoldersThatExist()
{
    const QTemporaryDir folder;
    QCOMPARE(existingFolder(folder.filePath(u"no/such"_s)), folder.path());
    QCOMPARE(existingFolder(folder.path()), folder.path());
    QCOMPARE(existingFolder(u"~/Videos"_s), QDir::homePath());
}

void TestShellParts::droppedNamesKeepTheirBytes()
{
    const QTemporaryDir folder;
    setStandInFolder(folder.filePath(u"names"_s));
    QMimeData data;
    data.setData(u"text/uri-list"_s, "file:///v/%C3%A9t%C3%A9%20%25.mp4\r\nfile:///v/caf%E9.mp4\r\n"
                                     "https://example.org/a.mp4\r\n");
    const QStringList paths = localPaths(data);
    QCOMPARE(paths.size(), 2);
    QCOMPARE(paths[0], u"/v/été %.mp4"_s);
    QCOMPARE(systemPath(paths[1]), QByteArray("/v/caf\xe9.mp4"));

    // The row of such a video, and the list that is kept of it.
    RecordingOutlets outlets;
    BatchList batch(outlets);
    BatchModel model(batch);
    SourceDico record;
    write(record, Keys::srcPathStr, paths[1]);
    batch.append(makeBatchEntry(record, 1, mixLayout, 1));
    QVERIFY(model.index(0).data(Qt::ToolTipRole).toString().contains(u"/v/caf\ufffd.mp4"_s));
    QCOMPARE(model.index(0).data().toString(), u"caf\ufffd.mp4"_s);
    QCOMPARE(model.sources(), paths.mid(1));
}

void TestShellParts::formatTellsWhatIsMade()
{
    setSharedPreferenceStore({});
    const std::unique_ptr<ChoiceRow> formats(makeFormatChooser(nullptr));
    const auto words = [&formats] { return formats->findChild<QAbstractButton *>()->text(); };
    QCOMPARE(words(), localised(u"V_format_jpeg"_s));
    prefWrite(Prefs::prefSheetFormat, u"webp"_s);
    namePictureFormat(*formats);
    QCOMPARE(words(), u"WebP"_s);
    QVERIFY(choiceText(mixLayout, 1).endsWith(u"WebP"_s));
    QVERIFY(choiceText(mixLayout, 0).endsWith(u"PDF"_s));
    setSharedPreferenceStore({});
}

void TestShellParts::alertTellsButtonAndCheckBox()
{
    QString shown;
    QTimer::singleShot(0, this, [&shown] {
        const QWidget *box = QApplication::activeModalWidget();
        for (const auto *label : box->findChildren<QLabel *>())
            shown += label->text() + u'|';
        box->findChild<QCheckBox *>()->click();
        for (auto *button : box->findChildren<QPushButton *>()) {
            if (button->text() == u"Replace")
                button->click();
        }
    });
    setAlertPresenter(std::make_unique<AlertBoxes>());
    const AlertAnswer answer =
        alertTimedSuppressible(u"a.jpg"_s, u"<b>50%</b> exists"_s, u"Keep"_s, u"Replace"_s,
                               u"Apply to All"_s, AlertStyle::warning, 10);
    setAlertPresenter({});
    QCOMPARE(answer.button, AlertButton::second);
    QVERIFY(answer.isSuppressed);
    QVERIFY(shown.contains(u"<b>50%</b> exists"_s));
    QVERIFY(shown.contains(filled(localised(u"V_alert_countdown"_s), 10)));
}

void TestShellParts::tabGoesDownTheWindow()
{
    setSharedPreferenceStore({});
    QTemporaryDir folder;
    DesktopSession session(folder.path());
    MainWindow &window = session.window();
    window.setDrawerOpen(true);
    window.notices().show({NoticeKind::warning, u"title"_s, {}, {{u"Retry"_s, [] {}}}});
    window.show();
    QList<int> tops;
    for (const QWidget *control = window.nextInFocusChain(); control != &window;
         control = control->nextInFocusChain()) {
        const bool isReached = control->isVisible() && control->isEnabled() &&
                               (control->focusPolicy() & Qt::TabFocus) != 0;
        // What stands beside it comes next, and the list last.
        if (isReached && !window.drawer().isAncestorOf(control))
            tops.append(control->mapTo(&window, QPoint(0, control->height() / 2)).y() / 40);
        else if (isReached)
            tops.append(1000);
    }
    QVERIFY(tops.size() > 8);
    QVERIFY(std::is_sorted(tops.begin(), tops.end()));
}

void TestShellParts::everyControlIsNamedAndReached_data()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << u"en"_s;
    QTest::newRow("French") << u"fr"_s;
}

void TestShellParts::everyControlIsNamedAndReached()
{
    QFETCH(QString, language);
    setInterfaceLanguage(language);
    setSharedPreferenceStore({});
    QTemporaryDir folder;
    DesktopSession session(folder.path());
    MainWindow &window = session.window();
    window.setDrawerOpen(true);
    window.setChoiceHint(u"hint"_s);
    window.show();

    QStringList mnemonics;
    const auto note = [&mnemonics](const QString &words) {
        if (const QKeySequence key = QKeySequence::mnemonic(words); !key.isEmpty())
            mnemonics.append(key.toString());
    };
    for (const auto *control : window.findChildren<QWidget *>()) {
        if (!control->isVisible() || control->focusPolicy() == Qt::NoFocus)
            continue;
        const QAccessibleInterface *interface =
            QAccessible::queryAccessibleInterface(const_cast<QWidget *>(control));
        QVERIFY2(!interface->text(QAccessible::Name).isEmpty(), control->metaObject()->className());
        if (const auto *button = qobject_cast<const QAbstractButton *>(control))
            note(button->text());
    }
    for (const auto *label : window.findChildren<QLabel *>()) {
        if (label->buddy())
            note(label->text());
    }
    for (const QAction *menu : window.menuBar()->actions()) {
        note(menu->text());
        QStringList inMenu;
        for (const QAction *action : menu->menu()->actions())
            inMenu.append(QKeySequence::mnemonic(action->text()).toString());
        inMenu.removeAll(QString());
        QVERIFY2(inMenu.removeDuplicates() == 0, qPrintable(menu->text()));
    }
    QVERIFY(mnemonics.size() > 15);
    mnemonics.sort();
    const QString all = mnemonics.join(u' ');
    QVERIFY2(mnemonics.removeDuplicates() == 0, qPrintable(all));
    setInterfaceLanguage({});
}

QTEST_MAIN(TestShellParts)
#include "test_shellParts.moc"
