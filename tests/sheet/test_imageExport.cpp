#include "sheetFixture.h"

#include "sheet/diskPicture.h"
#include "sheet/imageExport.h"
#include "sheet/richPictures.h"

#include <QDir>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

class TestImageExport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void extensionsNameTheFormat_data();
    void extensionsNameTheFormat();
    void factorsBecomeQualities();
    void placementsFollowTheirRule_data();
    void placementsFollowTheirRule();
    void whatCannotBeDoneChangesNothing();
    void diskPicturesAreChosenByWeight_data();
    void diskPicturesAreChosenByWeight();
    void diskPictureStacksTwoBands();

private:
    QString at(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

/// Left half red, right half blue.
static QImage halves(const QSize &size)
{
    QImage image = plain(size, Qt::red);
    QPainter(&image).fillRect(size.width() / 2, 0, size.width(), size.height(), Qt::blue);
    return image;
}

static QImage noise(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    QRandomGenerator random(7);
    random.fillRange(reinterpret_cast<quint32 *>(image.bits()), image.sizeInBytes() / 4);
    return image;
}

static QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestImageExport::extensionsNameTheFormat_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("signature");
    QTest::newRow("JPEG") << u"a.jpeg"_s << QByteArray("\xff\xd8\xff");
    QTest::newRow("upper case") << u"a.PNG"_s << QByteArray("\x89PNG");
    QTest::newRow("TIFF") << u"a.tif"_s << QByteArray("II*");
    QTest::newRow("BMP") << u"a.bmp"_s << QByteArray("BM");
    QTest::newRow("PDF") << u"a.pdf"_s << QByteArray("%PDF");
    QTest::newRow("unknown") << u"a.webp"_s << QByteArray("\xff\xd8\xff");
    QTest::newRow("none") << u"a"_s << QByteArray("\xff\xd8\xff");
    QTest::newRow("no codec") << u"a.gif"_s << QByteArray();
}

void TestImageExport::extensionsNameTheFormat()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, signature);
    QCOMPARE(imgExport(plain({40, 30}, Qt::green), at(name), 1.0), !signature.isEmpty());
    QCOMPARE(contentOf(at(name)).left(signature.size()), signature);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), signature.isEmpty() ? 0 : 1);
}

void TestImageExport::factorsBecomeQualities()
{
    const auto bytes = [&](double factor) {
        return imgExport(noise({64, 64}), at(u"q.jpg"_s), factor) ? contentOf(at(u"q.jpg"_s))
                                                                  : QByteArray();
    };
    const QByteArray usual = bytes(0.9);
    for (const double factor : {-1.0, 0.0, 1.1})
        QCOMPARE(bytes(factor), usual);
    QVERIFY(bytes(1.0).size() > usual.size());
    QVERIFY(bytes(0.3).size() < usual.size());
}

void TestImageExport::placementsFollowTheirRule_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QColor>("above");
    QTest::newRow("stretch") << 0 << u"r.bmp"_s << QColor(Qt::red);
    for (const int mode : {1, -1})
        QTest::addRow("fit %d", mode) << mode << u"r.bmp"_s << QColor(Qt::black);
    QTest::newRow("fit, transparent") << 1 << u"r.png"_s << QColor(0, 0, 0, 0);
    for (const int mode : {2, -2})
        QTest::addRow("cover %d", mode) << mode << u"r.bmp"_s << QColor(Qt::red);
}

void TestImageExport::placementsFollowTheirRule()
{
    QFETCH(int, mode);
    QFETCH(QString, name);
    QVERIFY(imgRescale(halves({200, 50}), at(name), 100, 100, 144, mode, 1.0));
    const QImage result(at(name));
    QCOMPARE(result.size(), QSize(100, 100));
    QCOMPARE(qRound(result.dotsPerMeterX() * 0.0254), 144);
    QTEST(result.pixelColor(40, 5), "above");
    QCOMPARE(result.pixelColor(40, 50), QColor(Qt::red));
    QCOMPARE(result.pixelColor(60, 50), QColor(Qt::blue));
}

void TestImageExport::whatCannotBeDoneChangesNothing()
{
    const QString path = at(u"old.jpg"_s);
    QVERIFY(writeSwatch(Qt::red, path, 300, 200));
    const QByteArray old = contentOf(path);
    QCOMPARE(imgSizes(path), QSize(300, 200));
    QVERIFY(!imgSizes(at(u"missing.jpg"_s)));

    QVERIFY(!imgRescale(at(u"missing.jpg"_s), path, 10, 10, 72, 0, 1.0));
    QVERIFY(!imgRescale(plain({9, 9}, Qt::red), path, 10, 10, 72, 3, 1.0));
    QVERIFY(!imgRescale(plain({9, 9}, Qt::red), path, 10, 0, 72, 0, 1.0));
    QVERIFY(!imgExport(plain({9, 9}, Qt::red), at(u"missing/a.jpg"_s), 1.0));
    for (const QString &name : {u"old.jpg"_s, u"new.png"_s, u"new.pdf"_s}) {
        const FullDisk full;
        QVERIFY(!imgExport(noise({90, 90}), at(name), 1.0));
    }
    QCOMPARE(contentOf(path), old);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList(u"old.jpg"_s));
}

void TestImageExport::diskPicturesAreChosenByWeight_data()
{
    using Weights = std::vector<double>;
    QTest::addColumn<Weights>("weights");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    const auto row = [](const char *name, const Weights &weights, int first, int second) {
        QTest::newRow(name) << weights << first << second;
    };
    row("rising", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 8, 7);
    row("the record broken, not the second heaviest", {0, 0, 5, 1, 9, 8, 1, 1, 1, 1}, 4, 2);
    row("falling: the next one", {10, 9, 8, 7, 6, 5, 4, 3, 2, 1}, 2, 3);
    row("a far record alone: three before", {0, 0, -1, -1, -1, 5, 1, 1, 1, 1}, 5, 2);
    row("one picture", {3}, 0, -1);
    row("two pictures", {3, 4}, 0, 0);
    row("three pictures", {3, 2, 9}, 0, 1);
    row("vanished files", {-1, -1, -1}, -1, -1);
}

void TestImageExport::diskPicturesAreChosenByWeight()
{
    QFETCH(std::vector<double>, weights);
    const PicturePair pair = diskPictures(weights);
    QTEST(pair.first, "first");
    QTEST(pair.second, "second");
}

void TestImageExport::diskPictureStacksTwoBands()
{
    const QString destination = at(u"disk.jpg"_s);
    QVERIFY(!multimediaDiskThumb(at(u"missing"_s), destination));

    const QString pictures = at(u"extractedImg"_s);
    QVERIFY(QDir().mkpath(pictures));
    QVERIFY(halves({640, 360}).save(pictures + u"/img00.jpg"_s));
    QVERIFY(writeSwatch(Qt::red, destination, 20, 20));
    QVERIFY(multimediaDiskThumb(pictures, destination));
    QImage disk(destination);
    QCOMPARE(disk.size(), QSize(360, 480));
    QVERIFY(isNear(disk.pixelColor(160, 120), Qt::red));
    QVERIFY(isNear(disk.pixelColor(200, 120), Qt::blue));
    QVERIFY(isNear(disk.pixelColor(180, 400), QColor(128, 128, 128)));

    QVERIFY(plain({400, 700}, Qt::green).save(pictures + u"/img01.jpg"_s));
    QVERIFY(plain({400, 700}, Qt::green).save(pictures + u"/img02.jpg"_s));
    QVERIFY(multimediaDiskThumb(pictures, destination));
    disk = QImage(destination);
    QVERIFY(isNear(disk.pixelColor(180, 235), Qt::green));
    QVERIFY(isNear(disk.pixelColor(160, 248), Qt::red));
    QVERIFY(isNear(disk.pixelColor(200, 479), Qt::blue));
}

QTEST_MAIN(TestImageExport)
#include "test_imageExport.moc"
