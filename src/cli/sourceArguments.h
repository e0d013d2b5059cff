#pragma once

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
};

SourceArguments expandSources(const QStringList &arguments);

} // namespace vignar
