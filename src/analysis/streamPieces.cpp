#include "analysis/streamPieces.h"

#include "analysis/ffReportStreams.h"
#include "analysis/mediaClasses.h"
#include "analysis/reportText.h"
#include "classShared/lineLog.h"

namespace vignar
{

namespace
{

void readIdentity(const StreamPiece &piece, const StreamNaming &naming, Dico &infos)
{
    const QList<QStringView> fields = piece.text.split(u':');
    if (fields.size() < 2)
        return;
    const QStringView stream = fields.at(1);
    write(infos, naming.id, piece.number, leadingInt(textBefore(stream, u"[")));
    if (stream.contains(u'(') && stream.contains(u')'))
        write(infos, naming.lang, piece.number,
              textBefore(textAfter(stream, u"("), u")").toString());
}

void readCodec(const StreamPiece &piece, const StreamNaming &naming, Dico &infos)
{
    const QString name = ffInfosCodecParser(textAfter(piece.text, naming.codecMark).toString());
    write(infos, naming.codec, piece.number, textBefore(name, u" (").toString());
}

} // namespace

void applyFirst(std::span<const PieceRule> rules, const StreamPiece &piece, Dico &infos)
{
    for (const PieceRule rule : rules) {
        if (rule(piece, infos))
            return;
    }
}

bool readNaming(const StreamPiece &piece, const StreamNaming &naming, Dico &infos)
{
    const bool isStream = piece.text.contains(u"Stream #");
    const bool isCodec = piece.text.contains(naming.codecMark);
    if (isStream)
        readIdentity(piece, naming, infos);
    if (isCodec)
        readCodec(piece, naming, infos);
    return isStream || isCodec;
}

bool readBitrate(const StreamPiece &piece, const StreamKey<int> &key, Dico &infos)
{
    if (!piece.text.contains(u" kb/s"))
        return false;
    if (const int bitrate = leadingInt(textBefore(piece.text, u" kb/s")); bitrate >= 1)
        write(infos, key, piece.number, bitrate);
    return true;
}

QString ffInfosCodecParser(const QString &codec)
{
    logVerbose(u"ffParseItunesDRMcod…: str=%@", codec);
    const QString tag = drmTagIn(codec);
    if (tag.isNull())
        return codec;
    QStringView name = codec;
    if (name.startsWith(u"none") || name.startsWith(u"aac")) {
        if (name.contains(u" ("))
            name = textAfter(name, u" (");
        name = textBefore(name, u" /");
    }
    if (name.size() == 4)
        return name.toString();
    logLine(u"ffInfosCodecParser  : %@", name);
    return tag;
}

} // namespace vignar
