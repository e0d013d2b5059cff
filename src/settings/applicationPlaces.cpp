#include "settings/applicationPlaces.h"

#include <QDir>
#include <QFileInfo>

namespace vignar
{
using namespace Qt::StringLiterals;

namespace
{

/// The folder that the environment names. A relative path counts as unset, as the XDG
/// base directory rules ask.
QString xdgFolder(const char *variable, const QString &fallbackInHome)
{
    const QString folder = qEnvironmentVariable(variable);
    return QDir::cleanPath(QDir::isAbsolutePath(folder) ? folder
                                                        : QDir::home().filePath(fallbackInHome));
}

QString resourcesBesideProgram()
{
    // Asked of the kernel, because the places are wanted before there is an application
    // object: its first complaints belong into the log.
    const QFileInfo program(QFileInfo(u"/proc/self/exe"_s).symLinkTarget());
    const QDir folder(program.path() + u"/../share/vignar"_s);
    return folder.exists() ? folder.canonicalPath() : QDir::cleanPath(folder.path());
}

class LinuxPlaces : public ApplicationPlaces
{
public:
    explicit LinuxPlaces(const QString &logSubfolder)
        : m_resources(resourcesBesideProgram()),
          m_support(ours(xdgFolder("XDG_DATA_HOME", u".local/share"_s))),
          m_preferences(ours(xdgFolder("XDG_CONFIG_HOME", u".config"_s))),
          m_logs(ours(xdgFolder("XDG_STATE_HOME", u".local/state"_s)))
    {
        if (!logSubfolder.isEmpty())
            m_logs += u'/' + logSubfolder;
    }

    QString resourceFolder() const override { return m_resources; }
    QString supportFolder() const override { return m_support; }
    QString preferenceFolder() const override { return m_preferences; }
    QString logFolder() const override { return m_logs; }
    QString temporaryFolder() const override { return QDir::tempPath(); }

private:
    static QString ours(const QString &folder) { return folder + u'/' + bundleName; }

    QString m_resources;
    QString m_support;
    QString m_preferences;
    QString m_logs;
};

std::unique_ptr<ApplicationPlaces> &placesInUse()
{
    static std::unique_ptr<ApplicationPlaces> places;
    return places;
}

} // namespace

const ApplicationPlaces &applicationPlaces()
{
    auto &places = placesInUse();
    if (!places)
        places = makeLinuxPlaces();
    return *places;
}

void setApplicationPlaces(std::unique_ptr<ApplicationPlaces> places)
{
    placesInUse() = std::move(places);
}

std::unique_ptr<ApplicationPlaces> makeLinuxPlaces(const QString &logSubfolder)
{
    return std::make_unique<LinuxPlaces>(logSubfolder);
}

} // namespace vignar
