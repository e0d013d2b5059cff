#include "classShared/byteSearch.h"

#include "classShared/lineLog.h"

#include <algorithm>

namespace vignar
{

namespace
{

/// The digit's value for "0" to "9" and "A" to "F" in either case.
uint hexDigit(QChar character)
{
    const uint code = character.toUpper().unicode();
    return code < u'A' ? code - u'0' : code - u'A' + 10;
}

} // namespace

QByteArray toDataFromHexString(const QString &text)
{
    if (text.size() % 2 != 0)
        qFatal("toDataFromHexString: String length is odd !");
    QByteArray data;
    data.reserve(text.size() / 2);
    for (qsizetype i = 0; i < text.size(); i += 2)
        data += static_cast<char>(16 * hexDigit(text.at(i)) + hexDigit(text.at(i + 1)));
    return data;
}

qint64 offsetOfData(const QByteArray &data, const QByteArray &pattern)
{
    const qsizetype offset = pattern.isEmpty() ? -1 : data.indexOf(pattern);
    return offset < 0 ? dataNotFound : offset;
}

qint64 replaceData(QByteArray &data, const QByteArray &pattern, const QByteArray &replacement)
{
    logLine(u"replaceData");
    const qint64 offset = offsetOfData(data, pattern);
    if (offset != dataNotFound) {
        const qsizetype room = data.size() - offset;
        std::copy_n(replacement.cbegin(), qMin(replacement.size(), room), data.begin() + offset);
    }
    return offset;
}

int replaceAllData(QByteArray &data, const QByteArray &pattern, const QByteArray &replacement)
{
    logLine(u"replaceAllData");
    // A replacement that brings the pattern back would never end; no other one can be
    // made more often than there are bytes.
    int count = 0;
    while (count < data.size() && replaceData(data, pattern, replacement) != dataNotFound)
        ++count;
    return count;
}

qint64 offsetOfData_NSFileHandle(QIODevice &device, const QByteArray &pattern)
{
    constexpr qint64 chunkBeyondPattern = 2000000;
    if (pattern.isEmpty() || !device.isReadable())
        return dataNotFound;
    const qint64 position = device.pos();
    const qint64 chunkSize = pattern.size() + chunkBeyondPattern;

    qint64 found = dataNotFound;
    qint64 windowStart = 0;
    QByteArray window;
    bool isMore = device.seek(0);
    while (isMore && found == dataNotFound) {
        const QByteArray chunk = device.read(chunkSize);
        isMore = !chunk.isEmpty();
        window += chunk;
        const qint64 offset = offsetOfData(window, pattern);
        if (offset != dataNotFound)
            found = windowStart + offset;
        // The last bytes may be the beginning of a match that ends in the next chunk.
        const qsizetype done = qMax<qsizetype>(0, window.size() - (pattern.size() - 1));
        window.remove(0, done);
        windowStart += done;
    }
    device.seek(position);
    return found;
}

} // namespace vignar
