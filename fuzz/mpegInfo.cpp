#include "analysis/mpeginfoFunction.h"
#include "fuzzing.h"

#include <cstdlib>

using namespace vignar;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString path = fileOf(data, size);
    mpeginfoFunction::mpegInfoDico(path);
    mpegInfo reader;
    reader.readInformations(path);
    // The header once or, of a program stream, twice; then back and forth again; and at the end
    // of each packet a look ahead.
    if (reader.bytesRead() > qint64(4 * size + 4096))
        std::abort();
    return 0;
}
