#include "sheetFixture.h"

#include "sheet/extractionPasses.h"
#include "sheet/pictureMetadata.h"
#include "sheet/sheetComposer.h"

#include <QDir>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

class TestSheetComposer : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString at(const QString &name) const { return m_folder->filePath(name); }

    QString picture(int index, const QColor &colour) const
    {
        const QString path = thumbnailPath(m_folder->path(), index);
        return plain({640, 360}, colour).save(path) ? path : QString();
    }

    Dico display(int layout, const QStringList &pictures) const
    {
        Dico timecodes;
        for (int index = 0; index < 8; ++index)
            timecodes.insert(QString::number(index), u"0:00:0%1.00"_s.arg(index));
        return {{Keys::dstPathStr, at(u"Movie.2019"_s)},
                {Keys::bigMedMinMix, layout},
                {Keys::th, pictures},
                {Keys::wTh, 640},
                {Keys::hTh, 360},
                {Keys::bkgColor, u"ffffff"_s},
                {Keys::borderColor, u"000000"_s},
                {Keys::borderSize, 8},
                {Keys::timecode, timecodes}};
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void picturesFollowEachOtherWithTheirOwnTimecodes()
    {
        // The third was never extracted, the fourth is no picture.
        const QStringList pictures{picture(0, Qt::red), picture(1, Qt::green),
                                   thumbnailPath(m_folder->path(), 3), picture(4, Qt::blue)};
        QVERIFY(QFile::copy(u"/etc/passwd"_s, pictures.at(2)));
        Dico sheet = display(bigLayout, pictures);
        QVERIFY(composeSheet(sheet, SheetFormat::jpeg));
        const QImage drawn(at(u"Movie.2019.jpg"_s));
        // 54 + 2 × (628 × 360 ÷ 640 + 8) + 21
        QCOMPARE(drawn.size(), QSize(1280, 797));
        QVERIFY(isNear(drawn.pixelColor(11, 100), Qt::black));
        QVERIFY(isNear(drawn.pixelColor(320, 200), Qt::red));
        QVERIFY(isNear(drawn.pixelColor(960, 200), Qt::green));
        QVERIFY(isNear(drawn.pixelColor(320, 560), Qt::blue));
        QVERIFY(isNear(drawn.pixelColor(960, 560), Qt::white));
        QCOMPARE(qRound(drawn.dotsPerMeterX() * 0.0254), 72);
        QVERIFY2(drawn.textKeys().isEmpty(), qPrintable(drawn.text()));

        // The shadows of light texts must not be found as texts of their own.
        sheet.insert({{Keys::name, u"Two\nfilms"_s},
                      {Keys::poids, u"1.53 G"_s},
                      {Keys::essence, u"x"_s.repeated(400)},
                      {Keys::bkgColor, u"000000"_s},
                      {Keys::borderColor, u"ffffff"_s}});
        QVERIFY(composeSheet(sheet, SheetFormat::pdf));
        QProcess reader;
        reader.start(u"pdftotext"_s, {u"-layout"_s, at(u"Movie.2019.pdf"_s), u"-"_s});
        QVERIFY(reader.waitForFinished());
        const QString text = QString::fromUtf8(reader.readAll()).simplified();
        for (const QString &part :
             {u"Two films"_s, u": 1.53 G"_s, u"xx…"_s, u"0:00:00.00 0:00:01.00 0:00:04.00"_s})
            QVERIFY2(text.count(part) == 1, qPrintable(text));
    }

    void filesSayWhatTheyAre()
    {
        const QString name = u"Ça \u200fסרט\u200f 映画 🎬 lang=fr <&>"_s;
        Dico sheet = display(bigLayout, {picture(0, Qt::red)});
        sheet.insert({{Keys::srcPathStr, u"/videos/%1.mkv"_s.arg(name)},
                      {Keys::name, name + u"\x1b\n\ufffe"_s + QChar(0xd800)}});
        const auto told = [this, &sheet](SheetFormat format, const QString &reader,
                                         const QStringList &options) {
            QProcess process;
            if (composeSheet(sheet, format))
                process.start(reader,
                              options + QStringList(sheetPath(at(u"Movie.2019"_s), format)));
            process.waitForFinished();
            return process.readAll();
        };
        const auto ofJpeg = [&] {
            const QByteArray json =
                told(SheetFormat::jpeg, u"exiftool"_s, {u"-j"_s, u"-G1"_s, u"-n"_s});
            return QJsonDocument::fromJson(json).array().at(0).toObject();
        };
        const QJsonObject jpeg = ofJpeg();
        for (const QString &key : {u"IFD0:ImageDescription"_s, u"XMP-dc:Title"_s})
            QCOMPARE(jpeg.value(key).toString(), name + u"   \ufffd"_s);
        for (const QString &key : {u"IFD0:DocumentName"_s, u"XMP-dc:Source"_s})
            QCOMPARE(jpeg.value(key).toString(), name + u".mkv"_s);
        for (const QString &key : {u"IFD0:Software"_s, u"XMP-xmp:CreatorTool"_s})
            QCOMPARE(jpeg.value(key).toString(), softwareName());
        QCOMPARE(jpeg.value(u"JFIF:XResolution"_s).toInt(), 72);
        QVERIFY(jpeg.value(u"ICC_Profile:ProfileDescription"_s).toString().contains(u"sRGB"_s));
        QCOMPARE(QImage(at(u"Movie.2019.jpg"_s)).size(), QSize(1280, 436));

        const QString pdf = QString::fromUtf8(told(SheetFormat::pdf, u"pdfinfo"_s, {}));
        QVERIFY2(pdf.contains(name), qPrintable(pdf));
        QVERIFY2(pdf.contains(softwareName()), qPrintable(pdf));
        // 1920 pixels at 250 to the inch.
        QVERIFY2(pdf.contains(u"553 x "_s), qPrintable(pdf));

        // Without a title on the sheet its file is called by its own name.
        sheet.remove(Keys::name.text);
        QCOMPARE(ofJpeg().value(u"XMP-dc:Title"_s).toString(), u"Movie.2019"_s);
    }

    void mixShowsTheHeaviestPicture()
    {
        QStringList pictures;
        for (int index = 0; index < 5; ++index)
            pictures.append(picture(index, index == 2 ? Qt::blue : Qt::red));
        // The last is heavier still, but belongs to the credits.
        for (const int index : {2, 4}) {
            QFile file(pictures.at(index));
            QVERIFY(file.open(QIODevice::Append) && file.write(QByteArray(index * 1000, '\0')) > 0);
        }
        Dico wide = display(mixLayout, pictures);
        write(wide, Keys::pageWidth, 1920);
        QVERIFY(composeSheet(wide, SheetFormat::jpeg));
        const QImage sheet(at(u"Movie.2019.jpg"_s));
        // 1.5 × (54 + 5 × (204 × 360 ÷ 640 + 8) + 21), four of the five rows being the large one's.
        QCOMPARE(sheet.size(), QSize(1920, 1033));
        QVERIFY(isNear(sheet.pixelColor(16, 97), Qt::blue));
        QVERIFY(isNear(sheet.pixelColor(1903, 813), Qt::blue));
        QVERIFY(isNear(sheet.pixelColor(1903, 823), Qt::white));
        QVERIFY(isNear(sheet.pixelColor(150, 900), Qt::red));
    }

    void everyPictureFormatShowsTheSheet()
    {
        Dico sheet = display(bigLayout, {picture(0, Qt::red)});
        for (const SheetFormat format : {SheetFormat::png, SheetFormat::webp}) {
            QVERIFY(composeSheet(sheet, format));
            QImageReader reader(sheetPath(at(u"Movie.2019"_s), format));
            QCOMPARE(reader.format(), sheetExtension(format).toLatin1());
            const QImage drawn = reader.read();
            QCOMPARE(drawn.size(), QSize(1280, 436));
            QVERIFY(isNear(drawn.pixelColor(320, 200), Qt::red));
        }
        write(sheet, Keys::hTh, 20000);
        const Result<void> tooLong = composeSheet(sheet, SheetFormat::webp);
        QVERIFY2(!tooLong && tooLong.reason().contains(u"16383"), qPrintable(tooLong.reason()));
    }

    void tellsBeforehandWhatCannotBeDrawn_data()
    {
        QTest::addColumn<SheetFormat>("format");
        QTest::addColumn<int>("width");
        QTest::addColumn<double>("border");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char *name, SheetFormat format, int width, double border,
                            int count, const QString &reason) {
            QTest::newRow(name) << format << width << border << count << reason;
        };
        constexpr SheetFormat jpeg = SheetFormat::jpeg;
        row("usual", jpeg, 1280, 1, 24, {});
        row("narrow frames", jpeg, 1280, 35, 24, {});
        // 35 leave 27 rows of a cell of 172 × 97; cells between frames of 59 are 81 high.
        row("wide frames", jpeg, 1280, 59, 24, u"room"_s);
        row("wide frames, WebP", SheetFormat::webp, 1280, 59, 24, u"room"_s);
        row("wide frames, PDF", SheetFormat::pdf, 0, 59, 24, u"room"_s);
        // 450 pixels of texts and 730.3125 for each row, of 34,952 that 7,680 across leave.
        row("as much as fits into memory", jpeg, 7680, 1, 282, {});
        row("more than fits into memory", jpeg, 7680, 1, 288, u"7680 × 35505 pixels"_s);
        row("longer than JPEG", jpeg, 1280, 1, 6 * 560, u"1280 × 6"_s);
        row("longer than WebP", SheetFormat::webp, 1280, 1, 6 * 140, u"16383"_s);
        row("longer than a PDF page", SheetFormat::pdf, 0, 1, 6 * 300, u"1920 × 5"_s);
    }
    void tellsBeforehandWhatCannotBeDrawn()
    {
        QFETCH(SheetFormat, format);
        QFETCH(int, width);
        QFETCH(double, border);
        QFETCH(int, count);
        QFETCH(QString, reason);
        Dico sheet = display(minLayout, {});
        write(sheet, Keys::borderSize, border);
        write(sheet, Keys::pageWidth, width);
        const Result<void> fits = sheetFits(sheet, count, format);
        QCOMPARE(bool(fits), reason.isNull());
        QVERIFY2(fits.reason().contains(reason), qPrintable(fits.reason()));
    }

    void failuresKeepTheOldSheet()
    {
        const Dico sheet = display(bigLayout, {picture(0, Qt::red)});
        for (const SheetFormat format :
             {SheetFormat::jpeg, SheetFormat::pdf, SheetFormat::png, SheetFormat::webp}) {
            const QString path = sheetPath(readStr(sheet, Keys::dstPathStr), format);
            QFile old(path);
            QVERIFY(old.open(QIODevice::ReadWrite) && old.write("the old sheet") > 0);
            const QStringList before = QDir(m_folder->path()).entryList();
            {
                const FullDisk full;
                const Result<void> result = composeSheet(sheet, format);
                QVERIFY2(!result && result.reason().contains(path), qPrintable(result.reason()));
            }
            Dico impossible = sheet;
            write(impossible, Keys::hTh, 1000000);
            QVERIFY(!composeSheet(impossible, format));
            impossible = sheet;
            write(impossible, Keys::dstPathStr, at(u"missing/Movie"_s));
            QVERIFY(!composeSheet(impossible, format) && !composeSheet({}, format));
            QCOMPARE(QDir(m_folder->path()).entryList(), before);
            QVERIFY(old.seek(0) && old.readAll() == "the old sheet");
        }
    }
};

QTEST_MAIN(TestSheetComposer)
#include "test_sheetComposer.moc"
