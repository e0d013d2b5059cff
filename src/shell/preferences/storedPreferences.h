#pragma once

#include "classShared/keys.h"

#include <QStringList>

namespace vignar
{

/// The values that are stored of these preferences, each only where one is stored.
Dico storedPreferences(const QStringList &keys);

/// True when each of the preferences has its factory setting, stored or not.
bool areDefaults(const QStringList &keys);

/// Forgets what is stored of some preferences, and can bring it back.
class RestoredDefaults
{
public:
    /// Restores the factory settings at once.
    explicit RestoredDefaults(const QStringList &keys);

    const QStringList &keys() const { return m_keys; }
    /// Stores the values of before again, but for those of preferences that have been
    /// changed since.
    void undo() const;

private:
    QStringList m_keys;
    Dico m_before;
};

} // namespace vignar
