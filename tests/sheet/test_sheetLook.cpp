#include "classShared/sourceDico.h"
#include "sheet/sheetGeometry.h"
#include "sheet/sheetPalette.h"
#include "sheet/textStyle.h"

#include <QImage>
#include <QPainter>
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

    void bordersAndTextsStandOut_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("border");
        // That of the frames and the title, and that of the information.
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("information");
        const auto add = [](const char *name, const QString &page, const QString &border,
                            const QString &shown, const QString &information = {}) {
            QTest::newRow(name) << page << border << shown
                                << (information.isEmpty() ? shown : information);
        };
        // The luminance of a colour is the sum of its parts over 765.
        add("far darker", u"#ffffff"_s, u"#336699"_s, u"#336699"_s);
        add("0.4 lighter", u"#000000"_s, u"#666666"_s, u"#666666"_s);
        add("not quite 0.4 lighter", u"#000000"_s, u"#666665"_s, u"#a3a3a3"_s);
        add("0.4 darker", u"#ffffff"_s, u"#999999"_s, u"#999999"_s);
        add("not quite 0.4 darker", u"#f2f2f2"_s, u"#8d8d8d"_s, u"#555555"_s);
        add("a little lighter", u"#404040"_s, u"#505a64"_s, u"#969ca2"_s);
        add("lighter by one", u"#e6e6e6"_s, u"#e6e6e7"_s, u"#f0f0f1"_s);
        add("a little darker", u"#c0c0c0"_s, u"#a0a0a0"_s, u"#606060"_s);
        add("darker than 0.949", u"#f2f2f2"_s, u"#c8c8c8"_s, u"#787878"_s);
        add("darker than 0.950", u"#f3f2f2"_s, u"#c8c8c8"_s, u"#808080"_s);
        add("darker than white", u"#ffffff"_s, u"#9a9999"_s, u"#808080"_s);
        add("white", u"#ffffff"_s, u"#ffffff"_s, u"#aaaaaa"_s, u"#808080"_s);
        add("0.901", u"#e6e6e5"_s, u"#e6e6e5"_s, u"#aaaaaa"_s, u"#808080"_s);
        add("0.899", u"#e6e5e5"_s, u"#e6e5e5"_s, u"#000000"_s);
        add("0.501", u"#807f80"_s, u"#807f80"_s, u"#000000"_s);
        add("0.499", u"#807f7f"_s, u"#807f7f"_s, u"#ffffff"_s);
        add("equal in luminance only", u"#404040"_s, u"#c00000"_s, u"#ffffff"_s);
    }
    void bordersAndTextsStandOut()
    {
        QFETCH(const QString, page);
        QFETCH(const QString, border);
        const SheetPalette palette = sheetPalette(QColor(page), QColor(border));
        QCOMPARE(palette.page.name(), page);
        QTEST(palette.border.name(), "shown");
        QTEST(palette.titleText.name(), "shown");
        QTEST(palette.infoText.name(), "information");
    }

    void lightTextsCastAShadow()
    {
        QCOMPARE(textStyle(-1, std::nullopt, u'r').backing, TextBacking::shadow);
        // 0.8105 and 0.8092.
        QCOMPARE(textStyle(16, QColor(207, 207, 206), u'l').backing, TextBacking::shadow);
        QCOMPARE(textStyle(16, QColor(206, 206, 207), u'l').backing, TextBacking::none);
        QCOMPARE(textStyle(16, QColor(255, 255, 255, 128), u'l').backing, TextBacking::none);

        // The stem of a letter large enough for the shadow to be that of a bar.
        for (const double scale : {1.0, 2.0}) {
            QImage page(400, 400, QImage::Format_RGB32);
            page.fill(QColor(200, 200, 200));
            QPainter painter(&page);
            painter.setRenderHint(QPainter::Antialiasing);
            drawText(painter, page.rect(), u"I"_s, textStyle(250, QColor(Qt::white), u'c', scale));
            painter.end();
            const auto shade = [&](int y) { return qGray(page.pixel(page.width() / 2, y)); };
            int top = 0;
            while (shade(top) < 250 && top < page.height() / 2)
                ++top;
            int bottom = page.height() - 1;
            while (shade(bottom) < 250 && bottom > page.height() / 2)
                --bottom;
            QVERIFY2(bottom - top > 150, "the stem itself");
            // Black of 0.6, blurred 5 wide and 1.5 lower than the letter: what a Gaussian half
            // as wide leaves of it one pixel inside its edge, two and a half and five beyond.
            const auto opacity = [&](int row) { return 1 - shade(row) / 200.0; };
            const int pixel = int(scale);
            const double below = opacity(bottom + pixel);
            const double above = opacity(top - 1 - pixel);
            const double far = opacity(bottom + 7 * pixel);
            QVERIFY2(qAbs(below - 0.6 * 0.63) < 0.06, qPrintable(QString::number(below)));
            QVERIFY2(qAbs(above - 0.6 * 0.16) < 0.06, qPrintable(QString::number(above)));
            QVERIFY2(qAbs(far - 0.6 * 0.02) < 0.03, qPrintable(QString::number(far)));
        }
    }
};

QTEST_MAIN(TestSheetLook)
#include "test_sheetLook.moc"
