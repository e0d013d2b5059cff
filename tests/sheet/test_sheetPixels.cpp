#include "sheetFixture.h"

#include "sheet/extractionPasses.h"

#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

/// From … up to but not including.
struct Run {
    int from = 0;
    int to = 0;
};

/// The runs of pixels brighter than a level (0 … 255) along a row or column of a picture.
static QList<Run> brightRuns(const QImage &picture, Qt::Orientation along, int at, int level)
{
    QList<Run> runs;
    bool isInside = false;
    const bool isRow = along == Qt::Horizontal;
    for (int i = 0; i < (isRow ? picture.width() : picture.height()); ++i) {
        const bool isBright = qGray(isRow ? picture.pixel(i, at) : picture.pixel(at, i)) > level;
        if (isBright && !isInside)
            runs.append({i, i});
        if (isBright)
            runs.last().to = i + 1;
        isInside = isBright;
    }
    return runs;
}

static QString describe(const QList<Run> &runs)
{
    QString text;
    for (const Run &run : runs)
        text += u"%1…%2 "_s.arg(run.from).arg(run.to);
    return text;
}

/// Whether the runs are where they were calculated, but for the rounding to a pixel.
static bool areAt(const QList<Run> &runs, const QList<QPointF> &expected)
{
    bool isEqual = runs.size() == expected.size();
    for (int i = 0; isEqual && i < runs.size(); ++i)
        isEqual =
            qAbs(runs[i].from - expected[i].x()) <= 1 && qAbs(runs[i].to - expected[i].y()) <= 1;
    return isEqual;
}

class TestSheetPixels : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    /// A black page with white frames around green pictures of 640 × 360.
    Dico display(int layout, double border, int pictureCount, int infoLineCount) const
    {
        QStringList paths;
        for (int index = 0; index < pictureCount; ++index) {
            paths.append(thumbnailPath(m_folder.path(), index));
            plain({640, 360}, QColor(0, 170, 0)).save(paths.last());
        }
        Dico sheet{{Keys::dstPathStr, m_folder.filePath(u"sheet"_s)},
                   {Keys::bigMedMinMix, layout},
                   {Keys::th, paths},
                   {Keys::wTh, 640},
                   {Keys::hTh, 360},
                   {Keys::bkgColor, u"000000"_s},
                   {Keys::borderColor, u"ffffff"_s},
                   {Keys::borderSize, border},
                   {Keys::bannerDisplayNo, 1}};
        const QList<QLatin1String> lines{Keys::poids.text, Keys::duration.text};
        for (int line = 0; line < infoLineCount; ++line)
            sheet.insert(lines.at(line), u"x"_s);
        return sheet;
    }

private Q_SLOTS:
    void framesStandWhereTheyWereCalculated_data()
    {
        QTest::addColumn<Dico>("sheet");
        QTest::addColumn<bool>("isPdf");
        QTest::addColumn<QSize>("page");
        QTest::addColumn<QList<QPointF>>("across");
        QTest::addColumn<QList<QPointF>>("down");
        QTest::addColumn<int>("thickness");

        // Cells (1280 − 3 × 5) ÷ 2 = 632.5 wide, × 360 ÷ 640 = 355.78 high, from 54 + 5.
        QTest::newRow("Big") << display(bigLayout, 2, 4, 0) << false << QSize(1280, 796)
                             << QList<QPointF>{{5, 637.5}, {642.5, 1275}}
                             << QList<QPointF>{{59, 414.8}, {419.8, 775.6}} << 2;
        // Cells (1280 − 4 × 8) ÷ 3 = 416 wide and 234 high, from 54 + 24 + 8.
        QTest::newRow("Med") << display(medLayout, 8, 6, 1) << false << QSize(1280, 583)
                             << QList<QPointF>{{8, 424}, {432, 848}, {856, 1272}}
                             << QList<QPointF>{{86, 320}, {328, 562}} << 8;
        // Cells (1280 − 7 × 5) ÷ 6 = 207.5 wide and 116.72 high, five apart without frames.
        const QList<QPointF> six{{5, 212.5},   {217.5, 425},  {430, 637.5},
                                 {642.5, 850}, {855, 1062.5}, {1067.5, 1275}};
        QTest::newRow("Min") << display(minLayout, 0, 12, 0) << false << QSize(1280, 318) << six
                             << QList<QPointF>{{59, 175.7}, {180.7, 297.4}} << 0;
        // The large picture 4 × 116.72 + 3 × 5 high from 54 + 48 + 5, the grid five below.
        QTest::newRow("Mix") << display(mixLayout, 3, 6, 2) << false << QSize(1280, 731) << six
                             << QList<QPointF>{{107, 588.9}, {593.9, 710.6}} << 3;
        // × 1.5: cells (1920 − 4 × 7.5) ÷ 3 = 630 wide and 354.38 high, from 81 + 7.5, on a
        // page of 553 × 241 points.
        QTest::newRow("PDF") << display(medLayout, 2, 6, 0) << true << QSize(1921, 837)
                             << QList<QPointF>{{7.5, 637.5}, {645, 1275}, {1282.5, 1912.5}}
                             << QList<QPointF>{{88.5, 442.9}, {450.4, 804.8}} << 3;
    }

    void framesStandWhereTheyWereCalculated()
    {
        QFETCH(const Dico, sheet);
        QFETCH(const bool, isPdf);
        QFETCH(const QSize, page);
        QFETCH(const QList<QPointF>, across);
        QFETCH(const QList<QPointF>, down);
        QFETCH(const int, thickness);
        const QImage drawn = shownSheet(sheet, isPdf ? SheetFormat::pdf : SheetFormat::jpeg);
        QCOMPARE(drawn.size(), page);

        // Through the last row of cells and the first column, clear of texts.
        const QPointF row = down.last();
        const int y = int(row.x() + 0.3 * (row.y() - row.x()));
        const int x = int(across.first().x() + 0.1 * (across.first().y() - across.first().x()));
        const QList<Run> cells = brightRuns(drawn, Qt::Horizontal, y, 50);
        QVERIFY2(areAt(cells, across), qPrintable(describe(cells)));
        const QList<Run> rows = brightRuns(drawn, Qt::Vertical, x, 50);
        QVERIFY2(areAt(rows, down), qPrintable(describe(rows)));

        const QList<Run> frames = brightRuns(drawn, Qt::Horizontal, y, 190);
        QCOMPARE(frames.size(), thickness == 0 ? 0 : 2 * across.size());
        for (const Run &frame : frames)
            QVERIFY2(qAbs(frame.to - frame.from - thickness) <= (isPdf ? 1 : 0),
                     qPrintable(describe(frames)));
    }
};

QTEST_MAIN(TestSheetPixels)
#include "test_sheetPixels.moc"
