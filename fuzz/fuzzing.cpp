#include "fuzzing.h"

#include "classShared/lineLog.h"

#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    vignar::setLogSink([](const QString &) {});
    return 0;
}

QByteArray bytesOf(const std::uint8_t *data, std::size_t size)
{
    return QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
}

QString fileOf(const std::uint8_t *data, std::size_t size)
{
    static const int descriptor = memfd_create("input", MFD_CLOEXEC);
    if (ftruncate(descriptor, 0) != 0 || pwrite(descriptor, data, size, 0) != ssize_t(size))
        std::abort(); // Without its input the fuzzer would search in vain.
    return QStringLiteral("/proc/self/fd/%1").arg(descriptor);
}
