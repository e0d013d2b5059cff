#pragma once

#include <QString>

namespace vignar
{

/// The scratch folder of this run, absolute; when none is set, "Vignar" in the system's
/// temporary folder, which nobody has made.
QString workFolder();

/// Holds the path; null restores the default.
void setWorkFolder(const QString &path);

/// Makes an empty work folder for this run under the system's temporary folder, readable
/// by the user alone, and logs it. instance tells programs that may run at once apart
/// ("desktop", or "cli"): a desktop work folder left by an earlier run is emptied, each
/// command line gets one of its own, and those whose process has died are removed.
/// False when no folder can be made.
///
/// All of a user's folders lie in "org.vignar.Vignar-<user number>"; beside each, a lock
/// file tells whether its process lives. Where that name belongs to somebody else, who
/// may have made it to lead us astray, a folder with a name of its own takes its place.
bool setUpWorkFolder(const QString &instance);

/// Makes the work folder again where something has cleared it away under a long run. False
/// when there is none and none can be made.
bool renewWorkFolder();

/// Removes the work folder that setUpWorkFolder() made.
void removeWorkFolder();

/// toolPathSafe() of files.h with the work folder where the given one does not exist.
QString toolPathSafeInWorkFolder(const QString &toolPath, const QString &folder = {});

} // namespace vignar
