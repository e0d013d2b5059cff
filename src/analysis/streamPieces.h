#pragma once

#include "classShared/sourceDico.h"

#include <QStringView>

#include <span>

namespace vignar
{

/// One piece of a stream line, and what the rules need beside it.
struct StreamPiece {
    QStringView text;
    int number = 0;
    /// Pictures per second on average, as the line states them; 0: it does not.
    double averageRate = 0;
};

/// The first rule that answers true has dealt with the piece.
using PieceRule = bool (*)(const StreamPiece &piece, Dico &infos);

void applyFirst(std::span<const PieceRule> rules, const StreamPiece &piece, Dico &infos);

/// What the pieces that name a stream and its codec are called for one type.
struct StreamNaming {
    StreamKey<int> id;
    StreamKey<QString> lang;
    StreamKey<QString> codec;
    /// What stands before the codec: "Video: ".
    QStringView codecMark;
};

/// True for a piece that names the stream, its codec or both: the number and language
/// after "Stream #", the codec's name without profile and tag.
bool readNaming(const StreamPiece &piece, const StreamNaming &naming, Dico &infos);
/// True for a piece that states a bit rate; one of 0 is not stored.
bool readBitrate(const StreamPiece &piece, const StreamKey<int> &key, Dico &infos);

} // namespace vignar
