#include "settings/logFolderLock.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

namespace vignar
{
using namespace Qt::StringLiterals;

namespace
{

/// Locks that belong to the open file convert from exclusive to shared in one step,
/// which leaves no gap in which a second process could rotate again.
bool lockFile(int file, short kind, int command)
{
    struct flock whole {
    };
    whole.l_type = kind;
    whole.l_whence = SEEK_SET;
    return fcntl(file, command, &whole) == 0;
}

} // namespace

LogFolderLock::~LogFolderLock()
{
    if (m_file >= 0)
        close(m_file);
}

LogFolderLock::Writers LogFolderLock::enter(const QString &folder)
{
    if (m_file < 0 || folder != m_folder) {
        if (m_file >= 0)
            close(m_file);
        const QByteArray path = QFile::encodeName(folder + u"/.lock"_s);
        m_file = open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        m_folder = folder;
    }
    const bool isAlone = m_file >= 0 && lockFile(m_file, F_WRLCK, F_OFD_SETLK);
    return isAlone ? Writers::onlyUs : Writers::others;
}

void LogFolderLock::join()
{
    if (m_file >= 0)
        lockFile(m_file, F_RDLCK, F_OFD_SETLKW);
}

} // namespace vignar
