#include "shell/fileManager.h"

#include "classShared/lineLog.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace vignar
{

using namespace Qt::StringLiterals;

bool openInDesktop(const QString &path)
{
    const bool isOpened =
        QFileInfo::exists(path) && QDesktopServices::openUrl(QUrl::fromLocalFile(path));
    if (!isOpened)
        logLine(u"openFile            :-( '%@'", path);
    return isOpened;
}

bool showInFileManager(const QString &path)
{
    const QString folder = QFileInfo(path).path();
    if (!QFileInfo::exists(path))
        return QFileInfo(folder).isDir() && openInDesktop(folder);
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return openInDesktop(folder);
    QDBusMessage call = QDBusMessage::createMethodCall(
        u"org.freedesktop.FileManager1"_s, u"/org/freedesktop/FileManager1"_s,
        u"org.freedesktop.FileManager1"_s, u"ShowItems"_s);
    call << QStringList{QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)} << QString();
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, folder] {
        if (watcher->isError())
            openInDesktop(folder);
        watcher->deleteLater();
    });
    return true;
}

} // namespace vignar
