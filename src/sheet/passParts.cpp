#include "sheet/passParts.h"

#include "sheet/extractionPasses.h"

namespace vignar
{

using namespace Qt::StringLiterals;

PassParts takenApart(const QStringList &pass)
{
    const qsizetype input = pass.indexOf(u"-i"_s);
    PassParts parts{.tool = pass.value(0),
                    .input = pass.mid(1, input - 1),
                    .source = pass.value(input + 1),
                    .output = pass.mid(input + 2, pass.size() - input - 3),
                    .path = pass.constLast()};
    if (const qsizetype level = parts.input.indexOf(u"-loglevel"_s); level >= 0)
        parts.input.remove(level, 2);
    if (const qsizetype seek = parts.input.indexOf(u"-ss"_s); seek >= 0)
        parts.instant = parts.input.value(seek + 1).toDouble();
    if (const qsizetype map = parts.output.indexOf(u"-map"_s); map >= 0) {
        parts.stream = parts.output.mid(map, 2);
        parts.output.remove(map, 2);
    }
    return parts;
}

QString filterOf(const QStringList &output)
{
    return output.value(output.indexOf(u"-vf"_s) + 1);
}

double durationOf(const PassParts &pass)
{
    return pass.output.value(pass.output.indexOf(u"-t"_s) + 1).toDouble();
}

bool isOnlySought(const PassParts &pass)
{
    return pass.input.size() == 2 && pass.input.constFirst() == u"-ss";
}

bool selectsIntraPictures(const QStringList &pass)
{
    return pass.contains(u"-i"_s) && withoutIntraSelection(pass) != pass;
}

} // namespace vignar
