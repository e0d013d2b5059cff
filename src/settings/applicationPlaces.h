#pragma once

#include <QString>

#include <memory>

namespace vignar
{

/// The bundle name: folders, logs and messages carry it.
inline constexpr QLatin1String bundleName{"Vignar"};
/// The bundle identifier: desktop file, work folder.
inline constexpr QLatin1String bundleIdentifier{"org.vignar.Vignar"};

/// Where the platform keeps the application's things. Folders are absolute, without
/// a trailing "/", and not created by asking.
class ApplicationPlaces
{
public:
    virtual ~ApplicationPlaces() = default;

    /// Read-only data: "tools", "en.lproj", ….
    virtual QString resourceFolder() const = 0;
    /// What the user adds by hand: an ffmpeg of his own, fonts.conf, texts.
    virtual QString supportFolder() const = 0;
    virtual QString preferenceFolder() const = 0;
    virtual QString logFolder() const = 0;
    /// What the program keeps from one run to the next without the user's asking.
    virtual QString stateFolder() const { return logFolder(); }
    /// The system's folder for temporary files.
    virtual QString temporaryFolder() const = 0;
};

/// The places in use. On Linux, at first: share/vignar beside the program's bin
/// folder, and the XDG data, configuration and state folders with "Vignar" appended.
const ApplicationPlaces &applicationPlaces();

/// Replaces the places; null restores the platform's. For tests and for programs that
/// keep their logs apart.
void setApplicationPlaces(std::unique_ptr<ApplicationPlaces> places);

/// The Linux places, with the log folder's last component chosen by the program:
/// null for the desktop program, "cli" for the command line.
std::unique_ptr<ApplicationPlaces> makeLinuxPlaces(const QString &logSubfolder = {});

} // namespace vignar
