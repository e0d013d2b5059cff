#pragma once

#include "classShared/keys.h"
#include "classShared/result.h"

#include <QStringList>

#include <optional>

namespace vignar
{

/// What the user typed after the program's name.
struct CommandLine {
    enum class Command { none, sheet, analyse, plan };
    enum class Existing { ask, keep, replace };

    Command command = Command::none;
    bool isHelp = false;
    bool isVersion = false;
    bool isVerbose = false;
    bool isJson = false;
    /// Empty: the user's own preference file.
    QString preferenceFile;
    /// Empty: the folder of the preferences.
    QString destination;
    std::optional<int> layout;
    /// 0 PDF, 1 JPEG.
    std::optional<int> format;
    Existing existing = Existing::ask;
    /// Preference values that hold for this run alone.
    Dico settings;
    /// Notes for the user about arguments that were changed, such as a suffix that was cut.
    QStringList notes;
    /// Sources worked on at once; nothing: as many as suit the machine.
    std::optional<int> jobs;
    /// Not empty: this process is a worker, whose scratch files go to this folder.
    QString workerFolder;
    QStringList sources;
};

/// The option that makes a process a worker; its value is the worker's scratch folder.
inline constexpr QLatin1String workerOption{"worker"};

/// Reads the arguments (the program's name aside), or says what is wrong with them.
Result<CommandLine> parseCommandLine(const QStringList &arguments);

/// What --help prints.
QString helpText();

/// "big", "med", "min" or "mix".
QString layoutName(int layout);

} // namespace vignar
