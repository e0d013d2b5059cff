#include "classShared/wholeFile.h"
#include "support/folderListing.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

using State = WriteEnd::State;

/// What stands at the name.
enum class Old { nothing, file, link, danglingLink, folder, pipe };
/// What was agreed to, and what came of the old file since.
enum class Agreed { nothing, theFile, theFileThatChanged, theFileBeforeIt, theFileThatWent };

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

mode_t modeOf(const QString &path)
{
    struct stat found {
    };
    return ::lstat(QFile::encodeName(path).constData(), &found) == 0 ? found.st_mode & 0777 : 0;
}

} // namespace

class TestWholeFile : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString at(const QString &name) const { return m_folder->filePath(name); }
    bool make(Old old) const;

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void nameIsTakenOnlyAsAgreed_data();
    void nameIsTakenOnlyAsAgreed();
    void permissionsAreThoseOfTheOldFile();
    void oneOfManyGetsTheName_data();
    void oneOfManyGetsTheName();
    void failureLeavesNothing();
    void onlyDeadPartsAreSwept();
};

bool TestWholeFile::make(Old old) const
{
    const QByteArray path = QFile::encodeName(at(u"a.jpg"_s));
    switch (old) {
    case Old::nothing:
        return true;
    case Old::file:
        return put(at(u"a.jpg"_s), "old");
    case Old::link:
        return put(at(u"film.mp4"_s), "the film") && QFile::link(u"film.mp4"_s, at(u"a.jpg"_s));
    case Old::danglingLink:
        return QFile::link(u"nowhere"_s, at(u"a.jpg"_s));
    case Old::folder:
        return QDir().mkdir(at(u"a.jpg"_s));
    case Old::pipe:
        return ::mkfifo(path.constData(), 0600) == 0;
    }
    return false;
}

void TestWholeFile::nameIsTakenOnlyAsAgreed_data()
{
    QTest::addColumn<Old>("old");
    QTest::addColumn<Agreed>("agreed");
    QTest::addColumn<State>("end");
    const auto row = [](const char *name, Old old, Agreed agreed, State end) {
        QTest::newRow(name) << old << agreed << end;
    };
    row("free", Old::nothing, Agreed::nothing, State::written);
    row("file", Old::file, Agreed::nothing, State::taken);
    row("file, agreed", Old::file, Agreed::theFile, State::written);
    row("file changed since", Old::file, Agreed::theFileThatChanged, State::taken);
    row("another file since", Old::file, Agreed::theFileBeforeIt, State::taken);
    row("file gone since", Old::file, Agreed::theFileThatWent, State::written);
    row("link", Old::link, Agreed::nothing, State::taken);
    row("link, agreed", Old::link, Agreed::theFile, State::written);
    row("file that became a link", Old::link, Agreed::theFileBeforeIt, State::taken);
    row("dangling link", Old::danglingLink, Agreed::nothing, State::taken);
    row("dangling link, agreed", Old::danglingLink, Agreed::theFile, State::written);
    row("folder", Old::folder, Agreed::nothing, State::failed);
    row("folder, agreed", Old::folder, Agreed::theFile, State::failed);
    row("pipe", Old::pipe, Agreed::nothing, State::taken);
}

void TestWholeFile::nameIsTakenOnlyAsAgreed()
{
    QFETCH(const Old, old);
    QFETCH(const Agreed, agreed);
    QFETCH(const State, end);
    for (const Scratch scratch : {Scratch::unnamed, Scratch::hidden}) {
        init();
        const QString path = at(u"a.jpg"_s);
        if (agreed == Agreed::theFileBeforeIt)
            QVERIFY(put(path, "old"));
        else
            QVERIFY(make(old));
        const auto seen = agreed == Agreed::nothing ? std::nullopt : fileIdentity(path);
        if (agreed == Agreed::theFileBeforeIt)
            QVERIFY(QFile::rename(path, at(u"before"_s)) && make(old));
        if (agreed == Agreed::theFileThatChanged)
            QVERIFY(put(path, "OLD"));
        if (agreed == Agreed::theFileThatWent)
            QVERIFY(QFile::remove(path));
        const auto identity = fileIdentity(path);

        QCOMPARE(writeWhole(path, "new", seen, scratch).state(), end);
        if (end == State::written) {
            QCOMPARE(contentOf(path), QByteArray("new"));
            QCOMPARE(fileIdentity(path)->kind, FileIdentity::Kind::file);
        } else {
            QVERIFY(fileIdentity(path) == identity);
        }
        QVERIFY(!QFile::exists(at(u"nowhere"_s)));
        if (old == Old::link)
            QCOMPARE(contentOf(at(u"film.mp4"_s)), QByteArray("the film"));
        QVERIFY(filesUnder(m_folder->path()).filter(u".part"_s).isEmpty());
    }
}

void TestWholeFile::permissionsAreThoseOfTheOldFile()
{
    const mode_t umaskBefore = ::umask(027);
    for (const Scratch scratch : {Scratch::unnamed, Scratch::hidden}) {
        init();
        QVERIFY(writeWhole(at(u"new"_s), "a", {}, scratch));
        QVERIFY(put(at(u"old"_s), "b") && put(at(u"target"_s), "c"));
        QVERIFY(::chmod(qPrintable(at(u"old"_s)), 04604) == 0);
        QVERIFY(::chmod(qPrintable(at(u"target"_s)), 0777) == 0);
        QVERIFY(QFile::link(at(u"target"_s), at(u"link"_s)));
        for (const QString &name : {u"old"_s, u"link"_s})
            QVERIFY(writeWhole(at(name), "d", fileIdentity(at(name)), scratch));
        QCOMPARE(modeOf(at(u"new"_s)), mode_t(0640));
        QCOMPARE(modeOf(at(u"old"_s)), mode_t(0604));
        QCOMPARE(modeOf(at(u"link"_s)), mode_t(0640));
    }
    ::umask(umaskBefore);
}

void TestWholeFile::oneOfManyGetsTheName_data()
{
    QTest::addColumn<bool>("isReplaced");
    QTest::newRow("a free name") << false;
    QTest::newRow("after one look at the old file") << true;
}

void TestWholeFile::oneOfManyGetsTheName()
{
    QFETCH(const bool, isReplaced);
    constexpr int writers = 8;
    const QString path = at(u"a.jpg"_s);
    if (isReplaced)
        QVERIFY(put(path, "old"));
    const auto agreed = fileIdentity(path);
    std::atomic<int> written = 0;
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writers; ++writer) {
        threads.emplace_back([&, writer] {
            const QByteArray content(1 << 16, char('a' + writer));
            const Scratch scratch = writer % 2 == 0 ? Scratch::unnamed : Scratch::hidden;
            if (writeWhole(path, content, isReplaced ? agreed : std::nullopt, scratch))
                ++written;
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QVERIFY(isReplaced ? written >= 1 : written == 1);
    const QByteArray content = contentOf(path);
    QCOMPARE(content, QByteArray(1 << 16, content.at(0)));
    QCOMPARE(filesUnder(m_folder->path()), QStringList{u"a.jpg"_s});
}

void TestWholeFile::failureLeavesNothing()
{
    QCOMPARE(writeWhole(at(u"missing/a.jpg"_s), "a").state(), State::failed);
    QVERIFY(put(at(u"file"_s), "b"));
    const WriteEnd below = writeWhole(at(u"file/a.jpg"_s), "a");
    QCOMPARE(below.state(), State::failed);
    QVERIFY(!below.reason().isEmpty());
    QCOMPARE(writeWhole(at(QString(300, u'n')), "a").state(), State::failed);
    QCOMPARE(filesUnder(m_folder->path()), QStringList{u"file"_s});
}

void TestWholeFile::onlyDeadPartsAreSwept()
{
    const QString dead = u".vignar-0123456789abcdef.part"_s;
    const QString alive = u".vignar-0123456789abcde0.part"_s;
    const QString link = u".vignar-0123456789abcde1.part"_s;
    const QStringList others{u".vignar-0123456789abcdef.part~"_s,
                             u".vignar-0123456789ABCDEF.part"_s, u".vignar-.part"_s, u"a.part"_s,
                             u"target"_s};
    for (const QString &name : QStringList{dead, alive} + others)
        QVERIFY(put(at(name), "x"));
    QVERIFY(QFile::link(at(u"target"_s), at(link)));
    const int held = ::open(qPrintable(at(alive)), O_RDWR | O_CLOEXEC);
    QCOMPARE(::flock(held, LOCK_EX), 0);
    sweepDeadParts(m_folder->path());
    sweepDeadParts(at(u"missing"_s));
    QStringList left = QStringList{alive, link} + others;
    left.sort();
    QCOMPARE(filesUnder(m_folder->path()), left);
    ::close(held);
}

QTEST_GUILESS_MAIN(TestWholeFile)
#include "test_wholeFile.moc"
