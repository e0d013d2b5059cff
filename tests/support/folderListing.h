#pragma once

#include <QDir>
#include <QDirIterator>
#include <QStringList>

namespace vignar
{

/// Everything under the folder, hidden entries too, relative to it and sorted.
inline QStringList filesUnder(const QString &folder)
{
    QStringList names;
    QDirIterator walk(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext())
        names.append(QDir(folder).relativeFilePath(walk.next()));
    names.sort();
    return names;
}

} // namespace vignar
