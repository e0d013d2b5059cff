#pragma once

#include "classShared/result.h"
#include "settings/preferenceStore.h"

namespace vignar
{

/// What becomes of a file that is no JSON object or exceeds preferenceFileLimit: moved
/// aside to "<path>.broken" ("<path>.broken-2", … where that exists), for the owner of
/// the file; or left where it is.
enum class BrokenFile { keepAside, leave };

/// Bytes of the largest preference file that is read.
inline constexpr qint64 preferenceFileLimit = 16 * 1024 * 1024;

/// What a preference file holds; empty when it is absent, broken or not readable, the
/// last two with one log line. Whole numbers read as int, or qint64 beyond its range.
Dico readPreferenceFile(const QString &path, BrokenFile broken);

/// The user's preferences in one JSON file, written atomically at each change.
///
/// Several processes may hold the same file: under a lock each change is applied to
/// what the file holds at that moment, so that a value written by one is not lost to
/// another. While the file cannot be written (logged once) or its lock cannot be had
/// within two seconds, changes live in memory; the next change tries again for all.
class FilePreferenceStore : public PreferenceStore
{
public:
    explicit FilePreferenceStore(QString path);

    QVariant value(const QString &key) const override;
    QStringList keys() const override;
    void setValue(const QString &key, const QVariant &value) override;
    void removeValue(const QString &key) override;
    bool hasUnappliedChanges() const override { return !m_unapplied.isEmpty(); }

private:
    void change(const QString &key, const QVariant &value);
    Result<void> applyToFile();

    QString m_path;
    Dico m_values;
    /// Held for m_values alone, never while the disk is waited for.
    mutable std::mutex m_mutex;
    /// Changes that the file does not hold yet; an invalid value removes its key.
    Dico m_unapplied;
    bool m_isFailureTold = false;
};

/// The per-user file: "Vignar/preferences.json" in the XDG configuration folder.
QString defaultPreferenceFilePath();

} // namespace vignar
