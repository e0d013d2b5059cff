#include "tasks/toolPlaces.h"

#include "settings/applicationPlaces.h"
#include "tasks/workFolder.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

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
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_CTYPE"_s, u"en_US.UTF-8"_s);
    insertExisting(environment, u"FONTCONFIG_FILE"_s,
                   applicationPlaces().supportFolder() + "/fonts.conf"_L1);
    insertExisting(environment, u"FONTCONFIG_PATH"_s,
                   workFolder() + "/app.app/Contents/Resources/fonts"_L1);
    return environment;
}

} // namespace vignar
