#pragma once

#include <QString>

namespace vignar
{

/// A byte count in the unit "K", "M" or "G" (1024-based, case ignored; a null unit
/// means "K"); any other unit, and a count of 0 or less, gives the count itself.
float poidsConvert(qint64 bytes, const QString &unit);

/// Size of a file or folder in a unit ("o" or null: bytes), or -1.0 when it cannot
/// be read. A folder is summed up in the units "G", "M", "K", "o" and "B" only: without
/// one the size is that of its own entry in the file system.
float poidsFile(const QString &path, const QString &unit);

/// As poidsFile() for a file, read through the C stream library.
float poidsFileC(const QString &path, const QString &unit);

/// Video bit rate in kb/s that keeps a movie of the given seconds (> 0) below the
/// given megabytes, 192 kb/s being left for the sound.
int bitrateLimited(float duration, int maxMegabytes);

/// Estimated weight of what a batch row writes, in megabytes: always 1.0.
double encDstPoidsEstimatif();

} // namespace vignar
