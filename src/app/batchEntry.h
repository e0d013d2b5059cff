#pragma once

#include "classShared/sourceDico.h"

#include <QImage>

namespace vignar
{

/// One row of the batch list.
using BatchEntry = Dico;

namespace RowKeys
{

/// Position from 1.
inline constexpr Key<int> order{"order"};
/// Name of the marker's image, one of Puces.
inline constexpr Key<QString> resultat{"resultat"};
inline constexpr Key<Dico> dico{"dico"};
/// Caption: file name, picture, duration on three lines.
inline constexpr Key<QString> src{"src"};
/// Poster; absent when it did not load.
inline constexpr Key<QImage> img{"img"};

} // namespace RowKeys

/// The result markers: waiting, being made, made, failed.
namespace Puces
{

inline constexpr QLatin1String puce{"puce"};
inline constexpr QLatin1String puceCurrent{"puceCurrent"};
inline constexpr QLatin1String puceSuccess{"puceSuccess"};
inline constexpr QLatin1String puceFailure{"puceFailure"};

} // namespace Puces

/// "clip.mp4", "(1920x)1080p25", "0h01'30\"" on three lines.
QString rowCaption(const SourceDico &dico);

/// The row of an analysed source, its poster loaded from Keys::imgPathStr.
BatchEntry makeBatchEntry(const SourceDico &dico, int order, int layout, int format);

} // namespace vignar
