#include "app/rowChoices.h"
#include "app/sheetDestination.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"

#include "app/destinationChecks.h"
#include "settings/alerts.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/imageExport.h"
#include "sheet/ownMark.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <utility>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

/// What stands at a name.
enum class Old { nothing, ours, photo, link, danglingLink, folder };

/// Answers as it is told, and keeps the questions.
class ScriptedAlerts : public AlertPresenter
{
public:
    explicit ScriptedAlerts(QList<AlertAnswer> answers, QStringList &questions)
        : m_answers(std::move(answers)), m_questions(questions)
    {
    }
    AlertAnswer present(const AlertRequest &request) override
    {
        m_questions.append(request.text);
        return m_answers.isEmpty() ? AlertAnswer() : m_answers.takeFirst();
    }

private:
    QList<AlertAnswer> m_answers;
    QStringList &m_questions;
};

bool put(const QTemporaryDir &folder, const QString &name, Old old)
{
    const QString path = folder.filePath(name);
    QImage picture(16, 9, QImage::Format_RGB32);
    picture.fill(Qt::red);
    switch (old) {
    case Old::nothing:
        return true;
    case Old::ours:
        return writePicture(picture, path, jpegFormat, 90, signedMetadata) && bearsOurMark(path);
    case Old::photo:
        return picture.save(path, "JPG") && !bearsOurMark(path);
    case Old::link:
        // What it leads to is ours, which changes nothing.
        return put(folder, u"target.jpg"_s, Old::ours) && QFile::link(u"target.jpg"_s, path);
    case Old::danglingLink:
        return QFile::link(u"nowhere"_s, path);
    case Old::folder:
        return QDir().mkdir(path);
    }
    return false;
}

} // namespace

class TestSheetDestination : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addsSubfolderInMovies_data();
    void addsSubfolderInMovies();
    void normalisesSuffix_data();
    void normalisesSuffix();
    void numbersSourcesOfOneName();
    void keepsLongNamesWritable();
    void anySuffixLeavesWritableNames_data();
    void anySuffixLeavesWritableNames();
    void onlyTheRowAsksForAPdf_data();
    void onlyTheRowAsksForAPdf();
    void namesByTemplate_data();
    void namesByTemplate();
    void questionCoversASheetAndWhatGoesWithIt_data();
    void questionCoversASheetAndWhatGoesWithIt();
    void folderIsNoFileToReplace();
};

void TestSheetDestination::addsSubfolderInMovies_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("folder");
    const QString home = QDir::homePath();
    QTest::newRow("movie folder") << u"~/Movies/"_s << home + u"/Movies/Vignar"_s;
    QTest::newRow("movie folder without slash") << u"~/Movies"_s << home + u"/Movies/Vignar"_s;
    QTest::newRow("empty means movie folder") << QString() << home + u"/Movies/Vignar"_s;
    QTest::newRow("below it") << u"~/Movies/trips"_s << home + u"/Movies/trips/Vignar"_s;
    QTest::newRow("ours already") << u"~/Movies/Vignar"_s << home + u"/Movies/Vignar"_s;
    QTest::newRow("ours with slash") << u"~/Movies/Vignar/"_s << home + u"/Movies/Vignar"_s;
    QTest::newRow("inside ours") << u"~/Movies/Vignar/trips"_s << home + u"/Movies/Vignar/trips"_s;
    QTest::newRow("elsewhere") << u"/tmp/out/"_s << u"/tmp/out"_s;
    QTest::newRow("a neighbour of the movie folder") << u"~/Movies2"_s << home + u"/Movies2"_s;
}

void TestSheetDestination::addsSubfolderInMovies()
{
    QFETCH(QString, field);
    QTEST(destinationFolder(field), "folder");
}

void TestSheetDestination::normalisesSuffix_data()
{
    QTest::addColumn<QString>("preference");
    QTest::addColumn<bool>("isDiskPictureMade");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("hyphen added") << u"index"_s << true << u"-index"_s;
    QTest::newRow("hyphen kept") << u"-i"_s << false << u"-i"_s;
    QTest::newRow("default beside a disk picture") << QString() << true << u"-index"_s;
    QTest::newRow("none without") << QString() << false << QString();
    QTest::newRow("separators are harmless") << u"../../x\n"_s << false << u"-..-..-x-"_s;
}

void TestSheetDestination::normalisesSuffix()
{
    QFETCH(QString, preference);
    QFETCH(bool, isDiskPictureMade);
    QTEST(sheetSuffix(preference, isDiskPictureMade, u"index"_s), "suffix");
}

void TestSheetDestination::numbersSourcesOfOneName()
{
    QSet<QString> taken;
    const auto target = [&taken](const QString &source) {
        return sheetTarget(u"/d"_s, source, {u"-index"_s}, taken);
    };
    QCOMPARE(target(u"/a/clip.mp4"_s).dstPath, u"/d/clip-index"_s);
    const SheetTarget second = target(u"/b/Clip.mkv"_s);
    QCOMPARE(second.dstPath, u"/d/Clip-2-index"_s);
    QCOMPARE(second.diskPicturePath, u"/d/Clip-2.jpg"_s);
    QCOMPARE(target(u"/c/clip.webm"_s).dstPath, u"/d/clip-3-index"_s);
    // The disk picture of this one would bear the name of the first sheet.
    QCOMPARE(target(u"/c/clip-index.webm"_s).diskPicturePath, u"/d/clip-index-2.jpg"_s);
    QCOMPARE(target(u"/r/news.eyetv/0001.mpg"_s).dstPath, u"/d/news-index"_s);
    // Who is told the number comes to the same name without knowing the others.
    QSet<QString> none;
    QCOMPARE(sheetTarget(u"/d"_s, u"/b/Clip.mkv"_s,
                         {.suffix = u"-index"_s, .firstNumber = second.number}, none)
                 .dstPath,
             second.dstPath);
}

void TestSheetDestination::keepsLongNamesWritable()
{
    QSet<QString> taken;
    const QString name = u"é🎬"_s.repeated(60);
    const SheetTarget target =
        sheetTarget(u"/d"_s, u"/a/"_s + name + u".mp4"_s, {u"-index"_s}, taken);
    const QString fileName = target.sheetFile(SheetFormat::jpeg).mid(3);
    QVERIFY(fileName.toUtf8().size() < 240);
    QVERIFY(fileName.isValidUtf16());
    QVERIFY(fileName.endsWith(u"-index.jpg"_s));
}

void TestSheetDestination::anySuffixLeavesWritableNames_data()
{
    QTest::addColumn<QString>("character");
    QTest::newRow("one byte") << u"s"_s;
    QTest::newRow("two bytes") << u"é"_s;
    QTest::newRow("three bytes") << u"映"_s;
    QTest::newRow("a surrogate pair") << u"\U0001F3AC"_s;
    QTest::newRow("half a surrogate pair") << QString(QChar(0xD83C));
}

void TestSheetDestination::anySuffixLeavesWritableNames()
{
    QFETCH(QString, character);
    for (int count = 1; count <= 300; ++count) {
        const QString typed = character.repeated(count);
        const QString suffix = sheetSuffix(typed, true, u"index"_s);
        QVERIFY(suffix.startsWith(u'-') && suffix.toUtf8().size() <= 101);
        QVERIFY(typed.toUtf8().size() > 100 || suffix == u'-' + typed);
        // Also where the suffix comes by another way.
        for (const QString &any : {suffix, typed}) {
            QSet<QString> taken;
            const QString name =
                sheetTarget(u"/d"_s, u"/a/"_s + u"t"_s.repeated(250) + u".mp4"_s, {any}, taken)
                    .dstPath.mid(3);
            const qsizetype bytes = name.toUtf8().size();
            QVERIFY2(name.startsWith(u't') && bytes > 200 && bytes <= 220, qPrintable(name));
        }
    }
}

void TestSheetDestination::onlyTheRowAsksForAPdf_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("width");
    QTest::addColumn<bool>("isPdf");
    QTest::newRow("a PDF has no width") << 0 << 1920 << 0 << true;
    QTest::newRow("the width of the preferences") << 1 << 1920 << 1920 << false;
    QTest::newRow("a senseless width makes no PDF") << 1 << 0 << 640 << false;
    QTest::newRow("nor does one below zero") << 1 << -3 << 640 << false;
    QTest::newRow("nor one that would not fit into memory") << 1 << 60000 << 7680 << false;
}

void TestSheetDestination::onlyTheRowAsksForAPdf()
{
    QFETCH(int, dpi);
    QFETCH(int, stored);
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>(
        Dico{{Prefs::prefComputerWidthAuto, 0}, {Prefs::prefComputerWidth, stored}}));
    BatchEntry row;
    write(row, Keys::dpi, dpi);
    QTEST(choicesOf(row).width, "width");
    QTEST(choicesOf(row).format == SheetFormat::pdf, "isPdf");
    setSharedPreferenceStore(nullptr);
}

void TestSheetDestination::namesByTemplate_data()
{
    QTest::addColumn<QString>("nameTemplate");
    QTest::addColumn<QString>("sheet");
    const QString usual = u"{width}-index"_s;
    QTest::newRow("empty") << u""_s << usual;
    QTest::newRow("fields") << u"{folder}_{name}{suffix} {height}p {codec} {duration}"_s
                            << u"trip_{width}-index 720p h264 1h02m05s"_s;
    QTest::newRow("no field") << u"{nope} {name"_s << u"{nope} {name"_s;
    QTest::newRow("separators") << u"../a\\b\t{name}"_s << u"..-a-b-{width}"_s;
    QTest::newRow("folder itself") << u" . "_s << usual;
    QTest::newRow("folder above") << u".."_s << usual;
    QTest::newRow("name of the disk picture") << u"{name}"_s << usual;
    QTest::newRow("far too long") << u"{name}-"_s + u"x"_s.repeated(100'000)
                                  << u"{width}-"_s + u"x"_s.repeated(212);
    QTest::newRow("too long") << u"é"_s.repeated(300) << u"é"_s.repeated(110);
}

void TestSheetDestination::namesByTemplate()
{
    QFETCH(QString, nameTemplate);
    QFETCH(QString, sheet);
    // A name that looks like a field is none.
    const SourceDico source{{Keys::srcPathStr, u"/v/trip/{width}.mp4"_s},
                            {Keys::w_duration, 3725.9},
                            {Keys::v_height(0), 720},
                            {Keys::v_codec(0), u"h264"_s}};
    const SheetNaming naming{u"-index"_s, nameFromTemplate(nameTemplate, source, u"-index"_s)};
    QSet<QString> taken;
    const auto target = [&] {
        return sheetTarget(u"/d"_s, readStr(source, Keys::srcPathStr), naming, taken);
    };
    QCOMPARE(target().dstPath, u"/d/"_s + sheet);
    QCOMPARE(target().diskPicturePath, u"/d/{width}-2.jpg"_s);
}

void TestSheetDestination::questionCoversASheetAndWhatGoesWithIt_data()
{
    QTest::addColumn<Old>("sheet");
    QTest::addColumn<Old>("side");
    QTest::addColumn<int>("settled");
    QTest::addColumn<QList<AlertAnswer>>("answers");
    QTest::addColumn<int>("questions");
    // Of two rows, one after the other: which of sheet, disk picture, cues and sprite may be
    // replaced ("s", "d", "p" for both of the preview), and what becomes of the sheet.
    QTest::addColumn<QStringList>("agreed");
    using enum Old;
    const AlertAnswer nobody;
    const AlertAnswer keep{AlertButton::first, false};
    const AlertAnswer replace{AlertButton::second, false};
    const AlertAnswer keepAll{AlertButton::first, true};
    const AlertAnswer replaceAll{AlertButton::second, true};
    const AlertAnswer nobodyTicked{AlertButton::timeout, true};
    constexpr int no = -1;
    const auto row = [](const char *name, Old sheet, Old side, int settled,
                        const QList<AlertAnswer> &answers, int questions,
                        const QStringList &agreed) {
        QTest::newRow(name) << sheet << side << settled << answers << questions << agreed;
    };
    const QString all = u"make sdp"_s;
    const QString none = u"keep "_s;
    const QString beside = u"make "_s;
    row("keep", ours, ours, no, {keep, keep}, 2, {none, none});
    row("replace", ours, ours, no, {replace, replace}, 2, {all, all});
    row("replace the first", ours, ours, no, {replace, nobody}, 2, {all, none});
    row("replace the second", ours, ours, no, {nobody, replace}, 2, {none, all});
    row("replace all", ours, ours, no, {replaceAll}, 1, {all, all});
    row("keep all", ours, ours, no, {keepAll}, 1, {none, none});
    row("nobody", ours, ours, no, {}, 2, {none, none});
    row("nobody, ticked", ours, ours, no, {nobodyTicked, replace}, 2, {none, all});
    row("photos, replace", photo, photo, no, {replace, replace}, 2, {all, all});
    row("photos, replace all", photo, photo, no, {replaceAll}, 1, {all, u"elsewhere "_s});
    row("photos beside, replace all", ours, photo, no, {replaceAll}, 1, {all, u"make s"_s});
    row("links, replace", link, danglingLink, no, {replace, replace}, 2, {all, all});
    row("links, nobody", danglingLink, link, no, {}, 2, {none, none});
    row("only beside, nobody", nothing, photo, no, {}, 4, {beside, beside});
    row("only beside, replace", nothing, photo, no, {replace, keep, keep, replace}, 4,
        {u"make d"_s, u"make p"_s});
    row("nothing there", nothing, nothing, no, {}, 0, {beside, beside});
    row("ours, settled to replace", ours, ours, 1, {}, 0, {all, all});
    row("ours, settled to keep", ours, ours, 0, {}, 0, {none, none});
    row("photos, settled to replace", photo, photo, 1, {}, 0, {u"elsewhere "_s, u"elsewhere "_s});
    row("links, settled to replace", link, danglingLink, 1, {}, 0,
        {u"elsewhere "_s, u"elsewhere "_s});
    row("photos beside, settled to replace", ours, photo, 1, {}, 0, {u"make s"_s, u"make s"_s});
    row("only beside, settled to replace", nothing, photo, 1, {}, 0, {beside, beside});
    row("only ours beside, settled", nothing, ours, 1, {}, 0, {u"make dp"_s, u"make dp"_s});
    row("folders beside, replace", ours, folder, no, {replace, replace}, 2,
        {u"make s"_s, u"make s"_s});
}

void TestSheetDestination::questionCoversASheetAndWhatGoesWithIt()
{
    QFETCH(const Old, sheet);
    QFETCH(const Old, side);
    QFETCH(const int, settled);
    QFETCH(const QList<AlertAnswer>, answers);
    QFETCH(const int, questions);
    QFETCH(const QStringList, agreed);
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    prefWrite(Prefs::prefWebVtt, 1);
    if (settled >= 0)
        prefWrite(RunKeys::replaceFilesCheck, settled);
    QStringList asked;
    setAlertPresenter(std::make_unique<ScriptedAlerts>(answers, asked));
    QStringList told;
    for (int row = 0; row < agreed.size(); ++row) {
        const QTemporaryDir folder;
        const SheetTarget target{folder.filePath(u"a-index"_s), folder.filePath(u"a.jpg"_s)};
        const QString file = target.sheetFile(SheetFormat::jpeg);
        const auto name = [](const QString &path) { return QFileInfo(path).fileName(); };
        QVERIFY(put(folder, name(file), sheet));
        const QStringList beside{target.diskPicturePath, target.vttFile(), target.spriteFile()};
        for (const QString &path : beside)
            QVERIFY(put(folder, name(path), side));
        const auto places = settlePlaces(target, SheetFormat::jpeg, true);
        QVERIFY(places);
        const char *const states[]{"make", "keep", "elsewhere"};
        told += QString::fromLatin1(states[int(places->sheet)]) + u' ';
        const auto &files = places->agreed;
        told.last() += files.contains(file) ? u"s"_s : QString();
        told.last() += files.contains(beside[0]) ? u"d"_s : QString();
        QCOMPARE(files.contains(beside[1]), files.contains(beside[2]));
        told.last() += files.contains(beside[1]) ? u"p"_s : QString();
        for (auto found = files.cbegin(); found != files.cend(); ++found)
            QVERIFY(fileIdentity(found.key()) == found.value());
        if (row > 0 || asked.isEmpty())
            continue;
        // The question names what it is about, and says what of it is not ours.
        QVERIFY(asked.first().contains(sheet == Old::nothing ? beside[0] : file));
        const bool isSideNamed = side != Old::folder;
        for (const QString &path : sheet == Old::nothing ? QStringList() : beside)
            QCOMPARE(asked.first().contains(name(path)), isSideNamed);
        const QString stranger = localised(u"V_replace_notOurs"_s).section(u'%', 0, 0);
        QVERIFY(stranger.size() > 5);
        const bool areOurs = (sheet == Old::ours && (side == Old::ours || side == Old::folder)) ||
                             (sheet == Old::nothing && side == Old::ours);
        QCOMPARE(asked.first().contains(stranger), !areOurs);
    }
    setAlertPresenter({});
    QCOMPARE(asked.size(), questions);
    QCOMPARE(told, agreed);
}

void TestSheetDestination::folderIsNoFileToReplace()
{
    const QTemporaryDir folder;
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    QVERIFY(put(folder, u"a-index.jpg"_s, Old::folder));
    const SheetTarget target{folder.filePath(u"a-index"_s), folder.filePath(u"a.jpg"_s)};
    const auto places = settlePlaces(target, SheetFormat::jpeg, false);
    QVERIFY(places.reason().contains(target.sheetFile(SheetFormat::jpeg)));
}

QTEST_GUILESS_MAIN(TestSheetDestination)
#include "test_sheetDestination.moc"
