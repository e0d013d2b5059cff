#pragma once

#include "settings/preferenceKeys.h"
#include "settings/preferenceRanges.h"

#include <QVariant>

namespace vignar
{

/// Free access to the shared store. A null key gives the failure result.
///
/// The stored object, or an invalid value when absent.
QVariant prefRead(const QString &key);

/// The stored value as text, "" when absent.
QString prefReadStr(const QString &key);

/// 1, or 0 for a null key.
int prefWriteBool(const QString &key, bool flag);

/// 1, or 0 when key or object is null.
int prefWrite(const QString &key, const QVariant &object);

/// Removes the key when present; always 1.
int prefDelete(const QString &key);

/// Replaces the whole value of a key; 0 when key or object is null, else 1.
int prefWriteDico(const QString &key, const QVariant &object);

/// Sets one entry of a dictionary value, which is made when absent; 0 when any
/// argument is null, else 1.
int prefWriteChildDico(const QString &key, const QString &childKey, const QVariant &value);

/// Removes one entry of a dictionary value; 1.
int prefDeleteChildDico0(const QString &key, const QString &childKey);

/// The factory settings, built anew at each call.
Dico prefDefaults();

/// A property-list file (XML, up to 16 MiB) as a dictionary; nothing when it cannot be
/// read. A numeric "Birthdate" reads as 1564.0.
std::optional<Dico> readPlist(const QString &path);

/// The stored value converted to its type, or nothing.
template <class T>
std::optional<T> prefStored(const Key<T> &key)
{
    return read(Dico{{key, prefRead(key)}}, key);
}

/// The stored value brought into its range, or the factory default where nothing that
/// converts is stored.
template <class T>
T prefValue(const Key<T> &key)
{
    const Dico stored{{key, valueInRange(key, prefRead(key))}};
    if (const auto value = read(stored, key))
        return *value;
    return read(prefDefaults(), key).value_or(T{});
}

} // namespace vignar
