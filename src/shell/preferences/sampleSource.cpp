#include "shell/preferences/sampleSource.h"

#include "classShared/format.h"
#include "settings/stringTables.h"

#include <QStandardPaths>

namespace vignar
{

using namespace Qt::StringLiterals;

SourceDico sampleSource()
{
    SourceDico source;
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    write(source, Keys::srcPathStr, folder + u'/' + localised(u"V_preview_sample"_s) + u".mp4"_s);
    write(source, Keys::w_duration, 5423.0);
    write(source, Keys::wrapper, u"mp4"_s);
    write(source, Keys::v_width, 0, 1920);
    write(source, Keys::v_height, 0, 1080);
    write(source, Keys::v_dar, 0, u"16:9"_s);
    write(source, Keys::v_fps, 0, 25.0);
    write(source, Keys::v_codec, 0, u"h264"_s);
    write(source, Keys::a_codec, 0, u"aac"_s);
    return source;
}

void completeSampleTexts(Dico &display)
{
    write(display, Keys::date, u"2024-06-21"_s);
    write(display, Keys::comment, localised(u"V_preview_comment"_s));
    write(display, Keys::poids, filled(u"1.87 G%@", localised(u"D_byte"_s)));
}

} // namespace vignar
