#include "sheetFixture.h"

#include "sheet/diskPicture.h"
#include "sheet/imageExport.h"
#include "sheet/richPictures.h"

#include <QDir>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

/// Left half red, right half blue.
static QImage halves(const QSize &size)
{
    QImage image = plain(size, Qt::red);
    QPainter(&image).fillRect(size.width() / 2, 0, size.width(), size.height(), Qt::blue);
    return image;
}

static QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class TestImageExport : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString at(const QString &name) const { return m_folder->filePath(name); }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void extensionsNameTheFormat()
    {
        const QImage image = plain({40, 30}, Qt::green);
        const QByteArray jpeg = "\xff\xd8\xff";
        const QList<std::pair<QString, QByteArray>> signatures{
            {u"a.PNG"_s, "\x89PNG"}, {u"a.tif"_s, "II*"}, {u"a.bmp"_s, "BM"},
            {u"a.pdf"_s, "%PDF"},    {u"a.webp"_s, jpeg}, {u"a"_s, jpeg}};
        for (const auto &[name, signature] : signatures) {
            QVERIFY2(imgExport(image, at(name), 1.0), qPrintable(name));
            QCOMPARE(contentOf(at(name)).left(signature.size()), signature);
        }
        // There is no codec for it.
        QVERIFY(!imgExport(image, at(u"a.gif"_s), 1.0) && !QFile::exists(at(u"a.gif"_s)));
    }

    void factorsBecomeQualities()
    {
        for (const double factor : {-1.0, 0.0, 1.1, 0.9})
            QCOMPARE(jpegQuality(factor), 90);
        const QImage image = halves({60, 60});
        QVERIFY(imgExport(image, at(u"fine.jpg"_s), 1) && imgExport(image, at(u"poor.jpg"_s), 0.3));
        QVERIFY(contentOf(at(u"fine.jpg"_s)).size() > contentOf(at(u"poor.jpg"_s)).size());
    }

    void placementsFollowTheirRule()
    {
        const QList<std::pair<int, QColor>> coloursAbove{
            {0, Qt::red}, {1, Qt::black}, {-1, Qt::transparent}, {2, Qt::red}, {-2, Qt::red}};
        for (const auto &[mode, above] : coloursAbove) {
            const QString path = at(above == Qt::transparent ? u"r.png"_s : u"r.bmp"_s);
            QVERIFY(imgRescale(halves({200, 50}), path, 100, 100, 144, mode, 1.0));
            const QImage result(path);
            QCOMPARE(result.size(), QSize(100, 100));
            QCOMPARE(qRound(result.dotsPerMeterX() * 0.0254), 144);
            QCOMPARE(result.pixelColor(40, 5), above);
            QCOMPARE(result.pixelColor(40, 50), QColor(Qt::red));
            QCOMPARE(result.pixelColor(60, 50), QColor(Qt::blue));
        }
    }

    void whatCannotBeDoneChangesNothing()
    {
        const QString path = at(u"old.jpg"_s);
        QVERIFY(writeSwatch(Qt::red, path, 300, 200));
        const QByteArray old = contentOf(path);
        QCOMPARE(imgSizes(path), QSize(300, 200));

        const QImage image = halves({900, 900});
        QVERIFY(!imgRescale(at(u"missing.jpg"_s), path, 10, 10, 72, 0, 1.0));
        QVERIFY(!imgRescale(image, path, 10, 10, 72, 3, 1.0));
        QVERIFY(!imgRescale(image, path, 10, 0, 72, 0, 1.0));
        QVERIFY(!imgExport(image, at(u"missing/a.jpg"_s), 1.0));
        for (const QString &name : {u"old.jpg"_s, u"new.png"_s, u"new.pdf"_s}) {
            const FullDisk full;
            QVERIFY(!imgExport(image, at(name), 1.0));
        }
        QCOMPARE(contentOf(path), old);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList(u"old.jpg"_s));
    }

    void diskPicturesAreChosenByWeight()
    {
        const auto chosen = [](const std::vector<double> &weights) {
            const PicturePair pair = diskPictures(weights);
            return std::pair(pair.first, pair.second);
        };
        QCOMPARE(chosen({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), std::pair(8, 7));
        // The record that was broken, not the second heaviest.
        QCOMPARE(chosen({0, 0, 5, 1, 9, 8, 1, 1, 1, 1}), std::pair(4, 2));
        // The one after a record that was never broken, or three before where it is far.
        QCOMPARE(chosen({10, 9, 8, 7, 6, 5, 4, 3, 2, 1}), std::pair(2, 3));
        QCOMPARE(chosen({0, 0, -1, -1, -1, 5, 1, 1, 1, 1}), std::pair(5, 2));
        QCOMPARE(chosen({3}), std::pair(0, -1));
        QCOMPARE(chosen({3, 4}), std::pair(0, 0));
        QCOMPARE(chosen({3, 2, 9}), std::pair(0, 1));
        // Vanished files.
        QCOMPARE(chosen({-1, -1, -1}), std::pair(-1, -1));
    }

    void diskPictureStacksTwoBands()
    {
        const QString destination = at(u"disk.jpg"_s);
        const QString pictures = at(u"extractedImg"_s);
        QVERIFY(!multimediaDiskThumb(pictures, destination));
        QVERIFY(QDir().mkpath(pictures));
        QVERIFY(halves({640, 360}).save(pictures + u"/img00.jpg"_s));
        QVERIFY(multimediaDiskThumb(pictures, destination));
        QImage disk(destination);
        QCOMPARE(disk.size(), QSize(360, 480));
        QVERIFY(isNear(disk.pixelColor(160, 120), Qt::red));
        QVERIFY(isNear(disk.pixelColor(180, 400), QColor(128, 128, 128)));

        for (const QString &name : {u"/img01.jpg"_s, u"/img02.jpg"_s})
            QVERIFY(plain({400, 700}, Qt::green).save(pictures + name));
        QVERIFY(multimediaDiskThumb(pictures, destination));
        disk = QImage(destination);
        QVERIFY(isNear(disk.pixelColor(180, 235), Qt::green));
        QVERIFY(isNear(disk.pixelColor(160, 248), Qt::red));
        QVERIFY(isNear(disk.pixelColor(200, 479), Qt::blue));
    }
};

QTEST_MAIN(TestImageExport)
#include "test_imageExport.moc"
