#include "settings/alerts.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "shell/alertBoxes.h"
#include "shell/batchDrawer.h"
#include "shell/choiceRow.h"
#include "shell/desktopSession.h"
#include "shell/dropArea.h"
#include "shell/mainMenu.h"
#include "shell/noticeBar.h"
#include "shell/progressPanel.h"
#include "support/fakeBus.h"
#include "support/folderListing.h"
#include "support/makeClip.h"
#include "support/urlSink.h"
#include "tasks/workFolder.h"

#include <QAction>
#include <QApplication>
#include <QDropEvent>
#include <QFileSystemWatcher>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int patience = 60000;

/// The real alerts, the longest of them a second.
class QuickAlerts : public AlertPresenter
{
public:
    explicit QuickAlerts(QWidget *window) : m_boxes(window) {}
    AlertAnswer present(const AlertRequest &request) override
    {
        AlertRequest quick = request;
        quick.seconds = std::min(quick.seconds, 1);
        return m_boxes.present(quick);
    }

private:
    AlertBoxes m_boxes;
};

/// Presses the button of the next alert that shows.
class Answer : public QObject
{
public:
    explicit Answer(const QString &button)
    {
        m_poll.callOnTimeout(this, [this, button] {
            const QWidget *alert = QApplication::activeModalWidget();
            if (!alert)
                return;
            m_poll.stop();
            for (const auto *label : alert->findChildren<QLabel *>())
                question += label->text() + u'\n';
            for (auto *each : alert->findChildren<QPushButton *>()) {
                if (each->text() == button)
                    each->click();
            }
        });
        m_poll.start(10);
    }

    QString question;

private:
    QTimer m_poll;
};

void drop(QWidget &target, const QStringList &paths, Qt::DropAction *taken = nullptr)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    data.setUrls(urls);
    QDragEnterEvent enter({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&target, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent event({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
    event.setDropAction(Qt::MoveAction);
    QApplication::sendEvent(&target, &event);
    if (taken)
        *taken = event.dropAction();
}

QString statusOf(DesktopSession &session, int row)
{
    return session.model().index(row).data(BatchModel::statusRole).toString();
}

void overwrite(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

void press(QWidget &parent, const QString &textKey)
{
    for (auto *button : parent.findChildren<QPushButton *>()) {
        if (button->isVisible() && button->text() == localised(textKey))
            QTest::mouseClick(button, Qt::LeftButton);
    }
}

} // namespace

class TestDesktop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void dropTakesCopies();
    void dropAnywhereTakesFolders();
    void goMakesSheets();
    void pauseHoldsTheRunUntilStopped();
    void failedRowsAreRetriedAlone();
    void removal_data();
    void removal();
    void listSurvives();
    void changedRowsAreMadeAgainAlone();
    void quittingWhileRunning_data();
    void quittingWhileRunning();
    void quittingWhileAnalysingKeepsTheSources();
    void goWaitsForTheAnalysis();
    void picturesStayOutOfTheDestination();

private:
    QString clip(const QString &name) const { return m_clips.filePath(name); }
    QString state() const { return m_folder->filePath(u"state"_s); }
    QString destination() const { return m_folder->filePath(u"sheets"_s); }
    std::unique_ptr<DesktopSession> startSession();
    void add(DesktopSession &session, const QStringList &paths);
    static void waitForEnd(DesktopSession &session);

    QTemporaryDir m_clips;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UrlSink> m_desktop;
    std::unique_ptr<FakeFileManager> m_fileManager;
};

void TestDesktop::initTestCase()
{
    QVERIFY(setUpWorkFolder(u"test"_s));
    const QString picture = u"testsrc2=s=320x180:r=10:d=6"_s;
    QVERIFY(makeClip(clip(u"a.mp4"_s), picture, {u"-g"_s, u"10"_s}));
    QVERIFY(QDir(m_clips.path()).mkdir(u"more"_s));
    QVERIFY(QFile::copy(clip(u"a.mp4"_s), clip(u"more/b.mp4"_s)));
    overwrite(clip(u"more/notes.txt"_s), "no movie");
}

void TestDesktop::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_desktop = std::make_unique<UrlSink>();
    m_fileManager = std::make_unique<FakeFileManager>();
    QVERIFY2(m_fileManager->isThere(), "dbus-daemon is not installed");
    QVERIFY(QDir().mkdir(destination()));
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    prefWrite(Prefs::prefDefautDstPathStr, destination());
    prefWrite(Prefs::prefMultimediaHd, 0);
    prefWrite(Prefs::prefSuffix, u"-index"_s);
}

void TestDesktop::cleanup()
{
    setAlertPresenter({});
    m_desktop.reset();
    m_fileManager.reset();
}

std::unique_ptr<DesktopSession> TestDesktop::startSession()
{
    auto session = std::make_unique<DesktopSession>(state());
    setAlertPresenter(std::make_unique<QuickAlerts>(&session->window()));
    session->start();
    return session;
}

void TestDesktop::add(DesktopSession &session, const QStringList &paths)
{
    const int wanted = session.model().rowCount() + static_cast<int>(paths.size());
    drop(session.window().dropArea(), paths);
    QTRY_COMPARE_WITH_TIMEOUT(session.model().rowCount(), wanted, patience);
    QTRY_VERIFY(!session.window().dropArea().isBusy());
}

void TestDesktop::waitForEnd(DesktopSession &session)
{
    QTRY_VERIFY_WITH_TIMEOUT(!session.isRunning(), patience);
}

void TestDesktop::dropTakesCopies()
{
    const auto session = startSession();
    Qt::DropAction taken = Qt::IgnoreAction;
    // A file manager that believes in a move removes the user's video.
    drop(session->window().dropArea(), {clip(u"a.mp4"_s)}, &taken);
    QCOMPARE(taken, Qt::CopyAction);
    QVERIFY(session->window().dropArea().isBusy());
    QTRY_COMPARE_WITH_TIMEOUT(session->model().rowCount(), 1, patience);
    QVERIFY(session->window().isDrawerOpen());
    QTRY_VERIFY(!session->window().dropArea().isBusy());
}

void TestDesktop::dropAnywhereTakesFolders()
{
    const auto session = startSession();
    drop(session->window(), {clip(u"more"_s)});
    QTRY_COMPARE_WITH_TIMEOUT(session->model().rowCount(), 1, patience);
    QCOMPARE(session->model().index(0).data().toString(), u"b.mp4"_s);
    // What is no movie is told once everything was looked at.
    QTRY_VERIFY(!session->window().dropArea().isBusy());
    overwrite(m_folder->filePath(u"fake.mp4"_s), "a letter");
    drop(session->window(), {m_folder->filePath(u"fake.mp4"_s)});
    QTRY_VERIFY_WITH_TIMEOUT(session->window().notices().shown(), patience);
    QVERIFY(session->window().notices().shown()->text.contains(
        u"fake.mp4: "_s + localised(u"V_reason_unreadable"_s)));
}

void TestDesktop::goMakesSheets()
{
    const auto session = startSession();
    add(*session, {clip(u"a.mp4"_s), clip(u"more/b.mp4"_s)});
    press(session->window(), u"V_go"_s);
    QVERIFY(session->isRunning());
    QVERIFY(!session->window().menu().go->isEnabled());
    waitForEnd(*session);
    QCOMPARE(filesUnder(destination()), (QStringList{u"a-index.jpg"_s, u"b-index.jpg"_s}));
    QCOMPARE(statusOf(*session, 1), localised(u"V_row_success"_s));
    const QString opening = u"ShowFolders "_s + destination();
    QTRY_COMPARE(m_fileManager->asked(), QStringList{opening});
    QCOMPARE(session->window().notices().shown()->title, localised(u"D_fin_GUI"_s));
    session->window().drawer().selectRows({1});
    session->window().menu().openSheet->trigger();
    QCOMPARE(m_desktop->opened, QStringList{destination() + u"/b-index.jpg"_s});
    session->window().menu().showInFileManager->trigger();
    QTRY_COMPARE(m_fileManager->asked().last(),
                 u"ShowItems "_s + destination() + u"/b-index.jpg"_s);
    press(session->window().notices(), u"V_notice_open"_s);
    QTRY_COMPARE(m_fileManager->asked().last(), opening);
    session->window().menu().openDestination->trigger();
    QTRY_COMPARE(m_fileManager->asked().size(), 4);
    QCOMPARE(m_fileManager->asked().last(), opening);
    // What was told of this run is no news of the next.
    session->go(RowsToMake::unmade);
    QVERIFY(!session->window().notices().shown());
    waitForEnd(*session);
}

void TestDesktop::pauseHoldsTheRunUntilStopped()
{
    const auto session = startSession();
    add(*session, {clip(u"a.mp4"_s), clip(u"more/b.mp4"_s)});
    press(session->window(), u"V_go"_s);
    press(session->window(), u"V_pause"_s);
    QVERIFY(session->application().sheetDriver().isPaused());
    QVERIFY(session->window().menu().pause->isChecked());
    press(session->window(), u"V_resume"_s);
    QVERIFY(!session->application().sheetDriver().isPaused());
    // Looked at often, so that the pause comes before the next sheet is drawn.
    QVERIFY(QTest::qWaitFor([&] { return statusOf(*session, 0) == localised(u"V_row_success"_s); },
                            patience));
    session->setPaused(true);
    press(session->window(), u"V_stop"_s);
    waitForEnd(*session);
    QCOMPARE(filesUnder(destination()), QStringList{u"a-index.jpg"_s});
    QVERIFY(session->window().menu().go->isEnabled());
}

void TestDesktop::failedRowsAreRetriedAlone()
{
    const QString fragile = m_folder->filePath(u"fragile.mp4"_s);
    QVERIFY(QFile::copy(clip(u"a.mp4"_s), fragile));
    const auto session = startSession();
    add(*session, {clip(u"more/b.mp4"_s), fragile});
    overwrite(fragile, "spoilt");
    session->go();
    waitForEnd(*session);
    QCOMPARE(statusOf(*session, 1), localised(u"V_row_failure"_s));
    const Notice *notice = session->window().notices().shown();
    QVERIFY(notice && notice->text.contains(localised(u"V_reason_noThumbnail"_s)));

    QVERIFY(QFile::remove(fragile) && QFile::copy(clip(u"a.mp4"_s), fragile));
    const QDateTime first = QFileInfo(destination() + u"/b-index.jpg"_s).lastModified();
    press(session->window().notices(), u"V_notice_retry"_s);
    QVERIFY(session->isRunning());
    waitForEnd(*session);
    QCOMPARE(statusOf(*session, 1), localised(u"V_row_success"_s));
    QCOMPARE(QFileInfo(destination() + u"/b-index.jpg"_s).lastModified(), first);
}

void TestDesktop::removal_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<int>("left");
    QTest::newRow("confirmed") << localised(u"D_oui"_s) << 0;
    QTest::newRow("declined") << localised(u"D_Annuler"_s) << 1;
    QTest::newRow("nobody answers") << QString() << 1;
}

void TestDesktop::removal()
{
    QFETCH(QString, answer);
    QFETCH(int, left);
    const auto session = startSession();
    add(*session, {clip(u"a.mp4"_s), clip(u"more/b.mp4"_s)});
    session->window().drawer().selectRows({0});
    press(session->window().drawer(), u"V_list_remove"_s);
    QCOMPARE(session->model().rowCount(), 1);
    QCOMPARE(session->model().index(0).data(BatchModel::orderRole).toInt(), 1);

    std::unique_ptr<Answer> click;
    if (!answer.isNull())
        click = std::make_unique<Answer>(answer);
    press(session->window().drawer(), u"V_list_removeAll"_s);
    QCOMPARE(session->model().rowCount(), left);
    QCOMPARE(session->window().isDrawerOpen(), left > 0);
    QCOMPARE(session->window().menu().go->isEnabled(), left > 0);
}

void TestDesktop::listSurvives()
{
    const QString passing = m_folder->filePath(u"passing.mp4"_s);
    QVERIFY(QFile::copy(clip(u"a.mp4"_s), passing));
    auto session = startSession();
    add(*session, {clip(u"a.mp4"_s), passing});
    session->go();
    waitForEnd(*session);
    QSignalSpy ended(session.get(), &DesktopSession::ended);
    const QSize size = session->window().size();
    session->window().setDrawerWidth(320);
    const int drawerWidth = session->window().drawerWidth();
    session->quit();
    QTRY_COMPARE(ended.size(), 1);
    session.reset();
    QVERIFY(QFile::remove(passing));

    session = startSession();
    QCOMPARE(session->model().rowCount(), 2);
    const QSize screen = session->window().screen()->availableSize();
    QCOMPARE(session->window().size(), size.boundedTo(screen));
    QCOMPARE(session->window().drawerWidth(), drawerWidth);
    QCOMPARE(statusOf(*session, 0), localised(u"V_row_success"_s));
    QCOMPARE(statusOf(*session, 1), localised(u"V_row_missing"_s));
    const QModelIndex row = session->model().index(0);
    QCOMPARE(row.data(Qt::DecorationRole).value<QImage>().size(), QSize(160, 90));
    QCOMPARE(row.data(BatchModel::sheetRole).toString(), destination() + u"/a-index.jpg"_s);
    QVERIFY(!session->window().notices().shown());
    // The restored row makes the same sheet as a new one.
    QVERIFY(QFile::remove(destination() + u"/a-index.jpg"_s));
    session->go();
    waitForEnd(*session);
    QVERIFY(QFile::exists(destination() + u"/a-index.jpg"_s));
    QCOMPARE(session->model().rowCount(), 1);
}

void TestDesktop::changedRowsAreMadeAgainAlone()
{
    const QString third = m_folder->filePath(u"c.mp4"_s);
    QVERIFY(QFile::copy(clip(u"a.mp4"_s), third));
    auto session = startSession();
    add(*session, {clip(u"a.mp4"_s), clip(u"more/b.mp4"_s)});
    session->go();
    waitForEnd(*session);
    add(*session, {third});
    const auto modified = [this](const QString &name) {
        return QFileInfo(destination() + u'/' + name).lastModified();
    };
    const QDateTime first = modified(u"a-index.jpg"_s);
    const QDateTime second = modified(u"b-index.jpg"_s);

    // Only while the choice is another one than that of the sheet.
    const auto choose = [&session](int layout) {
        session->window().layoutChooser().choose(layout);
        session->applyChoices({0});
    };
    choose(bigLayout);
    const QString outdated = localised(u"V_row_outdated"_s);
    QCOMPARE(statusOf(*session, 0), outdated);
    QVERIFY(session->model().index(0).data(Qt::AccessibleTextRole).toString().contains(outdated));
    choose(mixLayout);
    QCOMPARE(statusOf(*session, 0), localised(u"V_row_success"_s));
    SourceDico record = read(session->application().whichArrayController().row(0), RowKeys::dico)
                            .value_or(SourceDico());
    write(record, Keys::chosenInstants, {{u"3:7:1.000"_s, Dico{{u"0"_s, 2.5}}}});
    session->application().whichArrayController().setRecord(0, record);
    QCOMPARE(statusOf(*session, 0), outdated);

    // The next start knows it, too.
    session->quit();
    session.reset();
    session = startSession();
    QCOMPARE(statusOf(*session, 0), outdated);
    QCOMPARE(statusOf(*session, 1), localised(u"V_row_success"_s));
    const QAction &makeAgain = *session->window().menu().makeAgain;
    QVERIFY(!makeAgain.isEnabled());
    session->window().drawer().selectRows({2});
    QCOMPARE(makeAgain.text(), localised(u"V_menu_makeSelected"_s));
    session->window().drawer().selectRows({0});
    QCOMPARE(makeAgain.text(), localised(u"V_menu_makeAgain"_s));
    const Answer replace(localised(u"D_replace"_s));
    session->window().menu().makeAgain->trigger();
    QVERIFY(session->isRunning() && !makeAgain.isEnabled());
    waitForEnd(*session);
    QCOMPARE(statusOf(*session, 0), localised(u"V_row_success"_s));
    QVERIFY(modified(u"a-index.jpg"_s) > first);
    QCOMPARE(modified(u"b-index.jpg"_s), second);
    QCOMPARE(statusOf(*session, 2), localised(u"V_row_waiting"_s));
    QCOMPARE(filesUnder(destination()), (QStringList{u"a-index.jpg"_s, u"b-index.jpg"_s}));
    // Those that were passed over are taken by the next ordinary run.
    session->go(RowsToMake::unmade);
    waitForEnd(*session);
    QCOMPARE(statusOf(*session, 2), localised(u"V_row_success"_s));
    QCOMPARE(modified(u"b-index.jpg"_s), second);
}

void TestDesktop::quittingWhileRunning_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<int>("ends");
    QTest::newRow("quit") << localised(u"D_quit_2"_s) << 1;
    QTest::newRow("cancel") << localised(u"D_Annuler"_s) << 0;
}

void TestDesktop::quittingWhileRunning()
{
    QFETCH(QString, answer);
    QFETCH(int, ends);
    auto session = startSession();
    QSignalSpy ended(session.get(), &DesktopSession::ended);
    add(*session, {clip(u"a.mp4"_s), clip(u"more/b.mp4"_s)});
    session->go();
    const Answer click(answer);
    session->window().menu().quit->trigger();
    QVERIFY2(click.question.contains(localised(u"Process in progress !"_s)) &&
                 click.question.contains(localised(u"D_quit_1"_s)),
             qPrintable(click.question));
    waitForEnd(*session);
    QTRY_COMPARE(ended.size(), ends);
    QCOMPARE(filesUnder(destination()).size(), ends == 1 ? 0 : 2);
    if (ends == 0)
        return;
    // What the user has interrupted himself is no failure.
    session.reset();
    session = startSession();
    QCOMPARE(statusOf(*session, 0), localised(u"V_row_waiting"_s));
    QVERIFY(!session->window().notices().shown());
}

void TestDesktop::quittingWhileAnalysingKeepsTheSources()
{
    auto session = startSession();
    QSignalSpy ended(session.get(), &DesktopSession::ended);
    const Answer unasked(localised(u"D_Annuler"_s));
    drop(session->window().dropArea(), {clip(u"a.mp4"_s), clip(u"more/b.mp4"_s)});
    QTRY_VERIFY(session->application().analysisDriver().isActive());
    session->quit();
    QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 1, patience);
    QCOMPARE(unasked.question, QString());
    session.reset();
    session = startSession();
    QTRY_COMPARE_WITH_TIMEOUT(session->model().rowCount(), 2, patience);
}

void TestDesktop::goWaitsForTheAnalysis()
{
    const auto session = startSession();
    add(*session, {clip(u"a.mp4"_s)});
    session->go();
    session->setPaused(true);
    drop(session->window().dropArea(), {clip(u"more/b.mp4"_s)});
    QVERIFY(session->window().dropArea().isBusy());
    session->stop();
    waitForEnd(*session);
    QVERIFY(!session->window().dropArea().isBusy() || !session->window().menu().go->isEnabled());
    // What a notice offers meanwhile is done then.
    session->go(RowsToMake::unmade);
    QTRY_VERIFY_WITH_TIMEOUT(statusOf(*session, 1) == localised(u"V_row_success"_s), patience);
    waitForEnd(*session);
    QCOMPARE(filesUnder(destination()), (QStringList{u"a-index.jpg"_s, u"b-index.jpg"_s}));
}

void TestDesktop::picturesStayOutOfTheDestination()
{
    auto session = startSession();
    add(*session, {clip(u"a.mp4"_s), clip(u"more/b.mp4"_s)});
    QSignalSpy begun(&session->application().sheetDriver(), &SheetDriver::aheadBegun);
    QStringList seen;
    QFileSystemWatcher watcher({destination()});
    connect(&watcher, &QFileSystemWatcher::directoryChanged, session.get(),
            [&] { seen += filesUnder(destination()); });
    session->go();
    const QStringList made{u"a-index.jpg"_s, u"b-index.jpg"_s};
    QTRY_COMPARE_WITH_TIMEOUT(filesUnder(destination()), made, patience);
    QCOMPARE(begun.size(), 1);
    for (const QString &name : made)
        seen.removeAll(name);
    QCOMPARE(seen, QStringList());
}

int main(int argc, char **argv)
{
    const PrivateBus bus;
    QApplication application(argc, argv);
    TestDesktop test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_desktop.moc"
