#pragma once

#include <QString>

namespace vignar
{

/// Says, for as long as the process lives, that it writes logs in a folder. The kernel
/// releases the lock with the process, however it ends.
class LogFolderLock
{
public:
    enum class Writers {
        /// No other process writes there: its logs may be rotated until join().
        onlyUs,
        /// Others write there, or the folder cannot be locked.
        others
    };

    LogFolderLock() = default;
    ~LogFolderLock();
    LogFolderLock(const LogFolderLock &) = delete;
    LogFolderLock &operator=(const LogFolderLock &) = delete;

    /// Tries to be the only one in the folder; a folder taken before is left.
    Writers enter(const QString &folder);
    /// Lets others in beside us. Waits while one of them rotates the logs.
    void join();

private:
    QString m_folder;
    int m_file = -1;
};

} // namespace vignar
