#include "classShared/fileNames.h"
#include "classShared/files.h"
#include "classShared/sizes.h"
#include "classShared/standIns.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <QTemporaryDir>
#include <QTest>

#include <filesystem>
#include <fstream>

#include <unistd.h>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(bytes) == bytes.size();
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

} // namespace

class FilesTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    QString at(const QString &name) const { return m_folder->filePath(name); }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        qputenv("HOME", QFile::encodeName(at(u"up/user"_s)));
        QVERIFY(write(at(u"up/user/keep.txt"_s), "keep"));
    }

    void standInsOpenWhatHasNoName_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("shown");
        QTest::newRow("Latin-1") << QByteArray("caf\xe9.mp4") << u"caf\ufffd.mp4"_s;
        QTest::newRow("another of the same look")
            << QByteArray("caf\xe8.mp4") << u"caf\ufffd.mp4"_s;
        QTest::newRow("folder") << QByteArray("\xe9t\xe9/a.mp4") << u"\ufffdt\ufffd/a.mp4"_s;
        QTest::newRow("longer than a name when shown")
            << QByteArray(200, '\xe9') + ".mp4" << QString(200, QChar(0xfffd)) + u".mp4"_s;
        QTest::newRow("half a pair")
            << QByteArray("\xed\xa0\x80.mp4") << QString(3, QChar(0xfffd)) + u".mp4"_s;
    }

    void standInsOpenWhatHasNoName()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, shown);
        setStandInFolder(at(u"state/names"_s));
        const QByteArray path = QFile::encodeName(at(u"raw/"_s)) + name;
        const auto native = std::filesystem::path(path.toStdString());
        std::filesystem::create_directories(native.parent_path());
        std::ofstream(native) << "video";
        const QString standIn = openablePath(path);
        QCOMPARE(read(standIn), "video");
        QVERIFY(standIn.endsWith(u".mp4"_s) && isStandIn(standIn));
        QCOMPARE(openablePath(path), standIn);
        QCOMPARE(openablePath(path + "/../" + name.mid(name.lastIndexOf('/') + 1)), standIn);
        QCOMPARE(openablePath(QFile::encodeName(standIn)), standIn);
        QCOMPARE(systemPath(standIn), path);
        QCOMPARE(shownPath(standIn), at(u"raw/"_s + shown));
        QCOMPARE(followedLink(standIn), standIn);
        constexpr auto others = QFile::Permissions(0x0077);
        QVERIFY(!(QFile::permissions(at(u"state/names"_s)) & others));
        const QByteArray look = path.left(path.lastIndexOf('.')) + "2.mp4";
        QVERIFY(openablePath(look) != standIn);
        sweepStandIns({standIn});
        QVERIFY(isStandIn(standIn));
        QCOMPARE(QDir(at(u"state/names"_s)).count(), 3U);
        std::filesystem::create_symlink(native, nativePath(at(u"link.mp4"_s)));
        QCOMPARE(followedLink(at(u"link.mp4"_s)), standIn);
        sweepStandIns({});
        QVERIFY(std::filesystem::exists(native) && !QFile::exists(standIn));
        QCOMPARE(read(openablePath(path)), "video");
        // Its own removal does not see such names.
        std::filesystem::remove_all(nativePath(at(u"raw"_s)));
    }

    void otherPathsStandForThemselves()
    {
        setStandInFolder(at(u"names"_s));
        const QString file = at(u"été \ufffd.mp4"_s);
        QVERIFY(write(file, "video"));
        QCOMPARE(openablePath(QFile::encodeName(file)), file);
        QVERIFY(!QFileInfo::exists(at(u"names"_s)));
        const QString alike = at(u"0123456789abcdef/a.mp4"_s);
        QVERIFY(QDir().mkpath(at(u"0123456789abcdef"_s)) && QFile::link(file, alike));
        QVERIFY(!isStandIn(alike));
        QCOMPARE(shownPath(alike), alike);
        QCOMPARE(systemPath(alike), QFile::encodeName(alike));
        QCOMPARE(followedLink(alike), QFileInfo(file).canonicalFilePath());
        QCOMPARE(followedLink(at(u"none"_s)), at(u"none"_s));
        // A folder of the user's in the same place is none of ours.
        QVERIFY(write(at(u"names/holidays of 2020/a.mp4"_s), "video"));
        sweepStandIns({});
        QVERIFY(QFileInfo::exists(at(u"names/holidays of 2020/a.mp4"_s)));
        setStandInFolder({});
        QVERIFY(openablePath("/v/\xe9.mp4").isNull());
        sweepStandIns({});
    }

    // Items that do not exist: a refusal answers false where a removal would answer
    // true, and a fault here removes nothing.
    void refusesSharedRoots()
    {
        for (const char *path :
             {"", "no-such-item", "./no-such-item", "/no-such-item", "/tmp/../no-such-item",
              "//no-such-item/", "/Users/no-such-user", "/Volumes/no-such-disk",
              "/home/no-such-user", "/home/no-such-user/", "/home/x/../no-such-user",
              "/media/no-such-user", "/mnt/no-such-disk", "/run/media/no-such-user",
              "/*no-such-item", "*", "/Volumes/*/no-such-item", "/Volumes/Users/*no-such-item/x"})
            QVERIFY2(!rmCocoa(QString::fromLatin1(path)), path);
    }

    void refusesHomeAndAbove()
    {
        QVERIFY(QFile::link(m_folder->path(), at(u"link"_s)));
        QVERIFY(QFile::link(at(u"up/user"_s), at(u"home"_s)));
        // One stands in the home folder's text without being a folder above it.
        QVERIFY(write(at(u"up/us/keep.txt"_s), "keep"));
        for (const QString &home : {u"up/user"_s, u"home"_s}) {
            qputenv("HOME", QFile::encodeName(at(home)));
            for (const QString &path :
                 {u"~"_s, u"~/x/../.."_s, at(u"up/user"_s), at(u"up/user//"_s), at(u"up/user/."_s),
                  at(u"up/user/../user"_s), at(u"up"_s), at(u"up/us"_s), at(u"link/up"_s),
                  at(home)})
                QVERIFY2(!rmCocoa(path), qPrintable(path));
        }
        QCOMPARE(read(at(u"home/keep.txt"_s)) + read(at(u"up/us/keep.txt"_s)), "keepkeep");
    }

    void removesButNeverThroughALink()
    {
        QVERIFY(write(at(u"kept/film.mov"_s), "film"));
        QVERIFY(write(at(u"gone/sub/.hidden"_s), "x"));
        QVERIFY(QFile::link(at(u"kept"_s), at(u"gone/sub/folder"_s)));
        QVERIFY(QFile::link(at(u"kept"_s), at(u"link"_s)));
        QVERIFY(QFile::link(at(u"nowhere"_s), at(u"dangling"_s)));
        QStringList told;
        setFolderChangedHandler([&told](const QString &folder) { told += folder; });
        for (const QString &name : {u"gone"_s, u"link/"_s, u"dangling"_s, u"never there"_s})
            QVERIFY(rmCocoa(at(name)));
        setFolderChangedHandler({});
        QCOMPARE(QDir(m_folder->path())
                     .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
                 (QStringList{u"kept"_s, u"up"_s}));
        QCOMPARE(read(at(u"kept/film.mov"_s)), "film");
        QCOMPARE(told, QStringList(3, m_folder->path()));
    }

    void unremovableGoesToTrash()
    {
        if (geteuid() == 0)
            QSKIP("Nothing is unremovable for the superuser.");
        qputenv("XDG_DATA_HOME", QFile::encodeName(at(u"data"_s)));
        QVERIFY(write(at(u"stuck/inner/film.mov"_s), "film"));
        QFile::setPermissions(at(u"stuck/inner"_s), QFile::ReadOwner | QFile::ExeOwner);
        QVERIFY(rmCocoa(at(u"stuck"_s)));
        const QString trash = at(u"data/Trash/files/stuck/inner"_s);
        QCOMPARE(read(trash + u"/film.mov"_s), "film");
        QFile::setPermissions(trash, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void makesFoldersAndPermissions()
    {
        QVERIFY(mkdir(u"~/new/er"_s) && mkdir(u"~/new/er"_s));
        QVERIFY(!mkdir(at(u"up/user/keep.txt/x"_s)));
        for (const int mode : {777, 755}) {
            QVERIFY(chmodPath(u"~/new/er"_s, mode, u"r"_s));
            const auto permissions = QFile::permissions(at(u"up/user/new/er"_s));
            QCOMPARE(permissions.testFlag(QFile::WriteOther), mode == 777);
        }
    }

    void replacesOnlyWhenAsked()
    {
        const QString from = at(u"a.jpg"_s);
        const QString to = at(u"b.jpg"_s);
        for (const auto transfer : {vignar::copy, mv}) {
            QVERIFY(write(from, "new") && write(to, "old"));
            QVERIFY(!transfer(from, to, QString()));
            QVERIFY(!transfer(at(u"missing"_s), to, u"y"_s));
            QVERIFY(!transfer(from, at(u"no/folder.jpg"_s), u"y"_s));
            QCOMPARE(read(from) + read(to), "newold");
            QVERIFY(transfer(from, to, u"y"_s));
            QCOMPARE(read(from) + read(to), transfer == mv ? "unreadablenew" : "newnew");
        }
    }

    void neverLosesTheSource()
    {
        const QString film = at(u"dir/film.mov"_s);
        const QString dir = at(u"dir"_s);
        QVERIFY(write(film, "film"));
        QVERIFY(QFile::link(film, at(u"link"_s)));
        QVERIFY(QFile::link(m_folder->path(), at(u"dir/back"_s)));
        const std::pair<QString, QString> pairs[] = {
            {film, film}, {film, at(u"dir/back/dir/film.mov"_s)},
            {film, dir},  {at(u"link"_s), film},
            {dir, film},  {dir, at(u"dir/inside"_s)}};
        for (const auto &[from, to] : pairs) {
            const bool isRefused = !mv(from, to, u"y"_s) && !vignar::copy(from, to, u"y"_s);
            QVERIFY2(isRefused, qPrintable(from + u" to "_s + to));
            QCOMPARE(read(film), "film");
        }
    }

    void movesAndCopiesAcrossVolumes()
    {
        const QTemporaryDir other(u"/dev/shm/vignar-XXXXXX"_s);
        if (!other.isValid() || QStorageInfo(other.path()) == QStorageInfo(m_folder->path()))
            QSKIP("There is no second volume to write on.");
        const QString from = at(u"album"_s);
        QVERIFY(write(from + u"/sub/film.mov"_s, "film"));
        QVERIFY(QFile::link(u"sub/film.mov"_s, from + u"/link"_s));
        const QDateTime shot(QDate(2011, 3, 4), QTime(5, 6, 7));
        QFile film(from + u"/sub/film.mov"_s);
        QVERIFY(film.open(QIODevice::ReadWrite) &&
                film.setFileTime(shot, QFileDevice::FileModificationTime));

        const QString to = other.filePath(u"album"_s);
        QVERIFY(write(to, "old"));
        QVERIFY(vignar::copy(from, at(u"twin"_s), QString()));
        QVERIFY(mv(from, to, u"y"_s) && !QFileInfo::exists(from));
        for (const QString &album : {to, at(u"twin"_s)}) {
            QCOMPARE(read(album + u"/sub/film.mov"_s), "film");
            QCOMPARE(QFileInfo(album + u"/sub/film.mov"_s).lastModified(), shot);
            QVERIFY(QFileInfo(album + u"/link"_s).isSymLink());
        }
        QCOMPARE(lsCocoa(other.path()), QStringList{to}); // No staging folder is left.
    }

    void linksToolsByASafeName()
    {
        const QString tool = at(u"été $(x) ff mpeg;-1"_s);
        const QString folder = at(u"links"_s);
        QVERIFY(write(tool, "tool") && write(at(u"links/film.mov"_s), "the user's"));
        const QString link = toolPathSafe(tool, folder);
        QCOMPARE(link, at(u"links/t(x)ffmpeg;-1"_s));
        QCOMPARE(read(link), "tool");
        QCOMPARE(toolPathSafe(tool, folder), link);
        QCOMPARE(toolPathSafe(link, folder), link);
        QCOMPARE(toolPathSafe(at(u"é.."_s), folder), at(u"links/toto"_s));
        QCOMPARE(toolPathSafe(at(u"film é.mov"_s), folder), at(u"film é.mov"_s));
        QCOMPARE(read(at(u"links/film.mov"_s)), "the user's");
    }

    void listsAndFinds()
    {
        for (const char *name : {"a/Film.MOV", "a/b/film.txt", "a/b/c/other.mov", "a/.mov"})
            QVERIFY(write(at(QString::fromLatin1(name)), "x"));
        QVERIFY(QFile::link(at(u"a"_s), at(u"a/b/back"_s)));
        QCOMPARE(lsCocoa(at(u"a"_s)).value().size(), 3);
        QCOMPARE(lsGrepCocoa(at(u"a"_s), u"mov"_s), QStringList{at(u"a/Film.MOV"_s)});
        QVERIFY(!lsCocoa(at(u"missing"_s)) && !lsGrepCocoa(at(u"a"_s), u"avi"_s));

        QStringList found = findCocoa(at(u"a"_s), u"FILM"_s, true);
        found.sort();
        QCOMPARE(found, (QStringList{at(u"a/Film.MOV"_s), at(u"a/b/film.txt"_s)}));
        QVERIFY(findCocoa(at(u"a"_s), u"FILM"_s, false).isEmpty());
    }

    void searchesLargeTreesOnlyNearTheTop()
    {
        for (int i = 0; i < 200; ++i)
            QVERIFY(write(at(u"wide/"_s + QString::number(i)), ""));
        QVERIFY(write(at(u"wide/deep/target"_s), ""));
        QVERIFY(findCocoa(at(u"wide"_s), u"target"_s, false).isEmpty());
    }

    void weighsFilesAndFolders()
    {
        const QString film = at(u"sub/film.mpg"_s);
        QVERIFY(write(film, QByteArray(3 << 20, 'x')));
        // A link back is neither followed nor weighed as what it leads to.
        QVERIFY(QFile::link(m_folder->path(), at(u"sub/back"_s)));
        for (const auto &weigh : {poidsFile, poidsFileC}) {
            QCOMPARE(weigh(film, u"M"_s), 3.0F);
            QCOMPARE(weigh(film + u".no"_s, u"M"_s), -1.0F);
            const float megabytes = weigh(at(u"sub"_s), u"M"_s);
            QVERIFY2(megabytes >= 3.0F && megabytes < 3.1F, qPrintable(QString::number(megabytes)));
        }
        QCOMPARE(freeDiskSpaceMo(at(u"missing"_s)), -1);
    }
};

QTEST_APPLESS_MAIN(FilesTest)
#include "test_files.moc"
