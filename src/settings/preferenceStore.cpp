#include "settings/preferenceStore.h"

namespace vignar
{

MemoryPreferenceStore::MemoryPreferenceStore(Dico values) : m_values(std::move(values)) {}

QVariant MemoryPreferenceStore::value(const QString &key) const
{
    const std::lock_guard lock(m_mutex);
    return m_values.value(key);
}

QStringList MemoryPreferenceStore::keys() const
{
    const std::lock_guard lock(m_mutex);
    return m_values.keys();
}

void MemoryPreferenceStore::setValue(const QString &key, const QVariant &value)
{
    const std::lock_guard lock(m_mutex);
    m_values.insert(key, value);
}

void MemoryPreferenceStore::removeValue(const QString &key)
{
    const std::lock_guard lock(m_mutex);
    m_values.remove(key);
}

namespace
{

std::unique_ptr<PreferenceStore> &storeInUse()
{
    static std::unique_ptr<PreferenceStore> store = std::make_unique<MemoryPreferenceStore>();
    return store;
}

} // namespace

PreferenceStore &sharedPreferenceStore()
{
    return *storeInUse();
}

void setSharedPreferenceStore(std::unique_ptr<PreferenceStore> store)
{
    storeInUse() = store ? std::move(store) : std::make_unique<MemoryPreferenceStore>();
}

} // namespace vignar
