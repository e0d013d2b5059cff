#include "settings/preferenceStore.h"

namespace vignar
{

MemoryPreferenceStore::MemoryPreferenceStore(Dico values) : m_values(std::move(values)) {}

QVariant MemoryPreferenceStore::value(const QString &key) const
{
    return m_values.value(key);
}

QStringList MemoryPreferenceStore::keys() const
{
    return m_values.keys();
}

void MemoryPreferenceStore::setValue(const QString &key, const QVariant &value)
{
    m_values.insert(key, value);
}

void MemoryPreferenceStore::removeValue(const QString &key)
{
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
