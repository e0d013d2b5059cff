#include "cli/commandLine.h"

#include "classShared/sourceDico.h"
#include "cli/argumentBytes.h"
#include "settings/preferenceKeys.h"
#include "settings/preferenceRanges.h"

#include <QCommandLineParser>

#include <iterator>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

using Command = CommandLine::Command;

/// Each job takes a process and a few of the 1,024 files that a process may open.
constexpr int mostJobs = 128;

struct CommandName {
    QLatin1String name;
    Command command;
};
constexpr CommandName commandNames[] = {
    {QLatin1String("sheet"), Command::sheet},
    {QLatin1String("analyse"), Command::analyse},
    {QLatin1String("plan"), Command::plan},
};

constexpr const char *layoutNames[] = {"big", "med", "min", "mix"};

/// One option: its names, its help, the name of its value, and how it is taken in.
struct OptionRow {
    QStringList names;
    /// Empty: --help does not show it.
    QString help;
    QString valueName;
    QList<Command> commands;
    /// The sentence that says what is wrong with the value; null when it is taken.
    QString (*take)(CommandLine &line, const QString &value);
};

/// A value as a message shows it: one that is far too long is not repeated in full.
QString shown(const QString &value)
{
    constexpr int longest = 80;
    return value.size() > longest ? value.left(longest) + u'…' : value;
}

QString wrongValue(const QString &value, const QString &expected)
{
    return u"'%1' is not %2"_s.arg(shown(value), expected);
}

QString takeLayout(CommandLine &line, const QString &value)
{
    for (int index = 0; index < int(std::size(layoutNames)); ++index) {
        if (value == QLatin1String(layoutNames[index])) {
            line.layout = index;
            return {};
        }
    }
    return wrongValue(value, u"a layout: big, med, min or mix"_s);
}

QString takeFormat(CommandLine &line, const QString &value)
{
    const bool isPdf = value == u"pdf";
    const QString picture = value == u"jpg" || isPdf ? u""_s : value;
    if (value.isEmpty() || !preferenceRange(Prefs::prefSheetFormat)->typed(picture))
        return wrongValue(value, u"a format: jpg, pdf, png or webp"_s);
    line.format = isPdf ? 0 : 1;
    write(line.settings, Prefs::prefSheetFormat, picture);
    return {};
}

QString takeExisting(CommandLine &line, const QString &value)
{
    using Existing = CommandLine::Existing;
    if (value == u"ask")
        line.existing = Existing::ask;
    else if (value == u"keep")
        line.existing = Existing::keep;
    else if (value == u"replace")
        line.existing = Existing::replace;
    else
        return wrongValue(value, u"one of ask, keep and replace"_s);
    return {};
}

QString takeThumbnails(CommandLine &line, const QString &value)
{
    if (value == u"auto") {
        write(line.settings, Prefs::prefLimitAuto, 1);
        return {};
    }
    write(line.settings, Prefs::prefLimitAuto, 0);
    for (const Key<int> &limit :
         {Prefs::prefLimitBig, Prefs::prefLimitMed, Prefs::prefLimitMin, Prefs::prefLimitMix}) {
        const PreferenceRange &range = *preferenceRange(limit);
        const Result<QVariant> count = range.typed(value);
        if (!count)
            return wrongValue(value, range.described() + u", or auto"_s);
        line.settings.insert(limit, *count);
    }
    return {};
}

QString takeInterval(CommandLine &line, const QString &value)
{
    const PreferenceRange &range = *preferenceRange(Prefs::prefDerushInterval);
    const Result<QVariant> seconds = range.typed(value);
    if (!seconds)
        return wrongValue(value, range.described());
    write(line.settings, Prefs::prefDerush, 1);
    line.settings.insert(Prefs::prefDerushInterval, *seconds);
    return {};
}

/// Takes a preference in; a text that was cut is noted under the name of its option.
QString takePreference(CommandLine &line, const QString &key, const QString &typed,
                       const QString &option)
{
    const PreferenceRange *range = preferenceRange(key);
    if (!range || range->readers == PreferenceRange::Readers::window)
        return u"there is no setting '%1'"_s.arg(key);
    const Result<QVariant> value = range->typed(typed);
    if (!value)
        return u"%1 must be %2, not '%3'"_s.arg(key, range->described(), shown(typed));
    if (value->toString() != typed && range->kind == PreferenceRange::Kind::namePart)
        line.notes += u"%1: cut to the longest that is possible, %2 bytes: '%3'"_s.arg(option)
                          .arg(range->highest)
                          .arg(value->toString());
    line.settings.insert(key, *value);
    return {};
}

QString takeSuffix(CommandLine &line, const QString &text)
{
    return takePreference(line, Prefs::prefSuffix, text, u"--suffix"_s);
}

QString takeSetting(CommandLine &line, const QString &assignment)
{
    const qsizetype equals = assignment.indexOf(u'=');
    if (equals < 1)
        return wrongValue(assignment, u"of the form KEY=VALUE"_s);
    const QString key = assignment.left(equals);
    return takePreference(line, key, assignment.mid(equals + 1), u"--set %1"_s.arg(key));
}

QString takeJobs(CommandLine &line, const QString &value)
{
    bool isNumber = false;
    const int jobs = value.toInt(&isNumber);
    if (!isNumber || jobs < 1 || jobs > mostJobs)
        return wrongValue(value, u"a number of jobs from 1 to %1"_s.arg(mostJobs));
    line.jobs = jobs;
    return {};
}

const QList<OptionRow> &optionRows()
{
    static const QList<Command> every{Command::sheet, Command::analyse, Command::plan};
    static const QList<Command> planning{Command::sheet, Command::plan};
    static const QList<Command> making{Command::sheet};
    static const QList<OptionRow> rows{
        {{u"prefs"_s},
         u"Read the preferences from FILE."_s,
         u"FILE"_s,
         every,
         [](CommandLine &line, const QString &value) {
             line.preferenceFile = value;
             return QString();
         }},
        {{u"v"_s, u"verbose"_s},
         u"Write every detail to standard error."_s,
         {},
         every,
         [](CommandLine &line, const QString &) {
             line.isVerbose = true;
             return QString();
         }},
        {{u"json"_s},
         u"Print one JSON object for each source, each on one line."_s,
         {},
         every,
         [](CommandLine &line, const QString &) {
             line.isJson = true;
             return QString();
         }},
        {{u"o"_s, u"output"_s},
         u"Make the sheets in the folder DIR."_s,
         u"DIR"_s,
         planning,
         [](CommandLine &line, const QString &value) {
             line.destination = value;
             return value.isEmpty() ? wrongValue(value, u"a folder"_s) : QString();
         }},
        {{u"l"_s, u"layout"_s},
         u"Layout: big, med, min or mix."_s,
         u"LAYOUT"_s,
         planning,
         takeLayout},
        {{u"f"_s, u"format"_s},
         u"Format: jpg, pdf, png or webp."_s,
         u"FORMAT"_s,
         making,
         takeFormat},
        {{u"suffix"_s},
         u"Add TEXT to the name of each sheet; cut at %1 bytes."_s.arg(longestSuffix),
         u"TEXT"_s,
         planning,
         takeSuffix},
        {{u"existing"_s},
         u"Where a sheet exists: ask, keep or replace."_s,
         u"ANSWER"_s,
         making,
         takeExisting},
        {{u"thumbs"_s},
         u"Number of thumbnails on each sheet, or auto."_s,
         u"N"_s,
         planning,
         takeThumbnails},
        {{u"every"_s},
         u"One thumbnail each SECONDS seconds, unless they would be more than without it; "
         "--thumbs allows more."_s,
         u"SECONDS"_s,
         planning,
         takeInterval},
        {{u"set"_s},
         u"Set a preference for this run; may be given again."_s,
         u"KEY=VALUE"_s,
         planning,
         takeSetting},
        {{u"jobs"_s},
         u"Work on N sources at once; half as many as there are cores unless given."_s,
         u"N"_s,
         {Command::sheet, Command::analyse},
         takeJobs},
        // For the program's own use: a worker gets its sources from the process that has
        // started it.
        {{QString(workerOption)},
         {},
         u"DIR"_s,
         every,
         [](CommandLine &line, const QString &value) {
             line.workerFolder = value;
             return value.isEmpty() ? wrongValue(value, u"a folder"_s) : QString();
         }},
    };
    return rows;
}

void declareOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(u"Makes index sheets of video files.\n\nCommands:\n"
                                     "  sheet     Make a sheet of each source.\n"
                                     "  analyse   Print what is known of each source.\n"
                                     "  plan      Print what sheet would extract."_s);
    parser.addPositionalArgument(u"COMMAND"_s, u"sheet, analyse or plan."_s);
    parser.addPositionalArgument(u"SOURCE"_s,
                                 u"Video files, folders (searched at any depth) and recordings."_s,
                                 u"SOURCE…"_s);
    for (const OptionRow &row : optionRows()) {
        QCommandLineOption option(row.names, row.help, row.valueName);
        if (row.help.isEmpty())
            option.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(option);
    }
    parser.addOption({{u"h"_s, u"help"_s}, u"Print this help."_s});
    parser.addOption({u"version"_s, u"Print the version."_s});
}

Command commandOf(const QString &name)
{
    for (const CommandName &row : commandNames) {
        if (name == row.name)
            return row.command;
    }
    return Command::none;
}

QString takeOptions(CommandLine &line, const QCommandLineParser &parser, const QString &commandName)
{
    for (const OptionRow &row : optionRows()) {
        const QString name = row.names.last();
        if (!parser.isSet(name))
            continue;
        if (!row.commands.contains(line.command))
            return u"--%1 does not go with %2"_s.arg(name, commandName);
        const QStringList values =
            row.valueName.isEmpty() ? QStringList{QString()} : parser.values(name);
        for (const QString &value : values) {
            if (!isPlainText(value))
                return u"--%1: '%2' is not valid UTF-8"_s.arg(
                    name, QString::fromUtf8(argumentBytes(value)));
            if (const QString fault = row.take(line, value); !fault.isNull())
                return u"--%1: %2"_s.arg(name, fault);
        }
    }
    return {};
}

} // namespace

Result<CommandLine> parseCommandLine(const QStringList &arguments)
{
    QCommandLineParser parser;
    declareOptions(parser);
    CommandLine line;
    if (!parser.parse(QStringList{u"vignar-cli"_s} + arguments))
        return Failure{parser.errorText()};
    line.isHelp = parser.isSet(u"help"_s);
    line.isVersion = parser.isSet(u"version"_s);
    if (line.isHelp || line.isVersion)
        return line;
    line.sources = parser.positionalArguments();
    if (line.sources.isEmpty())
        return Failure{u"no command was given: sheet, analyse or plan"_s};
    const QString commandName = line.sources.takeFirst();
    line.command = commandOf(commandName);
    if (line.command == Command::none)
        return Failure{u"'%1' is not a command: sheet, analyse or plan"_s.arg(commandName)};
    if (line.sources.isEmpty())
        return Failure{u"no source was given"_s};
    if (const QString fault = takeOptions(line, parser, commandName); !fault.isNull())
        return Failure{fault};
    return line;
}

QString helpText()
{
    QCommandLineParser parser;
    declareOptions(parser);
    return parser.helpText();
}

QString layoutName(int layout)
{
    return QLatin1String(layoutNames[layout >= 0 && layout < 4 ? layout : mixLayout]);
}

} // namespace vignar
