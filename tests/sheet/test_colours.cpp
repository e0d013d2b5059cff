#include "sheet/extractionPasses.h"
#include "sheet/imageExport.h"
#include "sheet/pictureMatrix.h"
#include "sheet/toneMapping.h"
#include "tasks/blockingRuns.h"
#include "tasks/toolPlaces.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

/// Dark enough to pass the tone mapping unchanged: less than 0.3 of the reference white.
const QList<QColor> patches{{140, 40, 40}, {40, 130, 60}, {40, 60, 140}, {118, 118, 118}};
/// Levels of 255: what two conversions at 8 bits and a JPEG picture may cost.
constexpr int tolerance = 6;

struct Clip {
    QSize size{320, 90};
    QString matrix{u"bt709"_s};
    QString primaries{u"bt709"_s};
    QString transfer{u"bt709"_s};
    QString range{u"tv"_s};
    QString pixels{u"yuv420p"_s};
    bool isDescribed = true;
};

/// Four patches side by side, lossless, with the light of 203 cd/m² for white where the
/// transfer is an absolute one.
bool makeClip(const QString &path, const Clip &clip)
{
    QStringList arguments{u"-loglevel"_s, u"error"_s};
    for (const QColor &colour : patches)
        arguments << u"-f"_s << u"lavfi"_s << u"-i"_s
                  << u"color=%1:s=%2x%3:r=5:d=2,format=gbrp"_s
                         .arg(colour.name().mid(1).prepend(u"0x"_s))
                         .arg(clip.size.width() / 4)
                         .arg(clip.size.height());
    const QString toClip =
        clip.pixels.startsWith(u"gbr")
            ? u"hstack=4"_s
            : u"hstack=4,format=gbrpf32le,zscale=min=gbr:pin=bt709:tin=bt709:rin=pc:t=linear"
              ":npl=203:m=gbr:p=%1,zscale=p=%1:t=%2:m=%3:r=%4:npl=203,format=%5"_s.arg(
                  clip.primaries, clip.transfer, clip.matrix, clip.range, clip.pixels);
    const QString description = clip.isDescribed
                                    ? u""_s
                                    : u",setparams=colorspace=unknown:color_primaries=unknown"
                                      ":color_trc=unknown"_s;
    arguments << u"-filter_complex"_s << toClip + description << u"-c:v"_s << u"ffv1"_s;
    if (clip.isDescribed)
        arguments << u"-colorspace"_s << clip.matrix << u"-color_primaries"_s << clip.primaries
                  << u"-color_trc"_s << clip.transfer << u"-color_range"_s << clip.range;
    return QProcess::execute(ffmpegPath(), arguments << path) == 0;
}

SourceDico recordOf(const QString &path, const Clip &clip)
{
    SourceDico source{{Keys::srcPathStr, path}};
    write(source, Keys::v_width, 0, clip.size.width());
    write(source, Keys::v_height, 0, clip.size.height());
    write(source, Keys::v_pixelFormat, 0, clip.pixels);
    if (clip.isDescribed) {
        write(source, Keys::v_matrix, 0, clip.matrix);
        write(source, Keys::v_primaries, 0, clip.primaries);
        write(source, Keys::v_transfer, 0, clip.transfer);
        write(source, Keys::v_range, 0, clip.range);
    }
    return source;
}

QString differences(const QImage &picture)
{
    QString text;
    for (int patch = 0; patch < 4; ++patch) {
        const QColor shown =
            picture.pixelColor(picture.width() * (2 * patch + 1) / 8, picture.height() / 2);
        const QColor meant = patches[patch];
        const int worst =
            std::max({qAbs(shown.red() - meant.red()), qAbs(shown.green() - meant.green()),
                      qAbs(shown.blue() - meant.blue())});
        if (worst > tolerance)
            text += meant.name() + u" shows as "_s + shown.name() + u' ';
    }
    return text;
}

} // namespace

/// Known colours through real ffmpeg, as a reader of the picture shows them.
class TestColours : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picturesShowTheColoursOfTheSource_data();
    void picturesShowTheColoursOfTheSource();
    void standardRangeKeepsItsFilter();
    void damagedPicturesStayAsTheyAre();
};

void TestColours::picturesShowTheColoursOfTheSource_data()
{
    QTest::addColumn<Clip>("clip");
    QTest::addColumn<bool>("usesTables");
    const auto row = [](const char *name, const Clip &clip, bool usesTables = false) {
        QTest::newRow(name) << clip << usesTables;
    };
    const QString bt601 = u"smpte170m"_s;
    const QString deep = u"yuv420p10le"_s;
    const Clip pq{.matrix = u"bt2020nc"_s,
                  .primaries = u"bt2020"_s,
                  .transfer = u"smpte2084"_s,
                  .pixels = deep};
    Clip hlg = pq;
    hlg.transfer = u"arib-std-b67"_s;
    row("BT.601", {.matrix = bt601});
    row("BT.601, full range", {.matrix = bt601, .range = u"pc"_s});
    row("BT.709", {});
    row("BT.709, full range", {.range = u"pc"_s});
    row("BT.709, 10 bits", {.pixels = deep});
    row("BT.709, 10 bits, full range", {.range = u"pc"_s, .pixels = deep});
    row("BT.709, 4:2:2", {.pixels = u"yuv422p"_s});
    row("BT.709, 4:4:4", {.pixels = u"yuv444p"_s});
    row("BT.2020 matrix", {.matrix = u"bt2020nc"_s, .pixels = deep});
    row("undescribed, standard definition", {.matrix = bt601, .isDescribed = false});
    row("undescribed, high definition", {.size = {1280, 720}, .isDescribed = false});
    row("RGB", {.size = {1280, 720}, .pixels = u"gbrp"_s, .isDescribed = false});
    row("PQ", pq);
    row("PQ by tables", pq, true);
    row("HLG", hlg);
    row("HLG by tables", hlg, true);
}

void TestColours::picturesShowTheColoursOfTheSource()
{
    QFETCH(Clip, clip);
    QFETCH(bool, usesTables);
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"clip.mkv"_s);
    QVERIFY(makeClip(path, clip));
    const SourceDico source = recordOf(path, clip);
    QString filter = thumbnailFilter(source, clip.size);
    if (usesTables)
        filter.replace(standardRange(source, clip.size),
                       toneMapping(source, clip.size, ToneMapper::tables));
    // A run-up, which tone mapping has a shortcut for, must find the same picture.
    const QStringList pass = ffmpegPass(source, 1, filter, folder.filePath(u"1.jpg"_s));
    for (const QStringList &each : {pass, withRunUp(pass)}) {
        QFile::remove(pass.constLast());
        taskArray(each);
        if (const auto matrix = foreignMatrix(source)) {
            const QString noted = folder.filePath(u"noted.jpg"_s);
            QFile::remove(noted);
            QVERIFY(QFile::copy(pass.constLast(), noted) && noteMatrix(noted, *matrix));
            QCOMPARE(differences(loadedPicture(noted)), QString());
            QCOMPARE(differences(loadedPicture(noted, clip.size / 2).scaled(clip.size)), QString());
            QVERIFY(convertToJpegMatrix(pass.constLast(), *matrix));
        }
        const QImage picture(pass.constLast());
        QCOMPARE(picture.size(), clip.size);
        QCOMPARE(differences(picture), QString());
    }
}

void TestColours::standardRangeKeepsItsFilter()
{
    SourceDico source = recordOf({}, {});
    QCOMPARE(thumbnailFilter(source, {64, 48}),
             u"select=eq(pict_type\\,I),yadif=1,scale=64:48,setsar=1/1"_s);
    // What a report says is no filter text.
    write(source, Keys::v_transfer, 0, u"smpte2084"_s);
    write(source, Keys::v_matrix, 0, u"gbr,movie=/etc/passwd"_s);
    QVERIFY(!thumbnailFilter(source, {64, 48}).contains(u"movie"));
    // A phone's standard-definition clip that is turned to stand upright.
    const SourceDico upright{
        {Keys::v_width(0), 480}, {Keys::v_height(0), 848}, {Keys::v_rotation(0), 90}};
    QVERIFY(!foreignMatrix(upright));
}

void TestColours::damagedPicturesStayAsTheyAre()
{
    QTemporaryDir folder;
    QFile file(folder.filePath(u"img00.jpg"_s));
    QVERIFY(file.open(QIODevice::ReadWrite) && file.write("\xff\xd8\xff\xe0 no picture") > 0);
    file.close();
    QVERIFY(!convertToJpegMatrix(file.fileName(), {0.2126, 0.0722}));
    QVERIFY(!noteMatrix(folder.filePath(u"missing.jpg"_s), {0.2126, 0.0722}));
    QCOMPARE(QFile(file.fileName()).size(), 15);
}

QTEST_GUILESS_MAIN(TestColours)
#include "test_colours.moc"
