#include "tasks/toolPlaces.h"

#include "settings/applicationPlaces.h"
#include "tasks/workFolder.h"

#include <QFileInfo>

#include <array>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

/// What a tool needs of the user's environment: where programs, libraries and the user's files
/// are. Whatever else stands there could change what a tool prints or does, as FFREPORT and
/// AV_LOG_FORCE_COLOR do.
constexpr std::array passedOn{
    "PATH"_L1,
    "HOME"_L1,
    "USER"_L1,
    "LOGNAME"_L1,
    "SHELL"_L1,
    "PWD"_L1,
    "TMPDIR"_L1,
    "TZ"_L1,
    "LD_LIBRARY_PATH"_L1,
    "LD_PRELOAD"_L1,
    "XDG_DATA_DIRS"_L1,
    "XDG_DATA_HOME"_L1,
    "XDG_CONFIG_HOME"_L1,
    "XDG_CACHE_HOME"_L1,
    "FONTCONFIG_FILE"_L1,
    "FONTCONFIG_PATH"_L1,
    "QT_QPA_PLATFORM"_L1,
    "QT_PLUGIN_PATH"_L1,
};

/// fontconfig takes a named file or folder that is missing as the whole truth and then
/// finds no font, so that every text that a tool draws would fail.
void insertExisting(QProcessEnvironment &environment, const QString &name, const QString &path)
{
    if (QFileInfo::exists(path))
        environment.insert(name, path);
}

} // namespace

QString toolsFolder()
{
    return applicationPlaces().resourceFolder() + "/tools"_L1;
}

QString ffmpegPath()
{
    const QStringList folders{toolsFolder(), applicationPlaces().resourceFolder(),
                              applicationPlaces().supportFolder()};
    for (const QString &folder : folders) {
        QString path = folder + "/ffmpeg"_L1;
        if (QFileInfo(path).isFile())
            return path;
    }
    return u""_s;
}

QProcessEnvironment toolEnvironment()
{
    const QProcessEnvironment own = QProcessEnvironment::systemEnvironment();
    QProcessEnvironment environment;
    for (const QLatin1String name : passedOn) {
        if (own.contains(name))
            environment.insert(name, own.value(name));
    }
    environment.insert(u"LC_CTYPE"_s, u"en_US.UTF-8"_s);
    // Overrides the entry above, whose locale need not be installed; this one always is.
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    environment.insert(u"AV_LOG_FORCE_NOCOLOR"_s, u"1"_s);
    // An arena of the allocator for every thread takes 64 MB of address space, which is limited.
    environment.insert(u"MALLOC_ARENA_MAX"_s, u"2"_s);
    insertExisting(environment, u"FONTCONFIG_FILE"_s,
                   applicationPlaces().supportFolder() + "/fonts.conf"_L1);
    insertExisting(environment, u"FONTCONFIG_PATH"_s,
                   workFolder() + "/app.app/Contents/Resources/fonts"_L1);
    return environment;
}

} // namespace vignar
