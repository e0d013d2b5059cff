#include "settings/preferenceFile.h"
#include "fuzzing.h"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    vignar::readPreferenceFile(fileOf(data, size), vignar::BrokenFile::leave);
    return 0;
}
