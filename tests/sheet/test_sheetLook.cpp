#include "classShared/sourceDico.h"
#include "sheet/sheetGeometry.h"
#include "sheet/sheetPalette.h"
#include "sheet/textStyle.h"

#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

class TestSheetLook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void smallPicturesShareThePage();
    void gapsAreEvenAtAnyWidth_data();
    void gapsAreEvenAtAnyWidth();
    void impossibleSheetsAreRefused_data();
    void impossibleSheetsAreRefused();
    void bordersStandOutFromThePage_data();
    void bordersStandOutFromThePage();
    void lightTextGetsAShadow();
};

static GeometryInput inputOf(int layout, int pictures, double border, double scale = 1)
{
    return {.layout = layout,
            .pictureCount = pictures,
            .thumbnailSize = {1280, 720},
            .borderSize = border,
            .scale = scale};
}

void TestSheetLook::smallPicturesShareThePage()
{
    GeometryInput input = inputOf(minLayout, 24, 2);
    input.infoLineCount = 2;
    const auto geometry = sheetGeometry(input);
    QVERIFY(geometry);
    QCOMPARE(geometry->border, 5.0);
    QCOMPARE(geometry->cell, QSizeF(207.5, 116.71875));
    // 54 for the title, 2 × 24 of information, 4 × 121.71875 of pictures, 21 for the credit.
    QCOMPARE(geometry->page, QSize(1280, 609));
    QCOMPARE(geometry->title, QRectF(5, 0, 1270, 54));
    QCOMPARE(geometry->infoLines.at(1).label, QRectF(0, 78, 250, 24));
    QCOMPARE(geometry->infoLines.at(1).value, QRectF(250, 78, 1025, 24));
    QCOMPARE(geometry->credit, QRectF(0, 588, 1280, 21));
    QVERIFY(geometry->mix.isEmpty());
    QCOMPARE(geometry->cells.size(), size_t(24));
    const CellPlace last = geometry->cells.back();
    QCOMPARE(last.frame, QRect(1068, 472, 207, 117));
    QCOMPARE(last.picture, QRect(1070, 474, 203, 113));
    QVERIFY(QRectF(last.picture).contains(last.timecode));
}

void TestSheetLook::gapsAreEvenAtAnyWidth_data()
{
    QTest::addColumn<int>("layout");
    QTest::addColumn<int>("width");
    QTest::addColumn<double>("border");
    QTest::newRow("an odd width") << int(minLayout) << 1001 << 0.0;
    QTest::newRow("a small page") << int(medLayout) << 641 << 3.0;
    QTest::newRow("a large page, wide borders") << int(mixLayout) << 3333 << 17.0;
}

void TestSheetLook::gapsAreEvenAtAnyWidth()
{
    QFETCH(int, layout);
    QFETCH(int, width);
    QFETCH(double, border);
    const int columns = layout == medLayout ? 3 : 6;
    const auto geometry =
        sheetGeometry(inputOf(layout, 2 * columns, border, width / double(basePageWidth)));
    QVERIFY(geometry);
    QCOMPARE(geometry->page.width(), width);
    const int gap = qRound(geometry->border);
    int right = 0;
    for (int column = 0; column < columns; ++column) {
        const QRect frame = geometry->cells.at(column).frame;
        const QRect below = geometry->cells.at(column + columns).frame;
        QCOMPARE(frame.left() - right, gap);
        QCOMPARE(below.top() - (frame.bottom() + 1), gap);
        QVERIFY(qAbs(frame.width() - geometry->cell.width()) <= 1.5);
        right = frame.right() + 1;
    }
    QCOMPARE(width - right, gap);
}

void TestSheetLook::impossibleSheetsAreRefused_data()
{
    QTest::addColumn<double>("border");
    QTest::addColumn<double>("scale");
    QTest::addColumn<QSize>("picture");
    QTest::newRow("borders as wide as the page") << 300.0 << 1.0 << QSize(1280, 720);
    QTest::newRow("frames that meet") << 60.0 << 1.0 << QSize(1280, 200);
    QTest::newRow("wider than a JPEG") << 1.0 << 52.0 << QSize(1280, 72);
    QTest::newRow("higher than a JPEG") << 1.0 << 1.0 << QSize(10, 4000);
    QTest::newRow("higher than any number") << 1.0 << 1.0 << QSize(1, 2000000000);
}

void TestSheetLook::impossibleSheetsAreRefused()
{
    QFETCH(double, border);
    QFETCH(double, scale);
    QFETCH(QSize, picture);
    GeometryInput input = inputOf(minLayout, 6, border, scale);
    input.thumbnailSize = picture;
    QVERIFY(!sheetGeometry(input));
}

void TestSheetLook::bordersStandOutFromThePage_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("border");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("info");
    const auto row = [](const char *name, QStringList colours) {
        QTest::newRow(name) << colours.at(0) << colours.at(1) << colours.at(2)
                            << colours.value(3, colours.at(2));
    };
    row("enough contrast", {u"#ffffff"_s, u"#336699"_s, u"#336699"_s});
    row("lighter than the page", {u"#404040"_s, u"#505a64"_s, u"#969ca2"_s});
    row("darker than the page", {u"#c0c0c0"_s, u"#a0a0a0"_s, u"#606060"_s});
    row("darker than a white page", {u"#ffffff"_s, u"#b3b3b3"_s, u"#808080"_s});
    row("white on white", {u"#ffffff"_s, u"#ffffff"_s, u"#aaaaaa"_s, u"#808080"_s});
    row("equal on a light page", {u"#b4b4b4"_s, u"#b4b4b4"_s, u"#000000"_s});
    row("equal in luminance only", {u"#404040"_s, u"#c00000"_s, u"#ffffff"_s});
}

void TestSheetLook::bordersStandOutFromThePage()
{
    QFETCH(QString, page);
    QFETCH(QString, border);
    const SheetPalette palette = sheetPalette(QColor(page), QColor(border));
    QCOMPARE(palette.page.name(), page);
    QTEST(palette.border.name(), "shown");
    QTEST(palette.titleText.name(), "shown");
    QTEST(palette.infoText.name(), "info");
}

void TestSheetLook::lightTextGetsAShadow()
{
    QCOMPARE(textStyle(16, QColor(Qt::white), u'l').backing, TextBacking::shadow);
    QCOMPARE(textStyle(16, QColor(128, 128, 128), u'l').backing, TextBacking::none);
    const TextStyle fallback = textStyle(-1, std::nullopt, u'r');
    QCOMPARE(fallback.size, 11.0);
    QCOMPARE(fallback.colour, QColor(Qt::white));
}

QTEST_MAIN(TestSheetLook)
#include "test_sheetLook.moc"
