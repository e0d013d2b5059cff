#include "tasks/workFolder.h"

#include "tasks/testPlaces.h"

#include <QProcess>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace vignar;

class TestWorkFolder : public QObject
{
    Q_OBJECT

    const QString m_user = u"org.vignar.Vignar-%1"_s.arg(::geteuid());

private Q_SLOTS:
    void cleanup() { removeWorkFolder(); }

    void deadFoldersAreRemoved()
    {
        const TestPlaces places;
        const QString old = places.file(m_user + u"/desktop/old/frame.yuv"_s);
        const QString dead = places.file(m_user + u"/cli-0123abcd/frame.yuv"_s);
        const QString foreign = places.file(m_user + u"/cli-notes/keep.txt"_s);
        const QString unique = places.file(u"org.vignar.Vignar-aB3dE9/cli-0123abcd/x"_s);
        const QString alike = places.file(u"org.vignar.Vignar-letter/keep.txt"_s);
        QVERIFY(setUpWorkFolder(u"desktop"_s));
        QVERIFY(!QFileInfo::exists(QFileInfo(unique).dir().filePath(u".."_s)));
        QVERIFY(QFileInfo::exists(alike));
        QVERIFY(QFileInfo(old).dir() != QDir(workFolder()) && old.startsWith(workFolder()));
        QVERIFY(QDir(workFolder()).isEmpty());
        constexpr auto others = QFile::Permissions(0x0077);
        QVERIFY(!(QFile::permissions(workFolder()) & others));
        QVERIFY(!(QFile::permissions(places.folder.filePath(m_user)) & others));
        QVERIFY(!QFileInfo::exists(QFileInfo(dead).path()));
        QVERIFY(QFileInfo::exists(foreign));
        removeWorkFolder();
        QCOMPARE(QDir(places.folder.filePath(m_user)).count(), 3U);
    }

    void folderOfTheLivingStays()
    {
        for (const QString &instance : {u"desktop"_s, u"cli"_s}) {
            const TestPlaces places;
            qputenv("TMPDIR", places.folder.path().toUtf8());
            QProcess other;
            other.start(QStringLiteral(OTHER_RUN), {instance});
            QVERIFY(other.waitForReadyRead());
            const QString folder = QString::fromUtf8(other.readAll());
            QVERIFY(setUpWorkFolder(instance));
            QVERIFY(workFolder().startsWith(places.folder.filePath(m_user)));
            QVERIFY(workFolder() != folder && QFileInfo::exists(folder));
            other.kill();
            QVERIFY(other.waitForFinished());
            QVERIFY(setUpWorkFolder(u"cli"_s));
            QVERIFY(!QFileInfo::exists(folder));
            removeWorkFolder();
        }
    }

    void clearedFolderIsMadeAgain()
    {
        const TestPlaces places;
        QVERIFY(setUpWorkFolder(u"cli"_s));
        const QString folder = workFolder();
        QVERIFY(renewWorkFolder());
        QVERIFY(QDir(places.folder.filePath(m_user)).removeRecursively());
        QVERIFY(renewWorkFolder());
        QVERIFY(QFileInfo(folder).isDir() && QFileInfo::exists(folder + u".lock"_s));
        QVERIFY(!(QFile::permissions(folder) & QFile::Permissions(0x0077)));
        // What has taken its place meanwhile is not ours.
        QVERIFY(QDir().rmdir(folder) && QFile::link(u"/tmp"_s, folder));
        QVERIFY(!renewWorkFolder());
        QVERIFY(QFile::remove(folder));
    }

    void plantedLinkIsNotFollowed()
    {
        // In place of the user's folder, and of the run's.
        for (const QString &link : {m_user, m_user + u"/desktop"_s}) {
            const TestPlaces places;
            const QString kept = places.file(u"elsewhere/desktop/keep.txt"_s);
            const QString target = places.folder.filePath(u"elsewhere"_s);
            const QString path = places.folder.filePath(link);
            QVERIFY(QDir().mkpath(QFileInfo(path).path()) && QFile::link(target, path));
            QVERIFY(setUpWorkFolder(u"desktop"_s));
            QVERIFY(!QFileInfo(workFolder()).canonicalFilePath().startsWith(target));
            QVERIFY(QDir(workFolder()).isEmpty() && QFileInfo::exists(kept));
            removeWorkFolder();
        }
    }
};

QTEST_GUILESS_MAIN(TestWorkFolder)
#include "test_workFolder.moc"
