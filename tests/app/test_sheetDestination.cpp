#include "app/rowChoices.h"
#include "app/sheetDestination.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"

#include <QDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

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

QTEST_GUILESS_MAIN(TestSheetDestination)
#include "test_sheetDestination.moc"
