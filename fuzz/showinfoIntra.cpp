#include "analysis/ffReport.h"
#include "fuzzing.h"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    vignar::showinfoIntra(QString::fromUtf8(bytesOf(data, size)));
    return 0;
}
