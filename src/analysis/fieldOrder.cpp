#include "analysis/fieldOrder.h"

#include "analysis/mediaClasses.h"
#include "classShared/sourceDico.h"
#include "settings/stringTables.h"

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

QString named(const QString &order)
{
    return localised(order, fieldsTable);
}

bool isProgressive(const Dico &record)
{
    return read(record, Keys::v_fields, 0) == named(u"PFF"_s);
}

/// DV of standard definition is always interlaced, bottom field first.
void correctDv(Dico &record, const QString &codec)
{
    const int height = read(record, Keys::v_height, 0).value_or(0);
    // ffmpeg calls every DV flavour by this name, those of high definition included.
    const bool isSmallDv = codec == u"dvvideo" && (height == 480 || height == 576);
    if ((isDvCodec(codec) || isSmallDv) && isProgressive(record))
        write(record, Keys::v_fields, 0, named(u"BFF"_s));
}

void measureAppleIntermediate(Dico &record, const QString &codec,
                              const std::function<QString()> &measure)
{
    if (!isAppleIntermediateCodec(codec) || !isProgressive(record) || !measure)
        return;
    if (const QString measured = measure(); !measured.isNull())
        write(record, Keys::v_fields, 0, measured);
}

void guessMotionJpeg(Dico &record, const QString &codec, bool isMovieFrameworkOnly)
{
    if (!isMotionJpegCodec(codec) && codec != u"none")
        return;
    const int width = read(record, Keys::v_width, 0).value_or(0);
    const int height = read(record, Keys::v_height, 0).value_or(0);
    if (height == 720 || height == 540 || (width == 640 && height == 480))
        write(record, Keys::v_fields, 0, named(u"PFF"_s));
    if (!record.contains(Keys::v_fields(0)) && isMovieFrameworkOnly)
        write(record, Keys::v_fields, 0, named(u"TFF"_s));
}

} // namespace

void correctFieldOrder(Dico &record, const FieldOrderContext &context)
{
    const QString codec = read(record, Keys::v_codec, 0).value_or(QString()).toLower();
    correctDv(record, codec);
    measureAppleIntermediate(record, codec, context.measure);
    guessMotionJpeg(record, codec, context.isMovieFrameworkOnly);
}

} // namespace vignar
