#include "sheet/pictureMatrix.h"

#include "classShared/lineLog.h"
#include "sheet/extractionPasses.h"
#include "sheet/plannedSource.h"
#include "sheet/toneMapping.h"
#include "sheet/turboJpeg.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <vector>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr LumaWeights bt601{0.299, 0.114};
constexpr LumaWeights bt709{0.2126, 0.0722};
constexpr LumaWeights smpte240m{0.212, 0.087};
constexpr LumaWeights bt2020{0.2627, 0.0593};

/// Below the quality at which a picture grows without looking any better.
constexpr int rewriteQuality = 97;
/// No picture of ours has a side of that many pixels.
constexpr int largestSide = 16384;

/// Nothing says what an undescribed matrix is. Players take pictures of more than
/// standard definition to be BT.709, by these very limits.
std::optional<LumaWeights> undescribedMatrix(const SourceDico &source)
{
    const QSize shown = storedSize(source);
    const bool isOnItsSide = read(source, Keys::v_rotation, 0).value_or(0) % 180 != 0;
    const QSize stored = isOnItsSide ? shown.transposed() : shown;
    const bool isHighDefinition = stored.width() >= 1280 || stored.height() > 576;
    return isHighDefinition ? std::optional(bt709) : std::nullopt;
}

/// RGB, or without any colour.
bool isStoredWithoutMatrix(const SourceDico &source)
{
    static const QRegularExpression formats(u"rgb|bgr|gbr|pal8|xyz|bayer|gray|mono"_s);
    return formats.match(read(source, Keys::v_pixelFormat, 0).value_or(QString())).hasMatch();
}

/// One plane of samples, 0 … 255, row after row without gaps.
struct Plane {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> samples;
};

struct YccPicture {
    int width = 0;
    int height = 0;
    int subsampling = 0;
    std::array<Plane, 3> planes;

    std::array<unsigned char *, 3> data()
    {
        return {planes[0].samples.data(), planes[1].samples.data(), planes[2].samples.data()};
    }
};

/// At its own size where that is empty.
std::optional<YccPicture> decoded(const QByteArray &file, const QSize &shrunk = {})
{
    const TurboHandle turbo(tjInitDecompress());
    const auto *bytes = reinterpret_cast<const unsigned char *>(file.constData());
    const auto size = static_cast<unsigned long>(file.size());
    YccPicture picture;
    int colours = 0;
    if (!turbo ||
        tjDecompressHeader3(turbo.get(), bytes, size, &picture.width, &picture.height,
                            &picture.subsampling, &colours) != 0 ||
        colours != TJCS_YCbCr || std::max(picture.width, picture.height) > largestSide)
        return std::nullopt;
    if (!shrunk.isEmpty()) {
        picture.width = shrunk.width();
        picture.height = shrunk.height();
    }
    for (int component = 0; component < 3; ++component) {
        Plane &plane = picture.planes[component];
        plane.width = tjPlaneWidth(component, picture.width, picture.subsampling);
        plane.height = tjPlaneHeight(component, picture.height, picture.subsampling);
        plane.samples.resize(size_t(plane.width) * size_t(plane.height));
    }
    if (tjDecompressToYUVPlanes(turbo.get(), bytes, size, picture.data().data(), picture.width,
                                nullptr, picture.height, 0) != 0)
        return std::nullopt;
    return picture;
}

QByteArray encoded(YccPicture &picture)
{
    const TurboHandle turbo(tjInitCompress());
    auto planes = picture.data();
    const unsigned char *constPlanes[] = {planes[0], planes[1], planes[2]};
    unsigned char *bytes = nullptr;
    unsigned long size = 0;
    QByteArray file;
    if (turbo && tjCompressFromYUVPlanes(turbo.get(), constPlanes, picture.width, nullptr,
                                         picture.height, picture.subsampling, &bytes, &size,
                                         rewriteQuality, TJFLAG_ACCURATEDCT) == 0)
        file = QByteArray(reinterpret_cast<const char *>(bytes), qsizetype(size));
    tjFree(bytes);
    return file;
}

QImage inColours(YccPicture &picture)
{
    const TurboHandle turbo(tjInitDecompress());
    auto planes = picture.data();
    const unsigned char *constPlanes[] = {planes[0], planes[1], planes[2]};
    QImage image(picture.width, picture.height, QImage::Format_RGB32);
    const bool isDecoded = turbo && !image.isNull() &&
                           tjDecodeYUVPlanes(turbo.get(), constPlanes, nullptr, picture.subsampling,
                                             image.bits(), image.width(), int(image.bytesPerLine()),
                                             image.height(), nativePixels, 0) == 0;
    return isDecoded ? image : QImage();
}

/// What a stored colour difference contributes to the new luma and to the new differences,
/// for each of its 256 values.
class MatrixChange
{
public:
    explicit MatrixChange(const LumaWeights &from)
    {
        // Red and blue less luma, in the old differences; green follows from the weights.
        const double red = 2 * (1 - from.red);
        const double blue = 2 * (1 - from.blue);
        const double green = 1 - from.red - from.blue;
        const auto newLuma = [&](double r, double b) {
            const double g = -(from.red * r + from.blue * b) / green;
            return bt601.red * r + (1 - bt601.red - bt601.blue) * g + bt601.blue * b;
        };
        const double newRed = 2 * (1 - bt601.red);
        const double newBlue = 2 * (1 - bt601.blue);
        const double fromBlue = newLuma(0, blue);
        const double fromRed = newLuma(red, 0);
        m_ofBlue = table(fromBlue, (blue - fromBlue) / newBlue, -fromBlue / newRed);
        m_ofRed = table(fromRed, -fromRed / newBlue, (red - fromRed) / newRed);
    }

    /// Luma itself passes unchanged through every change of matrix, so that a gray stays
    /// that gray; this is to be added to it.
    int luma(unsigned char cb, unsigned char cr) const { return whole(cb, cr, 0, 0); }
    int blue(unsigned char cb, unsigned char cr) const { return whole(cb, cr, 1, 128); }
    int red(unsigned char cb, unsigned char cr) const { return whole(cb, cr, 2, 128); }

private:
    /// Contributions in parts of 65536.
    using Table = std::array<std::array<int, 3>, 256>;

    static Table table(double luma, double blue, double red)
    {
        Table table;
        for (int value = 0; value < 256; ++value) {
            const double difference = (value - 128) * 65536.0;
            table[size_t(value)] = {int(std::lround(luma * difference)),
                                    int(std::lround(blue * difference)),
                                    int(std::lround(red * difference))};
        }
        return table;
    }

    int whole(unsigned char cb, unsigned char cr, size_t what, int centre) const
    {
        return centre + ((m_ofBlue[cb][what] + m_ofRed[cr][what] + 32768) >> 16);
    }

    Table m_ofBlue;
    Table m_ofRed;
};

unsigned char sample(int value)
{
    return static_cast<unsigned char>(std::clamp(value, 0, 255));
}

void change(YccPicture &picture, const MatrixChange &matrix)
{
    auto &[luma, blue, red] = picture.planes;
    std::vector<int> lumaChange(blue.samples.size());
    for (size_t at = 0; at < blue.samples.size(); ++at) {
        const unsigned char cb = blue.samples[at];
        const unsigned char cr = red.samples[at];
        lumaChange[at] = matrix.luma(cb, cr);
        blue.samples[at] = sample(matrix.blue(cb, cr));
        red.samples[at] = sample(matrix.red(cb, cr));
    }
    // The planes are padded to whole blocks, so that the quotients are exact.
    const int across = luma.width / blue.width;
    const int down = luma.height / blue.height;
    for (int y = 0; y < luma.height; ++y) {
        const int *changes = &lumaChange[size_t(y / down) * size_t(blue.width)];
        unsigned char *row = &luma.samples[size_t(y) * size_t(luma.width)];
        for (int x = 0; x < luma.width; ++x)
            row[x] = sample(row[x] + changes[x / across]);
    }
}

/// The picture is one of a working folder: it needs to be whole, not to outlive a power
/// cut, and a save file's wait for the disk would cost more than all the rest.
bool replaceFile(const QString &path, const QByteArray &content)
{
    QFile file(path + u".converted"_s);
    const bool isWritten = !content.isEmpty() && file.open(QIODevice::WriteOnly) &&
                           file.write(content) == content.size() && file.flush();
    file.close();
    std::error_code fault;
    if (isWritten)
        std::filesystem::rename(QFile::encodeName(file.fileName()).toStdString(),
                                QFile::encodeName(path).toStdString(), fault);
    if (isWritten && !fault)
        return true;
    file.remove();
    return false;
}

constexpr qsizetype startLength = 2;
const QByteArray startOfPicture = "\xff\xd8"_ba;
/// A comment follows, its length being told in two bytes, which count as well.
const QByteArray startOfComment = "\xff\xfe"_ba;
const QByteArray noteName = "matrix "_ba;

} // namespace

std::optional<LumaWeights> foreignMatrix(const SourceDico &source)
{
    // What is tone-mapped or stored as RGB is made BT.601 by the pass itself.
    if (usesMovieGrabber(source) || isHighDynamicRange(source) || isStoredWithoutMatrix(source))
        return std::nullopt;
    const QString name = read(source, Keys::v_matrix, 0).value_or(QString());
    if (name == "bt709"_L1)
        return bt709;
    if (name == "bt2020nc"_L1 || name == "bt2020c"_L1)
        return bt2020;
    if (name == "smpte240m"_L1)
        return smpte240m;
    return name.isEmpty() || name == "unknown"_L1 ? undescribedMatrix(source) : std::nullopt;
}

bool convertToJpegMatrix(const QString &picture, const LumaWeights &from)
{
    QFile file(picture);
    auto ycc = file.open(QIODevice::ReadOnly) ? decoded(file.readAll()) : std::nullopt;
    file.close();
    if (ycc)
        change(*ycc, MatrixChange(from));
    const bool isConverted = ycc && replaceFile(picture, encoded(*ycc));
    if (!isConverted)
        logLine(u"matrix not converted:-( '%@'", picture);
    return isConverted;
}

bool noteMatrix(const QString &picture, const LumaWeights &matrix)
{
    QFile file(picture);
    const QByteArray content = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    file.close();
    if (!content.startsWith(startOfPicture))
        return false;
    const QByteArray note =
        noteName + QByteArray::number(matrix.red) + ' ' + QByteArray::number(matrix.blue);
    const char length[] = {'\0', char(note.size() + 2)};
    return replaceFile(picture, startOfPicture + startOfComment + QByteArray(length, 2) + note +
                                    content.sliced(startLength));
}

std::optional<LumaWeights> notedMatrix(const QByteArray &jpeg)
{
    const QByteArray comment = startOfPicture + startOfComment;
    if (!jpeg.startsWith(comment) || jpeg.size() < comment.size() + 2)
        return std::nullopt;
    const qsizetype length = uchar(jpeg[comment.size() + 1]) - 2;
    const QByteArray note = jpeg.mid(comment.size() + 2, length);
    if (!note.startsWith(noteName))
        return std::nullopt;
    const QByteArrayList weights = note.sliced(noteName.size()).split(' ');
    return LumaWeights{weights.value(0).toDouble(), weights.value(1).toDouble()};
}

QImage pictureOfMatrix(const QByteArray &jpeg, const QSize &size, const LumaWeights &matrix)
{
    auto ycc = decoded(jpeg, size);
    if (!ycc)
        return {};
    change(*ycc, MatrixChange(matrix));
    return inColours(*ycc);
}

} // namespace vignar
