#include "fuzzing.h"
#include "sheet/intraSearch.h"
#include "sheet/matroskaIndex.h"
#include "sheet/mp4Index.h"

#include <cstdlib>

using namespace vignar;

namespace
{

std::unique_ptr<QFile> opened(const QString &path)
{
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        std::abort();
    return file;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString path = fileOf(data, size);
    for (const auto read : {&Mp4Index::read, &MatroskaIndex::read}) {
        const auto index = read(opened(path));
        for (const double instant : {0.0, 0.05, 0.1, 3.0, 1e6}) {
            if (index)
                intraPictureAt(*index, instant, 12);
        }
    }
    return 0;
}
