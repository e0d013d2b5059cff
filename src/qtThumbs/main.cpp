// Grabs frames of a movie through the platform's movie framework:
//
//   qtThumbs -i MOVIE -w WIDTH -h HEIGHT [-tc TIMECODE[-TIMECODE]…] [-y] -o FOLDER
//
// Exit status: 0 every picture was written, 1 some was not, 2 wrong arguments. What it
// does is told on standard error.

#include "app/frameGrabber.h"
#include "classShared/lineLog.h"

#include <QCommandLineParser>
#include <QCoreApplication>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

enum ExitStatus { allWritten = 0, someFailed = 1, wrongArguments = 2 };

const QCommandLineOption source{u"i"_s, {}, u"movie"_s};
const QCommandLineOption width{u"w"_s, {}, u"pixels"_s};
const QCommandLineOption height{u"h"_s, {}, u"pixels"_s};
const QCommandLineOption timecodes{u"tc"_s, {}, u"timecodes"_s};
const QCommandLineOption overwrite{u"y"_s};
const QCommandLineOption folder{u"o"_s, {}, u"folder"_s};

FrameRequest requestOf(const QCommandLineParser &arguments)
{
    FrameRequest request;
    request.source = arguments.value(source);
    request.folder = arguments.value(folder);
    request.size = {arguments.value(width).toInt(), arguments.value(height).toInt()};
    request.timecodes = arguments.value(timecodes).split(u'-', Qt::SkipEmptyParts);
    request.isOverwrite = arguments.isSet(overwrite);
    return request;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser arguments;
    arguments.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    arguments.addOptions({source, width, height, timecodes, overwrite, folder});
    const bool isParsed = arguments.parse(QCoreApplication::arguments());
    const FrameRequest request = requestOf(arguments);
    if (!isParsed || request.source.isEmpty() || request.folder.isEmpty() ||
        request.size.isEmpty()) {
        writeLogLine(isParsed ? u"qtThumbs: -i, -w, -h and -o are needed"_s
                              : u"qtThumbs: "_s + arguments.errorText());
        return wrongArguments;
    }
    const std::unique_ptr<MovieFramework> framework = makeAbsentMovieFramework();
    return grabFrames(*framework, request) ? allWritten : someFailed;
}
