#include "settings/stringTables.h"
#include "fuzzing.h"

using namespace vignar;
using namespace Qt::StringLiterals;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString path = fileOf(data, size);
    parseStrings(readStringsFile(path));
    str2LocalisationTitle(u"Film"_s, path);
    return 0;
}
