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
    void texts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QString &text, const QString &expected) {
            QTest::newRow(name) << text << expected;
        };
        const auto replaced = [](const auto &...texts) { return findAndReplace(texts..., true); };
        row("runs of blanks", replaced(u"a  b   c"_s, u"  "_s, u" "_s), u"a b c"_s);
        row("one pass", findAndReplace(u"b   c"_s, u"  "_s, u" "_s, false), u"b  c"_s);
        row("replacement holds the search", replaced(u"x-x"_s, u"x"_s, u"xx"_s), u"xx-xx"_s);
        row("holds the placeholder", replaced(u"CraZyWorldx"_s, u"x"_s, u"xx"_s),
            u"CraZyWorldxx"_s);
        row("search within the placeholder", replaced(u"Zy1"_s, u"Zy"_s, u"ZyZy"_s), u"ZyZy1"_s);
        row("grows without end", replaced(u"0011"_s, u"01"_s, u"1100"_s), u"011001"_s);
        row("empty search", replaced(u"aA"_s, u""_s, u"b"_s), u"aA"_s);

        row("blanks at both ends", trimLeadingTrailing(u"  a b "_s, true, true), u"a b"_s);
        row("blanks behind", trimLeadingTrailing(u"  a "_s, false, true), u"  a"_s);

        row("cleaned and cut", trimPathStr(u"/m/my:clip`01.mov"_s, 6), u"/m/my-cli.mov"_s);
        row("no folder", trimPathStr(u"clip.mov"_s, 2), u"cl.mov"_s);
        row("under the root", trimPathStr(u"/clip.mov"_s, 2), u"/cl.mov"_s);
        row("point within a sentence", trimPathStr(u"/m/Mr. Smith goes to Rome"_s, 9),
            u"/m/Mr. Smith"_s);
        row("surrogate pair", trimPathStr(u"/m/a\U0001F3AC.mov"_s, 2), u"/m/a.mov"_s);
        row("hidden", trimPathStr(u"/m/.profile"_s, 20), u"/m/.profile"_s);

        row("master", masterPath(u"/m/film.1.mov"_s), u"/m/film.1_MASTER.mov"_s);
        row("long master", masterPath(u"/m/1234567890.2345678901.mov"_s),
            u"/m/1234567890_234567890_MASTER.mov"_s);

        row("marks at the end", pathes2Titles(u"/v/My__Film_-x-PAL.mpg"_s), u"My Film -x"_s);
        row("own suffix", pathes2Titles(u"/v/My__Film_-x-NV.mpg"_s, {u"-x"_s}), u"My Film -x"_s);
        row("mark twice", pathes2Titles(u"/v/A-NF-B-NF.mpg"_s), u"A"_s);
        row("nothing but a mark", pathes2Titles(u"/v/-PAL.mpg"_s), u"-PAL"_s);

        row("time of a zone", dateCreationForTouch(u"2011-03-04 05:06:07 +0100"_s),
            u"201103040506.07"_s);
        row("day alone", dateCreationForTouch(u"2011-03-04"_s), u"20110304"_s);
        row("no seconds", dateCreationForTouch(u"2011-03-04 05:06"_s), u"201103040506"_s);
    }
    void texts()
    {
        QFETCH(QString, text);
        QTEST(text, "expected");
    }

    void textsMayBeNull()
    {
        QVERIFY(findAndReplace(u"a"_s, u"a"_s, QString(), true).isNull());
        QVERIFY(trimLeadingTrailing(u"   "_s, true, true).isNull());
        QVERIFY(dateCreationForTouch(QString()).isNull());
        QVERIFY(fichier_nom(QString()).isNull() && !fichier_dirname(QString()).isNull());
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
    }

    void tellsWhatExists()
    {
        const QTemporaryDir folder;
        const QString pipe = folder.filePath(u"pipe"_s);
        const QString dangling = folder.filePath(u"dangling"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(QFile::link(u"/no/such/file"_s, dangling));
        QVERIFY(pathExists(pipe)); // Without waiting for its writer.
        QVERIFY(pathExists(folder.path()) && !pathExists(dangling) && !pathExists(u""_s));
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
        QCOMPARE(dateCreationStr(file.fileName(), {}, true), u"2011-03-04 05:06:07"_s);
        QCOMPARE(dateCreationStr(QString(), shot, false), u"2011-03-04"_s);
        QVERIFY(dateCreationStr(u"/no/such/file"_s, shot, true).isNull());

        // A file whose last modification lies ahead was not made then.
        const QDateTime ahead = QDateTime::currentDateTime().addYears(5);
        QVERIFY(file.setFileTime(ahead, QFileDevice::FileModificationTime));
        const QDateTime born = QFileInfo(file.fileName()).birthTime();
        if (!born.isValid())
            QSKIP("this file system keeps no birth times");
        QVERIFY(dateCreation(file.fileName()) < ahead);
        // Nor at the beginning of the clock.
        for (const qint64 second : {0, 1, 6 * 86400}) {
            const auto time = QDateTime::fromSecsSinceEpoch(second);
            QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
            QCOMPARE(dateCreation(file.fileName()), born);
        }
    }
};

QTEST_APPLESS_MAIN(PathsAndDatesTest)
#include "test_pathsAndDates.moc"
