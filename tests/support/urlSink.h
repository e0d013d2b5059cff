#pragma once

#include <QDesktopServices>
#include <QObject>
#include <QStringList>
#include <QUrl>

namespace vignar
{

/// Takes the files that the program would open with the desktop's programs.
class UrlSink : public QObject
{
    Q_OBJECT

public:
    UrlSink() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "take"); }
    ~UrlSink() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QStringList opened;

public Q_SLOTS:
    void take(const QUrl &url) { opened.append(url.toLocalFile()); }
};

} // namespace vignar
