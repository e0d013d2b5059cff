#include "sheetFixture.h"

#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/extractionPasses.h"

#include <QFont>
#include <QPainterPath>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace vignar;
using namespace Qt::StringLiterals;

/// Wide enough to tell sizes of 14 and 16 pixels apart.
static const QString letters = u"HHHHHHHHHH"_s;

/// Where the ink of a text lies that starts at the origin of its base line.
static QRectF inkOf(const QString &text, double pixels)
{
    QFont font(u"sans-serif"_s);
    font.setPixelSize(int(pixels));
    font.setHintingPreference(QFont::PreferNoHinting);
    QPainterPath path;
    path.addText(0, 0, font, text);
    return path.boundingRect();
}

/// Between the mean levels of two colours.
static double difference(QRgb one, QRgb other)
{
    return (std::abs(qRed(one) - qRed(other)) + std::abs(qGreen(one) - qGreen(other)) +
            std::abs(qBlue(one) - qBlue(other))) /
           3.0;
}

/// What encloses the pixels of an area that a test picks; null when it picks none.
template <class Test>
static QRect box(const QImage &picture, const QRect &area, const Test &isPicked)
{
    QRect found;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (isPicked(picture.pixel(x, y)))
                found |= QRect(x, y, 1, 1);
        }
    }
    return found;
}

/// As WCAG defines it, 1 … 21; 4.5 is its limit for texts.
static double contrastOfGrays(int one, int other)
{
    const auto light = [](int level) { return std::pow((level / 255.0 + 0.055) / 1.055, 2.4); };
    const auto [dark, bright] = std::minmax({light(one), light(other)});
    return (bright + 0.05) / (dark + 0.05);
}

enum class Alignment { left, right, centre };

/// A text of the sheet and the area it stands in, in pixels of a page 1280 wide.
struct Place {
    QString name;
    QRectF area;
    QString text;
    double size;
    /// Which part of its ink is at which x.
    Alignment alignment;
    double x;
};

/// What the pixels of the finished sheet show of its texts and colours.
class TestSheetTexts : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    /// One picture of a colour, white page, black frames of ten.
    Dico display(int layout, const QColor &colour = Qt::black) const
    {
        const QString path = thumbnailPath(m_folder.path(), 0);
        plain({640, 360}, colour).save(path, "PNG");
        return {{Keys::dstPathStr, m_folder.filePath(u"sheet"_s)},
                {Keys::bigMedMinMix, layout},
                {Keys::th, QStringList{path}},
                {Keys::wTh, 640},
                {Keys::hTh, 360},
                {Keys::bkgColor, u"ffffff"_s},
                {Keys::borderColor, u"000000"_s},
                {Keys::borderSize, 10}};
    }

    /// Where the texts of a sheet with one info line, the duration, belong.
    static QList<Place> places(int columns, bool isMix, double timecodeSize, double pageHeight)
    {
        const QRectF title = inkOf(letters, 36);
        const QRectF value = inkOf(u" : "_s + letters, 16);
        const double cellWidth = (1280 - (columns + 1) * 10.0) / columns;
        const double cellHeight = cellWidth * 9 / 16;
        const double cellTop = 54 + 24 + 10 + (isMix ? 4 * (cellHeight + 10) : 0);
        const QRectF cell(10, cellTop, cellWidth, cellHeight);
        return {
            {u"title"_s, {0, 0, 1280, 54}, letters, 36, Alignment::left, 10 + title.left()},
            {u"label"_s, {0, 54, 250, 24}, u"Duration"_s, 16, Alignment::right, 249},
            {u"value"_s,
             {250, 54, 1030, 24},
             u" : "_s + letters,
             16,
             Alignment::left,
             250 + value.left()},
            {u"credit"_s,
             {0, pageHeight - 19, 1280, 19},
             u"made with Vignar"_s,
             14,
             Alignment::centre,
             640},
            // Half its size from the right edge of the picture, and what a letter leaves free.
            {u"timecode"_s, cell, letters, timecodeSize, Alignment::right,
             cellWidth - timecodeSize * 0.6},
        };
    }

private Q_SLOTS:
    void init()
    {
        setInterfaceLanguage(u"en"_s);
        setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    }

    void textsHaveTheirSizesAndPlaces_data()
    {
        QTest::addColumn<int>("layout");
        QTest::addColumn<int>("columns");
        QTest::addColumn<double>("timecodeSize");
        QTest::addColumn<double>("scale");
        QTest::addColumn<bool>("isPdf");
        QTest::newRow("Big") << 0 << 2 << 24.0 << 1.0 << false;
        QTest::newRow("Med") << 1 << 3 << 18.0 << 1.0 << false;
        QTest::newRow("Min") << 2 << 6 << 14.0 << 1.0 << false;
        QTest::newRow("Mix, twice as wide") << 3 << 6 << 14.0 << 2.0 << false;
        QTest::newRow("Med, document") << 1 << 3 << 18.0 << 1.5 << true;
    }
    void textsHaveTheirSizesAndPlaces()
    {
        QFETCH(const int, layout);
        QFETCH(const int, columns);
        QFETCH(const double, timecodeSize);
        QFETCH(const double, scale);
        QFETCH(const bool, isPdf);
        Dico sheet = display(layout);
        sheet.insert({{Keys::name, letters},
                      {Keys::duration, letters},
                      {Keys::timecode, Dico{{u"0"_s, letters}}}});
        if (!isPdf)
            write(sheet, Keys::pageWidth, int(1280 * scale));
        const QImage shown = shownSheet(sheet, isPdf ? SheetFormat::pdf : SheetFormat::png);
        QVERIFY(!shown.isNull());

        const double height = shown.height() / scale - (isPdf ? 1 : 0);
        for (const Place &place : places(columns, layout == mixLayout, timecodeSize, height)) {
            // White letters on black pictures, else black ones on a white page.
            const bool isLight = place.name == u"timecode";
            const QRect area =
                QRectF(place.area.topLeft() * scale, place.area.size() * scale).toRect();
            const QRectF found = box(shown, area.adjusted(1, 1, -1, -1), [isLight](QRgb pixel) {
                return (qGray(pixel) > 127) == isLight;
            });
            const QRectF expected = inkOf(place.text, place.size * scale);
            const QString seen =
                u"%1 at %2 to %3, %4 wide and %5 high, not %6 and %7"_s.arg(place.name)
                    .arg(found.left())
                    .arg(found.right())
                    .arg(found.width())
                    .arg(found.height())
                    .arg(expected.width())
                    .arg(expected.height());
            const double x = place.alignment == Alignment::left    ? found.left()
                             : place.alignment == Alignment::right ? found.right()
                                                                   : found.center().x();
            QVERIFY2(qAbs(found.width() - expected.width()) <= 1.5, qPrintable(seen));
            QVERIFY2(qAbs(found.height() - expected.height()) <= 1.5, qPrintable(seen));
            QVERIFY2(qAbs(x - place.x * scale) <= 1.5 * scale, qPrintable(seen));
            QVERIFY2(area.adjusted(0, 2, 0, -2).contains(found.toRect()), qPrintable(seen));
        }
    }

    void textsStandOutFromThePage_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("border");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("information");
        const auto add = [](const QString &page, const QString &border, const QString &title,
                            const QString &information = {}) {
            QTest::newRow(qPrintable(page + u' ' + border))
                << page << border << title << (information.isEmpty() ? title : information);
        };
        for (const QString &dark : {u"000000"_s, u"4c4c4c"_s})
            add(dark, u"b3b3b3"_s, u"#b3b3b3"_s);
        for (const QString &middle : {u"4e4e4e"_s, u"999999"_s, u"ff0000"_s, u"ffff00"_s})
            add(middle, u"b3b3b3"_s, u"#d1d1d1"_s);
        add(u"b3b3b3"_s, u"b3b3b3"_s, u"#000000"_s);
        for (const QString &light : {u"cccccc"_s, u"f2f2f2"_s})
            add(light, u"b3b3b3"_s, u"#6b6b6b"_s);
        add(u"ffffff"_s, u"b3b3b3"_s, u"#808080"_s);
        add(u"ffffff"_s, u"ffffff"_s, u"#aaaaaa"_s, u"#808080"_s);
        add(u"202020"_s, u"ffffff"_s, u"#ffffff"_s);
    }
    void textsStandOutFromThePage()
    {
        QFETCH(const QString, page);
        QFETCH(const QString, border);
        QFETCH(const QString, title);
        QFETCH(const QString, information);
        Dico sheet = display(bigLayout);
        sheet.insert({{Keys::name, letters},
                      {Keys::duration, letters},
                      {Keys::bkgColor, page},
                      {Keys::borderColor, border}});
        const auto shown = [&sheet] { return shownSheet(sheet, SheetFormat::png); };
        const QImage drawn = shown();
        const QRgb paper = QColor(u'#' + page).rgb();
        QCOMPARE(drawn.pixelColor(2, 100).rgb(), paper);
        QCOMPARE(drawn.pixelColor(14, 200).name(), title);

        const QRect credit(0, drawn.height() - 19, 1280, 19);
        const QList<std::pair<QRect, QColor>> inks{{{0, 0, 1280, 54}, QColor(title)},
                                                   {{0, 54, 250, 24}, QColor(information)},
                                                   {{250, 54, 1030, 24}, QColor(information)},
                                                   {credit, QColor(information)}};
        for (const auto &[area, ink] : inks) {
            const double contrast = difference(ink.rgb(), paper);
            // Thin letters never quite reach their colour.
            const QRect inked = box(drawn, area, [&, ink = ink](QRgb pixel) {
                return difference(pixel, ink.rgb()) <= 0.35 * contrast;
            });
            QVERIFY2(inked.width() > 40 && inked.height() >= 8, qPrintable(ink.name()));
        }
        sheet.insert(Keys::bannerDisplayNo, 1);
        QVERIFY(box(shown(), credit, [paper](QRgb pixel) { return pixel != paper; }).isNull());
    }

    void timecodesAreReadableOnAnyPicture_data()
    {
        QTest::addColumn<int>("layout");
        QTest::addColumn<int>("level");
        QTest::addColumn<bool>("isPdf");
        for (const int layout : {0, 1, 2, 3}) {
            for (const int level : {0, 128, 255})
                QTest::addRow("layout %d, level %d", layout, level) << layout << level << false;
        }
        QTest::newRow("document, white") << 1 << 255 << true;
    }
    void timecodesAreReadableOnAnyPicture()
    {
        QFETCH(const int, layout);
        QFETCH(const int, level);
        QFETCH(const bool, isPdf);
        Dico sheet = display(layout, QColor(level, level, level));
        const SheetFormat format = isPdf ? SheetFormat::pdf : SheetFormat::png;
        const QImage without = shownSheet(sheet, format);
        // The gap shows what is behind the letters, apart from their shadows.
        sheet.insert(Keys::timecode, Dico{{u"0"_s, u"H          H"_s}});
        const QImage with = shownSheet(sheet, format);
        QCOMPARE(with.size(), without.size());

        QRect changed;
        for (int y = 0; y < with.height(); ++y) {
            for (int x = 0; x < with.width(); ++x) {
                if (difference(with.pixel(x, y), without.pixel(x, y)) > 3)
                    changed |= QRect(x, y, 1, 1);
            }
        }
        QVERIFY(!changed.isNull());
        const QPoint centre = changed.center();
        const auto isWhite = [](QRgb pixel) { return qGray(pixel) > 250; };
        const QRect ink = box(with, {changed.left(), centre.y(), changed.width(), 1}, isWhite);
        QVERIFY2(!ink.isNull(), "white letters");
        int behind = 0;
        for (int y = centre.y() - 2; y <= centre.y() + 2; ++y)
            behind = std::max(behind, qGray(with.pixel(centre.x(), y)));
        const QByteArray contrast = QByteArray::number(contrastOfGrays(255, behind));
        QVERIFY2(contrastOfGrays(255, behind) >= 4.5, contrast.constData());
        if (level > 0) {
            QVERIFY2(behind > level / 4, "the picture can be seen behind it");
            QVERIFY2(ink.left() - changed.left() > 2 && changed.right() - ink.right() > 2,
                     "the plate is wider than its text");
            const double letter = -inkOf(u"H"_s, isPdf ? 27 : 14).top();
            QVERIFY2(changed.height() > letter + 4, "and higher");
        }
    }

    void linesFollowEachOther_data()
    {
        QTest::addColumn<QStringList>("missing");
        QTest::addColumn<QStringList>("lines");
        const QStringList all{
            u"the title"_s,           u"Location : the place"_s, u"Date : the day"_s,
            u"Duration : the time"_s, u"Picture : size"_s,       u"Size : the weight"_s,
            u"Format : streams"_s,    u"Comment : words"_s,      u"made with Vignar"_s};
        QTest::newRow("all") << QStringList() << all;
        QTest::newRow("some") << QStringList{u"location"_s, u"vIdentity"_s, u"comment"_s}
                              << QStringList{all[0], all[2], all[3], all[5], all[6], all[8]};
        QTest::newRow("none") << QStringList{u"name"_s,      u"location"_s, u"date"_s,
                                             u"duration"_s,  u"poids"_s,    u"essence"_s,
                                             u"vIdentity"_s, u"comment"_s}
                              << all.mid(8);
    }
    void linesFollowEachOther()
    {
        QFETCH(const QStringList, missing);
        QFETCH(const QStringList, lines);
        Dico sheet = display(bigLayout);
        sheet.insert({{Keys::name, u"the title"_s},
                      {Keys::location, u"the place"_s},
                      {Keys::date, u"the day"_s},
                      {Keys::duration, u"the time"_s},
                      {Keys::vIdentity, u"size"_s},
                      {Keys::poids, u"the weight"_s},
                      {Keys::essence, u"streams"_s},
                      {Keys::comment, u"words"_s}});
        for (const QString &key : missing)
            sheet.remove(key);
        const auto read = [&sheet] {
            QStringList texts;
            if (composeSheet(sheet, SheetFormat::pdf)) {
                const QString path = sheetPath(readStr(sheet, Keys::dstPathStr), SheetFormat::pdf);
                const QString text =
                    QString::fromUtf8(outputOf(u"pdftotext"_s, {u"-layout"_s, path, u"-"_s}));
                for (const QString &line : text.split(u'\n'))
                    texts += line.simplified();
            }
            texts.removeAll(QString());
            return texts;
        };
        QCOMPARE(read(), lines);
        write(sheet, Keys::bannerDisplayNo, 1);
        QCOMPARE(read(), lines.mid(0, lines.size() - 1));
    }

    void coloursAreTheSheetsOrThePreferences_data()
    {
        QTest::addColumn<QVariant>("page");
        QTest::addColumn<QVariant>("border");
        QTest::addColumn<bool>("isPreferred");
        QTest::addColumn<QString>("shown");
        const QVariant none;
        QTest::newRow("its own") << QVariant(u"203040"_s) << QVariant(u"FFCC00"_s) << true
                                 << u"#203040 #ffcc00"_s;
        QTest::newRow("its own page")
            << QVariant(u"#203050"_s) << none << true << u"#203050 #ccddee"_s;
        QTest::newRow("its own frames")
            << none << QVariant(u"ffcc00"_s) << true << u"#112233 #ffcc00"_s;
        QTest::newRow("preferred") << none << none << true << u"#112233 #ccddee"_s;
        QTest::newRow("unreadable")
            << QVariant(u"red"_s) << QVariant(u"12345"_s) << true << u"#112233 #ccddee"_s;
        QTest::newRow("nobody's") << none << none << false << u"#ffffff #808080"_s;
    }
    void coloursAreTheSheetsOrThePreferences()
    {
        QFETCH(const QVariant, page);
        QFETCH(const QVariant, border);
        QFETCH(const bool, isPreferred);
        if (isPreferred) {
            prefWrite(Prefs::pageBkgColor, u"112233"_s);
            prefWrite(Prefs::prefBorderColor, u"ccddee"_s);
        }
        Dico sheet = display(bigLayout);
        for (const auto &[key, value] :
             {std::pair(Keys::bkgColor, page), {Keys::borderColor, border}}) {
            sheet.remove(key);
            if (value.isValid())
                sheet.insert(key, value);
        }
        const QImage drawn = shownSheet(sheet, SheetFormat::png);
        const auto colour = [&drawn](int x) { return drawn.pixelColor(x, 200).name(); };
        QTEST(colour(2) + u' ' + colour(14), "shown");
    }

    void darkPagesAreCompressedMore_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<int>("quality");
        QTest::newRow("white") << u"ffffff"_s << 100;
        QTest::newRow("0.1007") << u"1a1a19"_s << 100;
        QTest::newRow("0.0993") << u"1a1919"_s << 90;
        QTest::newRow("black") << u"000000"_s << 90;
    }
    void darkPagesAreCompressedMore()
    {
        QFETCH(const QString, page);
        Dico sheet = display(bigLayout);
        write(sheet, Keys::bkgColor, page);
        QVERIFY(composeSheet(sheet, SheetFormat::jpeg));
        QTEST(qualityOfJpeg(m_folder.filePath(u"sheet.jpg"_s)), "quality");
    }
};

QTEST_MAIN(TestSheetTexts)
#include "test_sheetTexts.moc"
