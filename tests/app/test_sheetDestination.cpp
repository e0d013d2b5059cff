#include "app/sheetDestination.h"

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
