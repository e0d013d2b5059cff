#include "app/decodedFrames.h"

#include "settings/stringTables.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

QByteArray frameHeader(const QString &path)
{
    // A header of this format is one short line; more would be no header.
    constexpr qint64 headerLimit = 512;
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readLine(headerLimit) : QByteArray();
}

} // namespace

DecodedPicture pictureOfFrames(const QString &path)
{
    return decodedPictureOf(QString::fromLatin1(frameHeader(path)));
}

QString fieldOrderOfFrames(const QString &path)
{
    static const QRegularExpression mark(u" I([tbp])"_s);
    const QString letter = mark.match(QString::fromLatin1(frameHeader(path))).captured(1);
    if (letter.isEmpty())
        return {};
    const QString name = letter == u"t" ? u"TFF"_s : letter == u"b" ? u"BFF"_s : u"PFF"_s;
    return localised(name, fieldsTable);
}

bool holdsDecodedFrame(const QString &path)
{
    const QByteArray header = frameHeader(path);
    static const QRegularExpression size(u"^YUV4MPEG2 W(\\d+) H(\\d+) "_s);
    const QRegularExpressionMatch match = size.match(QString::fromLatin1(header));
    const qint64 luma = match.captured(1).toLongLong() * match.captured(2).toLongLong();
    return luma > 0 && QFileInfo(path).size() >= header.size() + luma * 3 / 2;
}

} // namespace vignar
