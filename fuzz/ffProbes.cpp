#include "analysis/ffProbes.h"
#include "fuzzing.h"

using namespace vignar;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(bytesOf(data, size));
    ptsDtsOffsetMs(text);
    isFfmpegVsyncText(text);
    idetFieldOrder(text);
    durationM2vFromText(text);
    formatOfFileType(text);
    forceFormatLite(text);
    isMpegTsText(text);
    ffRevisionOfText(text);
    return 0;
}
