#include "shell/sessionPreferences.h"

#include "settings/preferenceKeys.h"

#include <algorithm>

namespace vignar
{

SessionPreferences::SessionPreferences(std::unique_ptr<PreferenceStore> beneath)
    : m_beneath(std::move(beneath)), m_run(std::make_unique<MemoryPreferenceStore>())
{
}

PreferenceStore &SessionPreferences::storeOf(const QString &key) const
{
    const bool isOfRun =
        std::find(RunKeys::names.begin(), RunKeys::names.end(), key) != RunKeys::names.end();
    return isOfRun ? *m_run : *m_beneath;
}

QVariant SessionPreferences::value(const QString &key) const
{
    return storeOf(key).value(key);
}

QStringList SessionPreferences::keys() const
{
    return m_beneath->keys() + m_run->keys();
}

void SessionPreferences::setValue(const QString &key, const QVariant &value)
{
    // Choosing again what is chosen already need not wait for the disk.
    if (storeOf(key).value(key) != value)
        storeOf(key).setValue(key, value);
}

void SessionPreferences::removeValue(const QString &key)
{
    if (storeOf(key).value(key).isValid())
        storeOf(key).removeValue(key);
}

} // namespace vignar
