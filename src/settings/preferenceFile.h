#pragma once

#include "settings/preferenceStore.h"

namespace vignar
{

/// What a preference file holds; empty when it is absent. A file that is no JSON
/// object is moved aside to "<path>.broken" (only by the owner of the file: see
/// keepBrokenAside) and one line is logged.
enum class BrokenFile { keepAside, leave };
Dico readPreferenceFile(const QString &path, BrokenFile broken);

/// The user's preferences in one JSON file, written atomically at each change.
///
/// Several processes may hold the same file: under a lock each change is applied to
/// what the file holds at that moment, so that a value written by one is not lost to
/// another. A file that cannot be written is logged once; the values then live in
/// memory.
class FilePreferenceStore : public PreferenceStore
{
public:
    explicit FilePreferenceStore(QString path);

    QVariant value(const QString &key) const override;
    QStringList keys() const override;
    void setValue(const QString &key, const QVariant &value) override;
    void removeValue(const QString &key) override;

private:
    QString m_path;
    Dico m_values;
};

/// The per-user file: "Vignar/preferences.json" in the XDG configuration folder.
QString defaultPreferenceFilePath();

} // namespace vignar
