#pragma once

#include "analysis/movieFramework.h"

#include <QSize>
#include <QString>
#include <QStringList>

namespace vignar
{

/// What is grabbed from a movie, and where it goes.
struct FrameRequest {
    QString source;
    /// An existing folder.
    QString folder;
    /// Pixels; a frame of another shape is stretched to them.
    QSize size;
    /// Instants in order; empty: one picture a little after the start.
    QStringList timecodes;
    /// Name of the picture; null: "img00.jpg", "img01.jpg", ….
    QString fileName;
    /// Whether pictures that are there already are replaced; else they count as failures.
    bool isOverwrite = true;
};

/// Takes the frames that a movie shows at the instants and writes them as pictures. A
/// frame that fails leaves its picture out; the others are taken all the same. True when
/// every picture was written.
bool grabFrames(MovieFramework &framework, const FrameRequest &request);

/// Proves that a movie can be decoded: writes its first frame as "qtcompliant.jpg".
bool grabTestFrame(MovieFramework &framework, const QString &source, const QString &folder,
                   const QSize &size);

} // namespace vignar
