#include "settings/propertyList.h"
#include "fuzzing.h"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    vignar::parsePropertyList(bytesOf(data, size));
    return 0;
}
