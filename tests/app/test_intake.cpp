#include "app/batchList.h"
#include "app/intake.h"
#include "app/sourceFiles.h"
#include "settings/preferences.h"
#include "support/recordingOutlets.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

QString touch(const QTemporaryDir &folder, const QString &name)
{
    const QString path = folder.filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) ? path : QString();
}

QStringList pending()
{
    QStringList paths;
    const Dico stored = prefStored(RunKeys::analysisSrcPathesDico).value_or(Dico());
    for (int number = 0; number < stored.size(); ++number)
        paths.append(stored.value(QString::number(number)).toString());
    return paths;
}

} // namespace

class TestIntake : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        prefDelete(RunKeys::analysisSrcPathesDico);
        prefDelete(RunKeys::analysisDeb);
    }

    void admitsThreeSpellings_data();
    void admitsThreeSpellings();
    void folderInFirstPlaceReplacesTheRest();
    void linkedFolderIsEntered();
    void knownSourcesAreLeftOut();
    void nothingAdmittedTellsWhy();
    void laterDropJoinsTheQueue();
};

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
    QTest::newRow("text") << u"/v/a.mp4.txt"_s << false;
}

void TestIntake::admitsThreeSpellings()
{
    QFETCH(QString, path);
    QTEST(hasAdmittedExtension(path), "isAdmitted");
}

void TestIntake::folderInFirstPlaceReplacesTheRest()
{
    QTemporaryDir folder;
    touch(folder, u"in/b/clip 10.mkv"_s);
    touch(folder, u"in/b/clip 9.mkv"_s);
    touch(folder, u"in/notes.txt"_s);
    const QString other = touch(folder, u"other.mp4"_s);
    RecordingOutlets outlets;
    BatchList batch(outlets);
    Intake intake(outlets, batch);
    QSignalSpy ready(&intake, &Intake::sourcesReady);
    intake.draggedFiles({folder.filePath(u"in"_s), other});
    QCOMPARE(ready.size(), 1);
    QCOMPARE(pending(), (QStringList{folder.filePath(u"in/b/clip 9.mkv"_s),
                                     folder.filePath(u"in/b/clip 10.mkv"_s)}));
    QCOMPARE(prefStored(RunKeys::analysisDeb), 1);
    QCOMPARE(outlets.dropImage, u"dndAppOff"_s);
}

void TestIntake::linkedFolderIsEntered()
{
    QTemporaryDir folder;
    touch(folder, u"in/a.mp4"_s);
    const QString link = folder.filePath(u"link"_s);
    QVERIFY(QFile::link(folder.filePath(u"in"_s), link));
    QCOMPARE(withFolderContents({link}),
             QStringList{QFileInfo(folder.filePath(u"in/a.mp4"_s)).canonicalFilePath()});
}

void TestIntake::knownSourcesAreLeftOut()
{
    RecordingOutlets outlets;
    BatchList batch(outlets);
    SourceDico dico;
    write(dico, Keys::srcPathStr, u"/v/a.mp4"_s);
    batch.append(makeBatchEntry(dico, 1, mixLayout, 1));
    Intake intake(outlets, batch);
    QSignalSpy ready(&intake, &Intake::sourcesReady);
    intake.draggedFiles({u"/v/a.mp4"_s});
    QCOMPARE(ready.size(), 0);
    QVERIFY(outlets.notices.isEmpty());
    QVERIFY(outlets.isGoEnabled);
    intake.draggedFiles({u"/v/a.mp4"_s, u"/v/b.mp4"_s, u"/v/b.mp4"_s});
    QCOMPARE(pending(), QStringList{u"/v/b.mp4"_s});
}

void TestIntake::nothingAdmittedTellsWhy()
{
    QTemporaryDir empty;
    RecordingOutlets outlets;
    BatchList batch(outlets);
    Intake intake(outlets, batch);
    QSignalSpy ended(&intake, &Intake::busyEnded);
    intake.draggedFiles({empty.path()});
    QCOMPARE(ended.size(), 1);
    QCOMPARE(outlets.notices.size(), 1);
    QCOMPARE(outlets.dropImage, u"dndApp"_s);
    QVERIFY(!outlets.isGoEnabled);
    QVERIFY(pending().isEmpty());
}

void TestIntake::laterDropJoinsTheQueue()
{
    RecordingOutlets outlets;
    BatchList batch(outlets);
    Intake intake(outlets, batch);
    intake.draggedFiles({u"/v/a.mp4"_s, u"/v/b.mp4"_s});
    intake.draggedFiles({u"/v/c.mp4"_s, u"/v/b.mp4"_s});
    QCOMPARE(pending(), (QStringList{u"/v/a.mp4"_s, u"/v/b.mp4"_s, u"/v/c.mp4"_s}));
}

QTEST_GUILESS_MAIN(TestIntake)
#include "test_intake.moc"
