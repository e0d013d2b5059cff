#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QString>

namespace vignar
{

/// What every search answers when the pattern does not occur: the largest signed
/// 32-bit value, also for file offsets.
inline constexpr qint64 dataNotFound = 2147483647;

/// Two characters make one byte, the first the high four bits; nothing is validated.
/// Precondition: an even length; an odd one ends the process, in every build.
QByteArray toDataFromHexString(const QString &text);

/// Offset of the first occurrence, or dataNotFound (also for an empty pattern).
qint64 offsetOfData(const QByteArray &data, const QByteArray &pattern);

/// Overwrites the first occurrence in place with the replacement's bytes: the length
/// of the data does not change, and where the replacement is shorter the pattern's
/// tail stays. Returns the offset, or dataNotFound.
qint64 replaceData(QByteArray &data, const QByteArray &pattern, const QByteArray &replacement);

/// Repeats replaceData() until nothing is found; returns how many were overwritten.
/// Precondition: the replacement does not make the pattern occur again (the count is
/// bounded by the length of the data, so that even then the call ends).
int replaceAllData(QByteArray &data, const QByteArray &pattern, const QByteArray &replacement);

/// Absolute offset of the first occurrence in the device, read from its start in
/// chunks of the pattern's length plus 2,000,000 bytes; the device's position is the
/// same afterwards.
qint64 offsetOfData_NSFileHandle(QIODevice &device, const QByteArray &pattern);

} // namespace vignar
