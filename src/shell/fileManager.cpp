#include "shell/fileManager.h"

#include "classShared/lineLog.h"
#include "classShared/standIns.h"
#include "settings/applicationPlaces.h"
#include "shell/platform/dbusCall.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <gio/gio.h>

#include <algorithm>
#include <memory>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

struct Unref {
    void operator()(GAppInfo *program) const { g_object_unref(program); }
};
using DesktopProgram = std::unique_ptr<GAppInfo, Unref>;

constexpr auto folderType = "inode/directory";

const DBusPlace &fileManager()
{
    static const DBusPlace place{u"org.freedesktop.FileManager1"_s,
                                 u"/org/freedesktop/FileManager1"_s,
                                 u"org.freedesktop.FileManager1"_s};
    return place;
}

/// By its desktop file, or by its executable: users write desktop files of their own.
bool isThisProgram(GAppInfo *program)
{
    const QString id = QString::fromUtf8(g_app_info_get_id(program));
    const QString executable = QString::fromUtf8(g_app_info_get_executable(program));
    return id == bundleIdentifier + ".desktop"_L1 ||
           QFileInfo(executable).fileName() ==
               QFileInfo(QCoreApplication::applicationFilePath()).fileName();
}

/// The desktop's preferred program for folders, or the first that is not this one.
DesktopProgram folderProgram()
{
    DesktopProgram chosen(g_app_info_get_default_for_type(folderType, FALSE));
    if (chosen && !isThisProgram(chosen.get()))
        return chosen;
    chosen.reset();
    GList *all = g_app_info_get_all_for_type(folderType);
    for (const GList *each = all; each && !chosen; each = each->next) {
        auto *program = static_cast<GAppInfo *>(each->data);
        if (!isThisProgram(program))
            chosen.reset(static_cast<GAppInfo *>(g_object_ref(program)));
    }
    g_list_free_full(all, g_object_unref);
    return chosen;
}

/// The address of a file in the bytes of its name, which need not be text.
QByteArray addressOf(const QByteArray &path)
{
    return "file://" + path.toPercentEncoding("/");
}

bool openInFolderProgram(const QByteArray &folder)
{
    const DesktopProgram program = folderProgram();
    if (!program) {
        logLine(u"openFolder          :-( no program for folders ('%@')",
                QFile::decodeName(folder));
        return false;
    }
    QByteArray url = addressOf(folder);
    GList urls{url.data(), nullptr, nullptr};
    GError *error = nullptr;
    if (g_app_info_launch_uris(program.get(), &urls, nullptr, &error))
        return true;
    logLine(u"openFolder          :-( '%@' : %@", QFile::decodeName(folder),
            QString::fromUtf8(error->message));
    g_error_free(error);
    return false;
}

void ask(const QString &method, const QByteArray &path, const QByteArray &folder, QObject *context,
         const ShownHandler &done)
{
    const QString url = QString::fromLatin1(addressOf(path));
    const QDBusMessage call = fileManager().call(method, {QStringList{url}, QString()});
    callThen(QDBusConnection::sessionBus(), call, context,
             [folder, done](const QDBusMessage &reply) {
                 const bool isShown =
                     reply.type() != QDBusMessage::ErrorMessage || openInFolderProgram(folder);
                 if (done)
                     done(isShown);
             });
}

} // namespace

bool openFile(const QString &path)
{
    const bool isOpened =
        QFileInfo(path).isFile() && QDesktopServices::openUrl(QUrl::fromLocalFile(path));
    if (!isOpened)
        logLine(u"openFile            :-( '%@'", path);
    return isOpened;
}

void openFolder(const QString &folder, QObject *context, const ShownHandler &done)
{
    if (QFileInfo(folder).isDir())
        ask(u"ShowFolders"_s, systemPath(folder), systemPath(folder), context, done);
    else if (done)
        done(false);
}

void showInFileManager(const QString &path, QObject *context, const ShownHandler &done)
{
    const QByteArray file = systemPath(path);
    const QByteArray folder = file.left(std::max<qsizetype>(1, file.lastIndexOf('/')));
    if (QFileInfo::exists(path))
        ask(u"ShowItems"_s, file, folder, context, done);
    else
        openFolder(QFile::decodeName(folder), context, done);
}

} // namespace vignar
