#include "app/appDelegate.h"
#include "app/sourceFiles.h"
#include "app/sourceQueue.h"
#include "classShared/standIns.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "support/recordingOutlets.h"
#include "tasks/testPlaces.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <filesystem>
#include <fstream>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

QStringList printed()
{
    QStringList paths;
    const Dico stored = prefStored(RunKeys::analysisSrcPathesDico).value_or(Dico());
    for (int number = 0; number < stored.size(); ++number)
        paths.append(stored.value(QString::number(number)).toString());
    return paths;
}

QStringList numbered(int from, int to)
{
    QStringList paths;
    for (int number = from; number < to; ++number)
        paths.append(u"/v/%1.mp4"_s.arg(number));
    return paths;
}

void append(SourceQueue &queue, const QStringList &sources)
{
    queue.append(sources, QSet<QString>(sources.begin(), sources.end()));
}

} // namespace

/// Where there is no ffmpeg each source that is taken in is refused in its turn, so that the
/// refusals tell what was taken in, and in which order.
class TestIntake : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { m_application.reset(); }
    void cleanupTestCase();

    void admitsThreeSpellings_data();
    void admitsThreeSpellings();
    void dropsAreSearched_data();
    void dropsAreSearched();
    void firstFolderReplacesTheRest();
    void namesThatAreNotUtf8AreTakenOnce();
    void whatCannotBeReadIsTold();
    void rowsAreLeftOut();
    void nothingAdmittedTellsWhy();
    void laterDropsComeLater();
    void stopForgetsWhatIsSearched();
    void queueIsPrinted();
    void longQueueIsPrintedNowAndThen();

private:
    QString in(const QString &name) const { return m_places->folder.filePath(name); }
    QStringList in(QStringList names) const
    {
        for (QString &name : names)
            name = in(name);
        return names;
    }
    QStringList taken() const;

    std::unique_ptr<TestPlaces> m_places;
    std::unique_ptr<RecordingOutlets> m_outlets;
    std::unique_ptr<appDelegate> m_application;
};

void TestIntake::initTestCase()
{
    m_places = std::make_unique<TestPlaces>();
    for (const QString &name : {u"other.mp4"_s,
                                u".hidden.mp4"_s,
                                u"notes.txt"_s,
                                u"one/b/clip 10.mkv"_s,
                                u"one/b/clip 9.mkv"_s,
                                u"one/notes.txt"_s,
                                u"one/a.mp4"_s,
                                u"two/z.mp4"_s,
                                u"camera/.clip.mp4"_s,
                                u"camera/._clip.mp4"_s,
                                u"camera/clip.mp4"_s,
                                u"camera/.Trash-1000/files/a.mp4"_s,
                                u"camera/.Trashes/501/a.mp4"_s,
                                u"camera/$RECYCLE.BIN/S-1/a.mp4"_s,
                                u"camera/$Recycle.Bin/a.mp4"_s,
                                u"camera/lost+found/a.mp4"_s,
                                u"camera/System Volume Information/a.mp4"_s,
                                u"camera/@eaDir/a.mp4"_s,
                                u"camera/trip/.cache/a.mp4"_s,
                                u"camera/trip/@eaDirs.mp4"_s,
                                u".private/a.mp4"_s})
        QVERIFY(!m_places->file(name).isNull());
    QVERIFY(QDir(in(u""_s)).mkpath(u"empty"_s));
    QVERIFY(QFile::link(in(u"two"_s), in(u"link to two"_s)));
    QVERIFY(QFile::link(in(u"two"_s), in(u"one/link to two"_s)));
    QVERIFY(QFile::link(in(u"other.mp4"_s), in(u"link.mp4"_s)));
}

void TestIntake::init()
{
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    m_outlets = std::make_unique<RecordingOutlets>();
    m_application = std::make_unique<appDelegate>(*m_outlets);
}

void TestIntake::cleanupTestCase()
{
    // The folder's own removal does not see names that are not UTF-8.
    std::filesystem::remove_all(m_places->folder.path().toStdString());
}

QStringList TestIntake::taken() const
{
    QStringList paths;
    for (const auto &[path, reason] : m_outlets->refused)
        paths.append(path);
    return paths;
}

void TestIntake::admitsThreeSpellings_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isAdmitted");
    QTest::newRow("lower") << u"/v/a.mp4"_s << true;
    QTest::newRow("upper") << u"/v/a.MP4"_s << true;
    QTest::newRow("capitalised") << u"/v/a.Mp4"_s << true;
    QTest::newRow("mixed") << u"/v/a.mP4"_s << false;
    QTest::newRow("with a hyphen") << u"/v/a.dvr-ms"_s << true;
    QTest::newRow("none") << u"/v/mp4"_s << false;
    QTest::newRow("dot in the folder only") << u"/v.mp4/a"_s << false;
    QTest::newRow("bundle") << u"/v/a.eyetv"_s << false;
    QTest::newRow("bundle of projects") << u"/v/a.imovieproject"_s << false;
    QTest::newRow("text") << u"/v/a.mp4.txt"_s << false;
}

void TestIntake::admitsThreeSpellings()
{
    QFETCH(QString, path);
    QTEST(hasAdmittedExtension(path), "isAdmitted");
}

void TestIntake::dropsAreSearched_data()
{
    QTest::addColumn<QStringList>("dropped");
    QTest::addColumn<QStringList>("sources");
    const QStringList one{u"one/a.mp4"_s, u"one/b/clip 9.mkv"_s, u"one/b/clip 10.mkv"_s};
    QTest::newRow("a folder") << QStringList{u"one"_s} << one;
    QTest::newRow("several") << QStringList{u"two"_s, u"one"_s}
                             << QStringList{u"two/z.mp4"_s} + one;
    QTest::newRow("folder between files")
        << QStringList{u"other.mp4"_s, u"one"_s, u"two/z.mp4"_s}
        << QStringList{u"other.mp4"_s} + one + QStringList{u"two/z.mp4"_s};
    QTest::newRow("file of a folder dropped with it")
        << QStringList{u"one/b/clip 10.mkv"_s, u"one"_s}
        << QStringList{u"one/b/clip 10.mkv"_s, u"one/a.mp4"_s, u"one/b/clip 9.mkv"_s};
    QTest::newRow("links") << QStringList{u"link to two"_s, u"link.mp4"_s}
                           << QStringList{u"two/z.mp4"_s, u"other.mp4"_s};
    QTest::newRow("empty folder") << QStringList{u"empty"_s, u"two"_s}
                                  << QStringList{u"two/z.mp4"_s};
    QTest::newRow("hidden entries and trash")
        << QStringList{u"camera"_s}
        << QStringList{u"camera/clip.mp4"_s, u"camera/trip/@eaDirs.mp4"_s};
    QTest::newRow("hidden but named")
        << QStringList{u".hidden.mp4"_s, u".private"_s, u"camera/._clip.mp4"_s}
        << QStringList{u".hidden.mp4"_s, u".private/a.mp4"_s, u"camera/._clip.mp4"_s};
}

void TestIntake::dropsAreSearched()
{
    QFETCH(QStringList, dropped);
    QFETCH(QStringList, sources);
    m_application->draggedFiles(in(dropped), FoldersTaken::all);
    QCOMPARE(m_outlets->dropImage, u"dndAppOff"_s);
    QTRY_VERIFY(!m_application->isTakingSources());
    QCOMPARE(taken(), in(sources));
    QCOMPARE(m_outlets->dropImage, u"dndApp"_s);
    QCOMPARE(m_outlets->analysisEnds, 1);
}

void TestIntake::firstFolderReplacesTheRest()
{
    m_application->draggedFiles(in({u"two"_s, u"other.mp4"_s, u"one"_s}));
    QTRY_VERIFY(!m_application->isTakingSources());
    QCOMPARE(taken(), QStringList{in(u"two/z.mp4"_s)});
    QCOMPARE(withFolderContents(in({u"empty"_s, u"one"_s})).paths, in({u"empty"_s, u"one"_s}));
    QCOMPARE(withFolderContents(in({u"link.mp4"_s, u"link.mp4"_s})).paths,
             in({u"other.mp4"_s, u"link.mp4"_s}));
}

void TestIntake::namesThatAreNotUtf8AreTakenOnce()
{
    setStandInFolder(in(u".names"_s));
    const QByteArray folder = QFile::encodeName(in(u"raw/"_s)) + "\xe9t";
    const auto native = std::filesystem::path(folder.toStdString());
    std::filesystem::create_directories(native);
    for (const char *name : {"b.mp4", "a\xe9.mp4", "a\xe8.mp4", "a\xe9.txt"})
        std::ofstream(native / name) << "video";
    const QString dropped = openablePath(folder);
    QVERIFY(isStandIn(dropped));
    m_application->draggedFiles({dropped, openablePath(folder + "/b.mp4"), dropped},
                                FoldersTaken::all);
    QTRY_VERIFY(!m_application->isTakingSources());
    QStringList shown;
    for (const QString &path : taken()) {
        QVERIFY(QFile::exists(path));
        shown.append(shownPath(path));
    }
    const QString readable = in(u"raw/\ufffdt/"_s);
    QCOMPARE(shown, (QStringList{readable + u"a\ufffd.mp4"_s, readable + u"a\ufffd.mp4"_s,
                                 readable + u"b.mp4"_s}));
}

void TestIntake::whatCannotBeReadIsTold()
{
    // A name that needs a stand-in where none can be made.
    setStandInFolder(in(u"notes.txt/names"_s));
    const QByteArray folder = QFile::encodeName(in(u"unnamed"_s));
    std::filesystem::create_directories(folder.toStdString());
    std::ofstream((folder + "/\xe9.mp4").toStdString()) << "video";
    m_application->draggedFiles({in(u"unnamed"_s)});
    QTRY_VERIFY(!m_application->isTakingSources());
    QCOMPARE(taken(), QStringList{in(u"unnamed/\ufffd.mp4"_s)});
    QVERIFY(m_outlets->notices.isEmpty());
}

void TestIntake::rowsAreLeftOut()
{
    SourceDico dico;
    write(dico, Keys::srcPathStr, in(u"other.mp4"_s));
    m_application->whichArrayController().append(makeBatchEntry(dico, 1, mixLayout, 1));
    m_application->draggedFiles({in(u"other.mp4"_s)});
    QTRY_VERIFY(!m_application->isTakingSources());
    QVERIFY(m_outlets->notices.isEmpty());
    QVERIFY(m_outlets->isGoEnabled);
    m_application->draggedFiles(in({u"other.mp4"_s, u"two/z.mp4"_s, u"two/z.mp4"_s}));
    QTRY_VERIFY(!m_application->isTakingSources());
    QCOMPARE(taken(), QStringList{in(u"two/z.mp4"_s)});
}

void TestIntake::nothingAdmittedTellsWhy()
{
    for (const QString &name : {u"empty"_s, u"notes.txt"_s}) {
        m_outlets->notices.clear();
        m_application->draggedFiles({in(name)});
        QTRY_VERIFY(!m_application->isTakingSources());
        QCOMPARE(m_outlets->notices.size(), 1);
        QCOMPARE(m_outlets->dropImage, u"dndApp"_s);
        QVERIFY(!m_outlets->isGoEnabled);
    }
    QVERIFY(taken().isEmpty());
}

void TestIntake::laterDropsComeLater()
{
    m_application->applicationOpenFiles({in(u"two/z.mp4"_s)});
    m_application->draggedFiles({in(u"one"_s)}, FoldersTaken::all);
    m_application->draggedFiles(in({u"other.mp4"_s, u"one/a.mp4"_s}), FoldersTaken::all);
    QCOMPARE(m_application->unfinishedSources(),
             in({u"one"_s, u"other.mp4"_s, u"one/a.mp4"_s, u"two/z.mp4"_s}));
    QTRY_COMPARE(m_outlets->analysisEnds, 1);
    QCOMPARE(taken(), in({u"one/a.mp4"_s, u"one/b/clip 9.mkv"_s, u"one/b/clip 10.mkv"_s,
                          u"other.mp4"_s, u"two/z.mp4"_s}));
    QVERIFY(m_application->unfinishedSources().isEmpty());
}

void TestIntake::stopForgetsWhatIsSearched()
{
    m_application->draggedFiles({in(u"one"_s)}, FoldersTaken::all);
    m_application->draggedFiles({in(u"other.mp4"_s)});
    m_application->iba_taskStopBt(RunnerKind::analysis);
    m_application->draggedFiles({in(u"one/a.mp4"_s)});
    QCOMPARE(m_application->unfinishedSources(), QStringList{in(u"one/a.mp4"_s)});
    QTRY_COMPARE(m_outlets->analysisEnds, 1);
    QCOMPARE(taken(), QStringList{in(u"one/a.mp4"_s)});
}

void TestIntake::queueIsPrinted()
{
    SourceQueue queue;
    append(queue, numbered(0, 12));
    append(queue, numbered(12, 14));
    QCOMPARE(printed(), numbered(0, 14));
    QCOMPARE(queue.takeFirst(), u"/v/0.mp4"_s);
    QCOMPARE(printed(), numbered(1, 14));
    queue.clear();
    QVERIFY(queue.isEmpty() && !queue.asSet().contains(u"/v/1.mp4"_s));
    QVERIFY(!prefRead(RunKeys::analysisSrcPathesDico).isValid());
    append(queue, numbered(3, 4));
    QCOMPARE(printed(), numbered(3, 4));
    queue.takeFirst();
    QVERIFY(!prefRead(RunKeys::analysisSrcPathesDico).isValid());
}

/// What is printed may lack no source that waits, however the changes fall.
void TestIntake::longQueueIsPrintedNowAndThen()
{
    constexpr int count = 6 * int(SourceQueue::shortQueue);
    SourceQueue queue;
    append(queue, numbered(0, count / 2));
    append(queue, numbered(count / 2, count));
    QTRY_COMPARE(printed(), numbered(0, count));
    for (int next = 0; next < count; ++next) {
        QCOMPARE(queue.takeFirst(), u"/v/%1.mp4"_s.arg(next));
        if (next % 32 != 0)
            continue;
        QTest::qWait(0);
        const QStringList stored = printed();
        QCOMPARE(stored.mid(stored.size() - queue.size()), queue.paths());
        QVERIFY(queue.size() > SourceQueue::shortQueue || stored.size() == queue.size());
    }
    append(queue, numbered(0, count));
    queue.clear();
    append(queue, numbered(count, 2 * count));
    QTRY_VERIFY(!printed().isEmpty());
    QCOMPARE(printed(), numbered(count, 2 * count));
    for (int next = 0; next < count / 2; ++next)
        queue.takeFirst();
    QTRY_COMPARE(printed(), queue.paths());
}

QTEST_GUILESS_MAIN(TestIntake)
#include "test_intake.moc"
