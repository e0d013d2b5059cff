#pragma once

#include "settings/preferenceStore.h"

namespace vignar
{

/// The user's preferences in the store beneath, and the marks of the run (RunKeys) in
/// memory: they change many times a second, and nothing of them outlives the process.
class SessionPreferences : public PreferenceStore
{
public:
    explicit SessionPreferences(std::unique_ptr<PreferenceStore> beneath);

    QVariant value(const QString &key) const override;
    QStringList keys() const override;
    void setValue(const QString &key, const QVariant &value) override;
    void removeValue(const QString &key) override;
    bool hasUnappliedChanges() const override { return m_beneath->hasUnappliedChanges(); }

private:
    PreferenceStore &storeOf(const QString &key) const;

    std::unique_ptr<PreferenceStore> m_beneath;
    std::unique_ptr<PreferenceStore> m_run;
};

} // namespace vignar
