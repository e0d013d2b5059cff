#pragma once

#include "app/sourceFiles.h"

#include <QList>
#include <QStringList>

namespace vignar
{

/// An argument that names no video, and why.
struct RefusedArgument {
    QString source;
    QString reason;
};

/// The arguments as the batch takes them: files as absolute paths without repeats,
/// folders replaced by the videos under them.
struct SourceArguments {
    QStringList files;
    QList<RefusedArgument> refused;
    /// What lies under the folders and could not be searched.
    QList<UnreadEntry> unread;
};

/// Takes arguments in the form of argumentText().
SourceArguments expandSources(const QStringList &arguments);

} // namespace vignar
