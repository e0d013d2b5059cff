#include "classShared/dates.h"
#include "classShared/paths.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <sys/stat.h>

using namespace vignar;
using namespace Qt::StringLiterals;

class PathsAndDatesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsAndReplaces_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("search");
        QTest::addColumn<QString>("replacement");
        QTest::addColumn<bool>("isRecursive");
        QTest::addColumn<QString>("result");
        const QString words = u"a  b   c"_s;
        QTest::newRow("runs of blanks") << words << u"  "_s << u" "_s << true << u"a b c"_s;
        QTest::newRow("one pass") << words << u"  "_s << u" "_s << false << u"a b  c"_s;
        QTest::newRow("replacement holds the search")
            << u"x-x"_s << u"x"_s << u"xx"_s << true << u"xx-xx"_s;
        QTest::newRow("text holds the placeholder")
            << u"CraZyWorld x"_s << u"x"_s << u"xx"_s << true << u"CraZyWorld xx"_s;
        QTest::newRow("search within the placeholder")
            << u"Zy1"_s << u"Zy"_s << u"ZyZy"_s << true << u"ZyZy1"_s;
        QTest::newRow("grows without end")
            << u"0011"_s << u"01"_s << u"1100"_s << true << u"011001"_s;
        QTest::newRow("case counts") << u"aA"_s << u"A"_s << u"b"_s << false << u"ab"_s;
        QTest::newRow("empty search") << u"aA"_s << u""_s << u"b"_s << true << u"aA"_s;
    }
    void findsAndReplaces()
    {
        QFETCH(QString, text);
        QFETCH(QString, search);
        QFETCH(QString, replacement);
        QFETCH(bool, isRecursive);
        QTEST(findAndReplace(text, search, replacement, isRecursive), "result");
        QVERIFY(findAndReplace(text, search, QString(), isRecursive).isNull());
    }

    void trimsBlanks()
    {
        QCOMPARE(trimLeadingTrailing(u"  a b "_s, true, true), u"a b"_s);
        QCOMPARE(trimLeadingTrailing(u"  a "_s, false, true), u"  a"_s);
        QCOMPARE(trimLeadingTrailing(u"  a "_s, true, false), u"a "_s);
        QVERIFY(trimLeadingTrailing(u"   "_s, true, true).isNull());
    }

    void trimsPath_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("length");
        QTest::addColumn<QString>("trimmed");
        QTest::newRow("cleaned and cut") << u"/m/my:clip`01.mov"_s << 6 << u"/m/my-cli.mov"_s;
        QTest::newRow("no folder") << u"clip.mov"_s << 2 << u"cl.mov"_s;
        QTest::newRow("directly under the root") << u"/clip.mov"_s << 2 << u"/cl.mov"_s;
        QTest::newRow("point within a sentence")
            << u"/m/Mr. Smith goes to Rome"_s << 9 << u"/m/Mr. Smith"_s;
        QTest::newRow("surrogate pair") << u"/m/a\U0001F3AC.mov"_s << 2 << u"/m/a.mov"_s;
        QTest::newRow("hidden") << u"/m/.profile"_s << 20 << u"/m/.profile"_s;
    }
    void trimsPath()
    {
        QFETCH(QString, path);
        QFETCH(int, length);
        QTEST(trimPathStr(path, length), "trimmed");
    }

    void marksMaster()
    {
        QCOMPARE(masterPath(u"/m/film.1.mov"_s), u"/m/film.1_MASTER.mov"_s);
        QCOMPARE(masterPath(u"/m/12345678901234567890.mov"_s),
                 u"/m/12345678901234567890_MASTER.mov"_s);
        QCOMPARE(masterPath(u"/m/1234567890.2345678901.mov"_s),
                 u"/m/1234567890_234567890_MASTER.mov"_s);
    }

    void resolvesLinks()
    {
        const QTemporaryDir folder;
        const QString real = QDir(folder.path()).canonicalPath();
        QVERIFY(QDir(real).mkpath(u"a/Trip.iMovieProject/Shared Movies/iDVD"_s));
        const QString movie = real + u"/a/Trip.iMovieProject/Shared Movies/iDVD/Trip.mov"_s;
        QVERIFY(QFile(movie).open(QIODevice::WriteOnly));
        const QString link = real + u"/link.avi"_s;
        QVERIFY(QFile::link(movie, link));
        QCOMPARE(fichier_nom(link), u"Trip"_s);
        QCOMPARE(fichier_dirname(link), real + u"/a"_s);
        QCOMPARE(fichier_dirname(real + u"/a/../new/film.jpg"_s), real + u"/new"_s);
        QVERIFY(fichier_nom(QString()).isNull());
        QVERIFY(!fichier_dirname(QString()).isNull());
    }

    void makesTitles()
    {
        QCOMPARE(pathes2Titles(u"/v/My_Film-PAL.mpg"_s), u"My Film"_s);
        QCOMPARE(pathes2Titles(u"/v/My__Film_-x-NV.mpg"_s, {u"-x"_s}), u"My Film -x"_s);
        QCOMPARE(pathes2Titles(u"/v/A-NF-B-NF.mpg"_s), u"A"_s);
        QCOMPARE(pathes2Titles(u"/v/-PAL.mpg"_s), u"-PAL"_s);
    }

    void tellsWhatExists()
    {
        const QTemporaryDir folder;
        const QString pipe = folder.filePath(u"pipe"_s);
        const QString dangling = folder.filePath(u"dangling"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(QFile::link(u"/no/such/file"_s, dangling));
        QVERIFY(pathExists(pipe)); // Without waiting for its writer.
        QVERIFY(pathExists(folder.path()));
        QVERIFY(!pathExists(dangling));
        QVERIFY(!pathExists(u""_s));
    }

    void knowsTheHome()
    {
        qputenv("HOME", "/data/home/anne/x");
        QCOMPARE(homeUserName(), u"anne"_s);
        QCOMPARE(expandTilde(u"~/Movies"_s), u"/data/home/anne/x/Movies"_s);
        QCOMPARE(expandTilde(u"~no such user/x"_s), u"~no such user/x"_s);
        QCOMPARE(expandTilde(u"~root/x"_s), u"/root/x"_s);
        qputenv("HOME", "/root");
        QCOMPARE(homeUserName(), u"root"_s);
        qputenv("HOME", "/srv/x");
        QVERIFY(homeUserName().isNull());
    }

    void tellsTheDayOfAFile()
    {
        const QDateTime shot(QDate(2011, 3, 4), QTime(5, 6, 7));
        QTemporaryFile file;
        QVERIFY(file.open() && file.setFileTime(shot, QFileDevice::FileModificationTime));
        QCOMPARE(dateCreation(file.fileName()), shot);
        QCOMPARE(dateCreationStr(file.fileName(), {}, false), u"2011-03-04"_s);
        QCOMPARE(dateCreationStr(file.fileName(), {}, true), u"2011-03-04 05:06:07"_s);
        QCOMPARE(dateCreationStr(QString(), shot, false), u"2011-03-04"_s);

        // A file whose last modification lies ahead was not made then.
        const QDateTime ahead = QDateTime::currentDateTime().addYears(5);
        QVERIFY(file.setFileTime(ahead, QFileDevice::FileModificationTime));
        if (QFileInfo(file.fileName()).birthTime().isValid())
            QVERIFY(dateCreation(file.fileName()) < ahead);
    }

    void noFileNoDate()
    {
        const QDateTime fallback = QDateTime::currentDateTime();
        QVERIFY(!dateCreation(u"/no/such/file"_s).isValid());
        QVERIFY(dateCreationStr(u"/no/such/file"_s, fallback, true).isNull());
        QVERIFY(dateCreationStr(QString(), {}, true).isNull());
    }

    void compactsForTouch()
    {
        QCOMPARE(dateCreationForTouch(u"2011-03-04 05:06:07 +0100"_s), u"201103040506.07"_s);
        QCOMPARE(dateCreationForTouch(u"2011-03-04"_s), u"20110304"_s);
        QCOMPARE(dateCreationForTouch(u"2011-03-04 05:06"_s), u"201103040506"_s);
        QVERIFY(dateCreationForTouch(QString()).isNull());
    }
};

QTEST_APPLESS_MAIN(PathsAndDatesTest)
#include "test_pathsAndDates.moc"
