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
    void smallPicturesShareThePage()
    {
        GeometryInput input{.layout = minLayout, .pictureCount = 24, .borderSize = 2};
        input.thumbnailSize = {1280, 720};
        input.infoLineCount = 2;
        const auto geometry = sheetGeometry(input);
        QVERIFY(geometry);
        // 54 for the title, 2 × 24 of information, 4 × 121.71875 of pictures, 21 for the credit.
        QCOMPARE(geometry->page, QSize(1280, 609));
        QCOMPARE(geometry->title, QRectF(5, 0, 1270, 54));
        QCOMPARE(geometry->infoLines.at(1).label, QRectF(0, 78, 250, 24));
        QCOMPARE(geometry->infoLines.at(1).value, QRectF(250, 78, 1025, 24));
        QCOMPARE(geometry->credit, QRectF(0, 588, 1280, 21));
        const CellPlace last = geometry->cells.back();
        QCOMPARE(last.picture, QRect(1070, 474, 203, 113));
        QVERIFY(QRectF(last.picture).contains(last.timecode));
    }

    void gapsAreEvenAtAnyWidth()
    {
        const QList<std::pair<int, double>> pages{{1001, 0.0}, {641, 3.0}, {3333, 17.0}};
        for (const auto &[width, border] : pages) {
            GeometryInput input{.layout = mixLayout, .pictureCount = 12, .borderSize = border};
            input.thumbnailSize = {1280, 720};
            input.scale = width / double(basePageWidth);
            const auto geometry = sheetGeometry(input);
            QVERIFY(geometry);
            QCOMPARE(geometry->page.width(), width);
            const int gap = qRound(geometry->border);
            int right = 0;
            for (int column = 0; column < 6; ++column) {
                const QRect frame = geometry->cells.at(column).frame;
                QCOMPARE(frame.left() - right, gap);
                QCOMPARE(geometry->cells.at(column + 6).frame.top() - (frame.bottom() + 1), gap);
                QVERIFY(qAbs(frame.width() - geometry->cell.width()) <= 1.5);
                right = frame.right() + 1;
            }
            QCOMPARE(width - right, gap);
        }
    }

    void impossibleSheetsAreRefused()
    {
        const auto isPossible = [](double border, double scale, const QSize &picture) {
            GeometryInput input{.pictureCount = 6, .thumbnailSize = picture, .borderSize = border};
            input.scale = scale;
            return sheetGeometry(input).has_value();
        };
        QVERIFY(isPossible(1, 51, {1280, 72}));
        QVERIFY2(!isPossible(500, 1, {1280, 720}), "borders as wide as the page");
        QVERIFY2(!isPossible(100, 1, {1280, 100}), "frames that meet");
        QVERIFY2(!isPossible(1, 52, {1280, 72}), "wider than a JPEG");
        QVERIFY2(!isPossible(1, 1, {1, 2000000000}), "higher than any number");
    }

    void bordersAndTextsStandOut()
    {
        // The border, which is the title's colour as well, and the information's.
        const auto shown = [](const QString &page, const QString &border) {
            const SheetPalette palette = sheetPalette(QColor(page), QColor(border));
            return palette.border.name() +
                   (palette.titleText == palette.border ? palette.infoText.name() : u"?"_s);
        };
        QCOMPARE(shown(u"#ffffff"_s, u"#336699"_s), u"#336699#336699"_s);
        // Lighter than the page, darker, and darker than a white one.
        QCOMPARE(shown(u"#404040"_s, u"#505a64"_s), u"#969ca2#969ca2"_s);
        QCOMPARE(shown(u"#c0c0c0"_s, u"#a0a0a0"_s), u"#606060#606060"_s);
        QCOMPARE(shown(u"#ffffff"_s, u"#b3b3b3"_s), u"#808080#808080"_s);
        // Equal, the last in luminance only.
        QCOMPARE(shown(u"#ffffff"_s, u"#ffffff"_s), u"#aaaaaa#808080"_s);
        QCOMPARE(shown(u"#b4b4b4"_s, u"#b4b4b4"_s), u"#000000#000000"_s);
        QCOMPARE(shown(u"#404040"_s, u"#c00000"_s), u"#ffffff#ffffff"_s);

        QCOMPARE(textStyle(-1, std::nullopt, u'r').backing, TextBacking::shadow);
        QCOMPARE(textStyle(16, QColor(128, 128, 128), u'l').backing, TextBacking::none);
    }
};

QTEST_MAIN(TestSheetLook)
#include "test_sheetLook.moc"
