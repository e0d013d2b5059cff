#include "sheetFixture.h"

#include "sheet/extractionPasses.h"
#include "sheet/sheetComposer.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

class TestSheetComposer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void picturesFollowEachOtherWithTheirOwnTimecodes();
    void mixShowsTheHeaviestPicture();
    void documentsHoldRealText();
    void failuresKeepTheOldSheet_data();
    void failuresKeepTheOldSheet();

private:
    QString at(const QString &name) const { return m_folder->filePath(name); }
    QString picture(int index, const QColor &colour) const;
    Dico display(int layout, const QStringList &pictures) const;
    QString documentText() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

QString TestSheetComposer::picture(int index, const QColor &colour) const
{
    const QString path = thumbnailPath(m_folder->path(), index);
    return plain({640, 360}, colour).save(path) ? path : QString();
}

Dico TestSheetComposer::display(int layout, const QStringList &pictures) const
{
    Dico result;
    write(result, Keys::dstPathStr, at(u"Movie.2019"_s));
    write(result, Keys::bigMedMinMix, layout);
    write(result, Keys::th, pictures);
    write(result, Keys::wTh, 640);
    write(result, Keys::hTh, 360);
    write(result, Keys::bkgColor, u"ffffff"_s);
    write(result, Keys::borderColor, u"000000"_s);
    write(result, Keys::borderSize, 8);
    write(result, Keys::name, u"Movie"_s);
    Dico timecodes;
    for (int index = 0; index < 8; ++index)
        timecodes.insert(QString::number(index), u"0:00:0%1.00"_s.arg(index));
    write(result, Keys::timecode, timecodes);
    return result;
}

QString TestSheetComposer::documentText() const
{
    QProcess reader;
    reader.start(u"pdftotext"_s, {u"-layout"_s, at(u"Movie.2019.pdf"_s), u"-"_s});
    return reader.waitForFinished() && reader.exitCode() == 0
               ? QString::fromUtf8(reader.readAllStandardOutput())
               : QString();
}

void TestSheetComposer::picturesFollowEachOtherWithTheirOwnTimecodes()
{
    // The third was never extracted, the fourth is no picture.
    const QStringList pictures{picture(0, Qt::red), picture(1, Qt::green),
                               thumbnailPath(m_folder->path(), 3), picture(4, Qt::blue)};
    QFile broken(pictures.at(2));
    QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("no picture") > 0);
    broken.close();

    QVERIFY(composeSheet(display(bigLayout, pictures), SheetFormat::pdf));
    const QString text = documentText().simplified();
    QVERIFY2(text.contains(u"0:00:00.00 0:00:01.00 0:00:04.00"), qPrintable(text));

    QVERIFY(composeSheet(display(bigLayout, pictures), SheetFormat::jpeg));
    const QImage sheet(at(u"Movie.2019.jpg"_s));
    // 54 + 2 × (628 × 360 ÷ 640 + 8) + 21
    QCOMPARE(sheet.size(), QSize(1280, 797));
    QVERIFY(isNear(sheet.pixelColor(11, 100), Qt::black));
    QVERIFY(isNear(sheet.pixelColor(320, 200), Qt::red));
    QVERIFY(isNear(sheet.pixelColor(960, 200), Qt::green));
    QVERIFY(isNear(sheet.pixelColor(320, 560), Qt::blue));
    QVERIFY(isNear(sheet.pixelColor(960, 560), Qt::white));
    QCOMPARE(qRound(sheet.dotsPerMeterX() * 0.0254), 72);
    QVERIFY2(sheet.textKeys().isEmpty(), qPrintable(sheet.text()));
}

void TestSheetComposer::mixShowsTheHeaviestPicture()
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

void TestSheetComposer::documentsHoldRealText()
{
    Dico texts = display(bigLayout, {picture(0, Qt::red)});
    write(texts, Keys::name, u"Two\nlines"_s);
    write(texts, Keys::poids, u"1.53 G"_s);
    write(texts, Keys::essence, u"x"_s.repeated(400));
    write(texts, Keys::bkgColor, u"000000"_s);
    write(texts, Keys::borderColor, u"ffffff"_s);
    QVERIFY(composeSheet(texts, SheetFormat::pdf));
    const QString text = documentText();
    QVERIFY2(text.contains(u"Two lines"), qPrintable(text));
    QVERIFY(text.contains(u": 1.53 G"));
    QVERIFY(text.contains(u"xx…"));
    QCOMPARE(text.count(u"1.53"), 1);
}

void TestSheetComposer::failuresKeepTheOldSheet_data()
{
    QTest::addColumn<SheetFormat>("format");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("picture") << SheetFormat::jpeg << u".jpg"_s;
    QTest::newRow("document") << SheetFormat::pdf << u".pdf"_s;
}

void TestSheetComposer::failuresKeepTheOldSheet()
{
    QFETCH(SheetFormat, format);
    QFETCH(QString, suffix);
    Dico sheet = display(bigLayout, {picture(0, Qt::red)});
    const QString path = sheetPath(readStr(sheet, Keys::dstPathStr), format);
    QCOMPARE(path, at(u"Movie.2019"_s) + suffix);
    QFile old(path);
    QVERIFY(old.open(QIODevice::ReadWrite) && old.write("the old sheet") > 0 && old.seek(0));
    const QStringList before = QDir(m_folder->path()).entryList();
    {
        const FullDisk full;
        const Result<void> result = composeSheet(sheet, format);
        QVERIFY(!result);
        QVERIFY2(result.reason().contains(path), qPrintable(result.reason()));
    }
    Dico tooLarge = sheet;
    write(tooLarge, Keys::hTh, 1000000);
    QVERIFY(!composeSheet(tooLarge, format));
    write(sheet, Keys::dstPathStr, at(u"missing/Movie"_s));
    QVERIFY(!composeSheet(sheet, format));
    QVERIFY(!composeSheet({}, format));

    QCOMPARE(QDir(m_folder->path()).entryList(), before);
    QCOMPARE(old.readAll(), "the old sheet");
}

QTEST_MAIN(TestSheetComposer)
#include "test_sheetComposer.moc"
