#pragma once

#include <QObject>
#include <QStringList>

#include <functional>

namespace vignar
{

class MainWindow;

/// Carries out the commands of the help menu: the logs, the texts, the report of
/// a problem, about.
class HelpCommands : public QObject
{
    Q_OBJECT

public:
    HelpCommands(MainWindow &window, QObject *parent);

    /// A further line for the about box, such as a library's name and version; asked for
    /// when the box opens.
    void addComponent(std::function<QString()> nameAndVersion)
    {
        m_components.append(std::move(nameAndVersion));
    }

    void iba_menuDebugToggle();
    void iba_openLocalizationFile();

private:
    void iba_OpenFile(const QString &path);
    QStringList versions() const;
    void showAbout();
    void report();

    MainWindow &m_window;
    QList<std::function<QString()>> m_components;
};

/// "Version 1.0 of 3 May 2027": this version and its release, in the user's language.
QString releaseText();

/// "ffmpeg 5.1.6" of the ffmpeg in use; null when there is none.
QString ffmpegVersion();

} // namespace vignar
