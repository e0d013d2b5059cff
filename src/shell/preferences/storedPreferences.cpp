#include "shell/preferences/storedPreferences.h"

#include "settings/preferences.h"

#include <algorithm>

namespace vignar
{

Dico storedPreferences(const QStringList &keys)
{
    Dico stored;
    for (const QString &key : keys) {
        if (const QVariant value = prefRead(key); value.isValid())
            stored.insert(key, value);
    }
    return stored;
}

bool areDefaults(const QStringList &keys)
{
    const Dico stored = storedPreferences(keys);
    const Dico defaults = prefDefaults();
    return std::all_of(stored.keyBegin(), stored.keyEnd(), [&](const QString &key) {
        // Numbers and texts of numbers are the same value.
        return stored.value(key).toString() == defaults.value(key).toString();
    });
}

RestoredDefaults::RestoredDefaults(const QStringList &keys)
    : m_keys(keys), m_before(storedPreferences(keys))
{
    for (const QString &key : m_keys)
        prefDelete(key);
}

void RestoredDefaults::undo() const
{
    for (auto value = m_before.cbegin(); value != m_before.cend(); ++value) {
        if (!prefRead(value.key()).isValid())
            prefWrite(value.key(), value.value());
    }
}

} // namespace vignar
