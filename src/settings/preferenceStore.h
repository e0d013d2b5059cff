#pragma once

#include "classShared/keys.h"

#include <QStringList>

#include <memory>
#include <mutex>

namespace vignar
{

/// Keys to numbers, texts, lists and dictionaries. Changed on the main thread only, read on
/// any.
class PreferenceStore
{
public:
    virtual ~PreferenceStore() = default;

    /// Invalid when absent.
    virtual QVariant value(const QString &key) const = 0;
    virtual QStringList keys() const = 0;
    virtual void setValue(const QString &key, const QVariant &value) = 0;
    virtual void removeValue(const QString &key) = 0;
    /// True while changes wait that could not be written to where they are kept.
    virtual bool hasUnappliedChanges() const { return false; }
};

/// Keeps everything in memory and nothing else.
class MemoryPreferenceStore : public PreferenceStore
{
public:
    explicit MemoryPreferenceStore(Dico values = {});

    QVariant value(const QString &key) const override;
    QStringList keys() const override;
    void setValue(const QString &key, const QVariant &value) override;
    void removeValue(const QString &key) override;

private:
    Dico m_values;
    mutable std::mutex m_mutex;
};

/// The store that the free functions of preferences.h use; a MemoryPreferenceStore
/// until a program sets another, while nothing reads on other threads; null restores one.
PreferenceStore &sharedPreferenceStore();
void setSharedPreferenceStore(std::unique_ptr<PreferenceStore> store);

} // namespace vignar
