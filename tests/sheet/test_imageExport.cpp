#include "sheetFixture.h"

#include "sheet/diskPicture.h"
#include "sheet/imageExport.h"
#include "sheet/jpegReading.h"
#include "sheet/ownMark.h"
#include "sheet/pdfPage.h"
#include "sheet/richPictures.h"
#include "sheet/seekPreview.h"

#include <QDir>
#include <QImageReader>
#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>
#include <QTest>
#include <QTransform>

#include <sys/stat.h>

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

/// Rich in colours and edges, none of them on the borders of the format's blocks.
static QImage colourful(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(x * 5 % 256, (x * y / 7) % 256, x / 13 % 2 ? 220 : y % 256));
    }
    return image;
}

/// Between any two channels of any two pixels.
static int largestDifference(const QImage &one, const QImage &other)
{
    int largest = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            largest =
                std::max({largest, std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                          std::abs(qBlue(a) - qBlue(b)), std::abs(qAlpha(a) - qAlpha(b))});
        }
    }
    return largest;
}

class TestImageExport : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString at(const QString &name) const { return m_folder->filePath(name); }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void everyFormatIsWrittenAndReadBack_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("signature");
        // What the right half becomes, of which the picture leaves the lower part open.
        QTest::addColumn<QColor>("open");
        const QColor none(Qt::transparent);
        QTest::newRow("JPEG") << u"a.jpeg"_s << QByteArray("\xff\xd8\xff") << QColor(Qt::black);
        QTest::newRow("upper case")
            << u"a.JPG"_s << QByteArray("\xff\xd8\xff") << QColor(Qt::black);
        QTest::newRow("unknown") << u"a.webp"_s << QByteArray("\xff\xd8\xff") << QColor(Qt::black);
        QTest::newRow("none") << u"a"_s << QByteArray("\xff\xd8\xff") << QColor(Qt::black);
        QTest::newRow("TIFF") << u"a.tif"_s << QByteArray("II*") << none;
        QTest::newRow("BMP") << u"a.bmp"_s << QByteArray("BM") << QColor(Qt::black);
        QTest::newRow("PNG") << u"a.PNG"_s << QByteArray("\x89PNG") << none;
        // Before it nothing has asked for libvips.
        QTest::newRow("GIF") << u"a.gif"_s << QByteArray("GIF89a") << none;
        QTest::newRow("JPEG 2000") << u"a.jp2"_s << QByteArray("\0\0\0\x0cjP", 6) << none;
        QTest::newRow("JPX") << u"a.jpx"_s << QByteArray("\0\0\0\x0cjP", 6) << none;
    }

    void everyFormatIsWrittenAndReadBack()
    {
        QFETCH(const QString, name);
        QFETCH(const QByteArray, signature);
        QFETCH(const QColor, open);
        const bool isOurs = QStringList{u"a.gif"_s, u"a.jp2"_s, u"a.jpx"_s}.contains(name);
        QVERIFY(isOurs || !contentOf(u"/proc/self/maps"_s).contains("libvips"));

        // An odd width, whose rows no padding ends on a whole number of words.
        QVERIFY(imgRescale(halves({202, 60}), at(name), 101, 61, 72, 1, 1.0));
        QCOMPARE(contentOf(at(name)).left(signature.size()), signature);
        QCOMPARE(imgSizes(at(name)), QSize(101, 61));
        const QImage read = loadedPicture(at(name));
        QCOMPARE(read.size(), QSize(101, 61));
        QVERIFY(isNear(read.pixelColor(20, 30), Qt::red));
        QVERIFY(isNear(read.pixelColor(80, 30), Qt::blue));
        QCOMPARE(read.pixelColor(80, 5).alpha(), open.alpha());
        QVERIFY(open.alpha() == 0 || isNear(read.pixelColor(80, 5), open));
        QCOMPARE(loadedPicture(at(name), {20, 10}).size(), QSize(20, 10));
    }

    void grayPicturesKeepTheirShades()
    {
        QImage ramp(256, 3, QImage::Format_Grayscale8);
        for (int x = 0; x < ramp.width(); ++x)
            for (int y = 0; y < ramp.height(); ++y)
                ramp.scanLine(y)[x] = uchar(x);
        for (const QString &name : {u"gray.jp2"_s, u"gray.tif"_s, u"gray.gif"_s}) {
            QVERIFY2(imgExport(ramp, at(name), 1.0), qPrintable(name));
            const QImage read = loadedPicture(at(name));
            for (const int x : {0, 1, 100, 254, 255})
                QVERIFY2(qAbs(read.pixelColor(x, 1).red() - x) <= 2, qPrintable(name));
        }
        // Half a picture is none.
        const QByteArray whole = contentOf(at(u"gray.jp2"_s));
        QFile half(at(u"half.jp2"_s));
        QVERIFY(half.open(QIODevice::WriteOnly) && half.write(whole.left(whole.size() / 2)) > 0);
        half.close();
        QVERIFY(loadedPicture(half.fileName()).isNull());
    }

    void jpegIsReadAsTheToolkitReadsIt_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("whole") << QSize();
        QTest::newRow("half") << QSize(161, 121);
        QTest::newRow("less than half") << QSize(130, 97);
        QTest::newRow("a tile") << QSize(60, 45);
        QTest::newRow("of another shape") << QSize(30, 100);
        QTest::newRow("a few pixels") << QSize(3, 2);
    }
    void jpegIsReadAsTheToolkitReadsIt()
    {
        QFETCH(QSize, size);
        const QString path = at(u"a.jpg"_s);
        QVERIFY(imgExport(colourful({322, 242}), path, 0.9));
        QImageReader reader(path);
        if (!size.isEmpty())
            reader.setScaledSize(size);
        const QImage expected = reader.read();
        const QImage picture = jpegPicture(path, size);
        QCOMPARE(picture.size(), expected.size());
        QCOMPARE(largestDifference(picture, expected), 0);
    }

    void jpegIsAveragedWhereItShrinksLittle()
    {
        const QString path = at(u"a.jpg"_s);
        QVERIFY(imgExport(colourful({322, 242}), path, 0.9));
        const QSize size(250, 188);
        const QImage whole = QImageReader(path).read();
        QCOMPARE(jpegPicture(path, size),
                 whole.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    }

    void otherPicturesAreLeftToTheToolkit()
    {
        QVERIFY(imgExport(colourful({32, 24}), at(u"a.png"_s), 0.9));
        QVERIFY(imgExport(colourful({32, 24}).convertToFormat(QImage::Format_Grayscale8),
                          at(u"gray.jpg"_s), 0.9));
        QVERIFY(imgExport(colourful({32, 24}), at(u"a.jpg"_s), 0.9));
        const QByteArray content = contentOf(at(u"a.jpg"_s));
        QFile half(at(u"half.jpg"_s));
        QVERIFY(half.open(QIODevice::WriteOnly));
        half.write(content.first(content.size() / 2));
        half.close();
        for (const QString &name : {u"a.png"_s, u"gray.jpg"_s, u"half.jpg"_s, u"none.jpg"_s})
            QVERIFY2(jpegPicture(at(name)).isNull(), qPrintable(name));
    }

    void whatAFormatCannotHoldIsRefused()
    {
        const auto reason = [this](int width, const PictureFormat &format) {
            QImage line(width, 2, QImage::Format_Grayscale8);
            line.fill(0);
            line.setText(u"Comment"_s, u"made elsewhere"_s);
            return writePicture(line, at(u"long"_s), format).reason();
        };
        QVERIFY(reason(65501, jpegFormat).contains(u"65501"_s));
        QVERIFY(reason(16384, webpFormat).contains(u"16383"_s));
        QVERIFY(reason(65536, gifFormat).contains(u"65535"_s));
        QVERIFY(!QFile::exists(at(u"long"_s)));
        QCOMPARE(reason(16383, webpFormat), QString());
        QCOMPARE(reason(65500, jpegFormat), QString());
        QVERIFY(!contentOf(at(u"long"_s)).contains("elsewhere"));
        // A format without a place for metadata still gets its picture.
        QVERIFY(writePicture(halves({9, 9}), at(u"a.gif"_s), gifFormat, -1, {u"title"_s, {}}));
        QCOMPARE(imgSizes(at(u"a.gif"_s)), QSize(9, 9));
    }

    void factorsBecomeQualities()
    {
        for (const double factor : {-1.0, 0.0, 1.1, 0.9})
            QCOMPARE(jpegQuality(factor), 90);
        for (const int quality : {1, 30, 89, 100})
            QCOMPARE(jpegQuality(quality / 100.0), quality);
        const QImage image = halves({60, 60});
        QVERIFY(imgExport(image, at(u"fine.jpg"_s), 1) && imgExport(image, at(u"poor.jpg"_s), 0.3));
        QVERIFY(contentOf(at(u"fine.jpg"_s)).size() > contentOf(at(u"poor.jpg"_s)).size());
    }

    void placementsFollowTheirRule_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("isUpright");
        // Outside the middle band, which is all that a fitted picture covers.
        QTest::addColumn<QColor>("beside");
        for (const bool isUpright : {false, true}) {
            const auto add = [isUpright](int mode, const QColor &beside) {
                QTest::addRow("mode %d, %s", mode, isUpright ? "upright" : "across")
                    << mode << isUpright << beside;
            };
            add(0, Qt::red);
            add(1, Qt::black);
            add(-1, Qt::transparent);
            add(2, Qt::red);
            add(-2, Qt::red);
        }
    }
    void placementsFollowTheirRule()
    {
        QFETCH(const int, mode);
        QFETCH(const bool, isUpright);
        QFETCH(const QColor, beside);
        // An upright source is the mirror image along the diagonal, and so is its result.
        const QTransform mirror(0, 1, 1, 0, 0, 0);
        const QImage wide = halves({200, 50});
        const QString path = at(beside == Qt::transparent ? u"r.png"_s : u"r.bmp"_s);
        QVERIFY(imgRescale(isUpright ? wide.transformed(mirror) : wide, path, 100, 100, 144, mode,
                           1.0));
        const QImage written(path);
        QCOMPARE(written.size(), QSize(100, 100));
        QCOMPARE(qRound(written.dotsPerMeterX() * 0.0254), 144);
        const QImage result = isUpright ? written.transformed(mirror) : written;
        for (const int far : {5, 34, 65, 95})
            QCOMPARE(result.pixelColor(40, far), beside);
        for (const int row : {40, 50, 60}) {
            QCOMPARE(result.pixelColor(45, row), QColor(Qt::red));
            QCOMPARE(result.pixelColor(55, row), QColor(Qt::blue));
        }
    }

    void documentsShowTheirPicture_data()
    {
        QTest::addColumn<double>("dpi");
        QTest::addColumn<int>("shownAt");
        QTest::newRow("unknown is 72") << 0.0 << 72;
        QTest::newRow("144") << 144.0 << 144;
        QTest::newRow("250") << 250.0 << 250;
    }
    void documentsShowTheirPicture()
    {
        QFETCH(const double, dpi);
        QFETCH(const int, shownAt);
        const QString path = at(u"a.PDF"_s);
        QVERIFY(imgRescale(halves({20, 10}), path, 250, 125, dpi, 0, 1.0));
        QVERIFY(contentOf(path).startsWith("%PDF"));
        const QImage shown = shownPage(path, shownAt);
        // Its page is rounded up to whole points.
        const QSize difference = shown.size() - QSize(250, 125);
        QVERIFY(difference.width() >= 0 && difference.width() <= 3 && difference.height() >= 0 &&
                difference.height() <= 3);
        for (const int y : {5, 120}) {
            for (const auto &[x, colour] :
                 {std::pair(5, Qt::red), {115, Qt::red}, {135, Qt::blue}, {245, Qt::blue}})
                QVERIFY(isNear(shown.pixelColor(x, y), colour));
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

    void linksAreReplacedAndNeverFollowed()
    {
        QVERIFY(writeSwatch(Qt::red, at(u"film.jpg"_s), 30, 20));
        const QByteArray film = contentOf(at(u"film.jpg"_s));
        for (const QString &name : {u"a.jpg"_s, u"a.png"_s, u"a.pdf"_s}) {
            QVERIFY(QFile::link(at(u"film.jpg"_s), at(name)));
            QVERIFY(imgExport(halves({40, 20}), at(name), 1.0));
            QVERIFY(QFileInfo(at(name)).isFile() && !QFileInfo(at(name)).isSymLink());
        }
        QVERIFY(QFile::link(at(u"nowhere"_s), at(u"b.jpg"_s)));
        QVERIFY(imgExport(halves({40, 20}), at(u"b.jpg"_s), 1.0));
        QVERIFY(!QFile::exists(at(u"nowhere"_s)));
        QCOMPARE(contentOf(at(u"film.jpg"_s)), film);
    }

    void marksAreReadWhereWeWriteThem()
    {
        const QImage picture = colourful({600, 400});
        for (const PictureFormat &format : {jpegFormat, pngFormat, webpFormat}) {
            const QString path = at(QString::fromLatin1(format.codec));
            QVERIFY(writePicture(picture, path, format, 90));
            QVERIFY2(!bearsOurMark(path), format.codec);
            QVERIFY(writePicture(picture, path, format, 90, signedMetadata));
            QVERIFY2(bearsOurMark(path), format.codec);
            // However early it ends, nothing is read beyond its end.
            const QByteArray whole = contentOf(path);
            for (qsizetype size = 0; size < std::min<qsizetype>(whole.size(), 2000); size += 7) {
                QVERIFY(writeOver(at(u"cut"_s), whole.first(size)));
                (void)bearsOurMark(at(u"cut"_s));
            }
        }
        QVERIFY(writePdfPage(at(u"a.pdf"_s), {{90, 60}}, [](QPainter &) {}));
        QVERIFY(bearsOurMark(at(u"a.pdf"_s)));
        QVERIFY(writeOver(at(u"a.vtt"_s), previewCues(u"s.jpg"_s, {{0, {}}}, 9).toUtf8()));
        QVERIFY(bearsOurMark(at(u"a.vtt"_s)));
        QVERIFY(QFile::link(at(u"a.vtt"_s), at(u"link"_s)));
        QVERIFY(!bearsOurMark(at(u"link"_s)));
    }

    void marksOfOthersAreNotOurs_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray mark = "CreatorTool=\"Vignar 9\"";
        const QByteArray xmp = "http://ns.adobe.com/xap/1.0/";
        const auto row = [](const char *name, const QByteArray &content) {
            QTest::newRow(name) << content;
        };
        row("empty", {});
        row("text about us", "WEBVTT\n\nNOTE not made by Vignar 9 " + mark);
        row("text with our mark", mark);
        row("comment of a JPEG", "\xff\xd8\xff\xfe" + QByteArray("\0\x40", 2) + mark);
        row("Exif of a JPEG", "\xff\xd8\xff\xe1" + QByteArray("\0\x40", 2) + "Exif" + mark);
        row("pixels of a JPEG", "\xff\xd8\xff\xda\xff\xe1" + QByteArray("\0\x60", 2) + xmp +
                                    QByteArray(1, '\0') + mark);
        row("XMP of another program", "\xff\xd8\xff\xe1" + QByteArray("\0\x60", 2) + xmp +
                                          QByteArray(1, '\0') + "CreatorTool=\"Other\" Vignar 9");
        row("segment of no length", "\xff\xd8\xff\xe1" + QByteArray("\0\0", 2));
        row("segment beyond the end", "\xff\xd8\xff\xe1\xff\xff");
        const QByteArray png = QByteArray("\x89PNG\r\n\x1a\n", 8);
        row("chunk beyond the end", png + "\xff\xff\xff\xffiTXt");
        row("text of a PNG", png + QByteArray("\0\0\0\x40", 4) + "tEXt" + mark);
        row("behind the pixels of a PNG",
            png + QByteArray("\0\0\0\0IDAT\0\0\0\0\0\0\0\x60iTXtXML:com.adobe.xmp\0", 42) + mark);
        row("chunk of 4 GB", "RIFFxxxxWEBPVP8 \xff\xff\xff\xff");
        row("another RIFF", "RIFFxxxxAVI XMP \x40" + QByteArray(3, '\0') + mark);
        row("document about us", "%PDF-1.4 /Title (Vignar 9) /Creator (Other)");
    }

    void marksOfOthersAreNotOurs()
    {
        QFETCH(const QByteArray, content);
        QVERIFY(writeOver(at(u"a"_s), content));
        QVERIFY(!bearsOurMark(at(u"a"_s)));
        // Nothing waits for a pipe's other end.
        QCOMPARE(::mkfifo(qPrintable(at(u"pipe"_s)), 0600), 0);
        QVERIFY(!bearsOurMark(at(u"pipe"_s)) && !bearsOurMark(m_folder->path()));
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

    void diskPictureLeavesAGap()
    {
        const QString destination = at(u"gap.jpg"_s);
        const QString pictures = at(u"extractedImg"_s);
        QVERIFY(QDir().mkpath(pictures));
        for (const QString &name : {u"/img00.jpg"_s, u"/img01.jpg"_s, u"/img02.jpg"_s})
            QVERIFY(plain({360, 240}, Qt::white).save(pictures + name));
        QVERIFY(multimediaDiskThumb(pictures, destination));
        QCOMPARE(qualityOfJpeg(destination), 90);
        const QImage disk(destination);
        QList<int> grayRows;
        for (int row = 0; row < disk.height(); ++row) {
            if (qAbs(qGray(disk.pixel(180, row)) - 128) < 40)
                grayRows.append(row);
        }
        QCOMPARE(grayRows, (QList<int>{240, 241, 242}));

        // A picture that is cut off has a size and is left out; what has none is a failure.
        QVERIFY(QFile::remove(destination));
        QVERIFY(colourful({640, 360}).save(pictures + u"/img01.jpg"_s, "PNG"));
        const QByteArray whole = contentOf(pictures + u"/img01.jpg"_s);
        for (const QByteArray &content :
             {whole.first(whole.size() / 2), QByteArray(whole.size(), 'x')}) {
            QFile file(pictures + u"/img01.jpg"_s);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
            file.close();
            const bool isCut = content.startsWith("\x89PNG");
            QCOMPARE(multimediaDiskThumb(pictures, destination), isCut);
            QCOMPARE(QFile::remove(destination), isCut);
        }
    }
};

QTEST_MAIN(TestImageExport)
#include "test_imageExport.moc"
