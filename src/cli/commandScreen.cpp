#include "cli/commandScreen.h"

#include "app/sheetDestination.h"
#include "classShared/format.h"
#include "classShared/paths.h"
#include "classShared/standIns.h"
#include "cli/jsonLines.h"
#include "cli/recordText.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"

#include <QDir>
#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

int CommandScreen::chosenLayout() const
{
    return m_line.layout.value_or(prefValue(Prefs::prefCheckMatrix));
}

int CommandScreen::chosenFormat() const
{
    return m_line.format.value_or(prefValue(Prefs::prefDpi));
}

QString CommandScreen::destinationField() const
{
    return m_line.destination.isEmpty() ? prefValue(Prefs::prefDefautDstPathStr)
                                        : QDir::current().absoluteFilePath(m_line.destination);
}

bool CommandScreen::isDestinationMissing() const
{
    if (!m_line.destination.isEmpty())
        return !QFileInfo(m_line.destination).isDir();
    const QString field = expandTilde(destinationField());
    // The movie folder is made when it is first needed.
    const QString movies = expandTilde(u"~/Movies/"_s);
    const bool isMovies = field.isEmpty() || QDir::cleanPath(field) == QDir::cleanPath(movies);
    return !isMovies && !QFileInfo(field).isDir();
}

SheetOutcome CommandScreen::failure(const QString &source, const QString &reason) const
{
    const bool isPdf = chosenFormat() == 0;
    return {.source = source,
            .reason = reason,
            .layout = chosenLayout(),
            .format =
                isPdf ? SheetFormat::pdf : pictureFormatOf(prefValue(Prefs::prefSheetFormat))};
}

SheetOutcome CommandScreen::destinationFailure(const QString &source) const
{
    return failure(source, filled(localised(u"V_reason_destination"_s),
                                  destinationFolder(destinationField())));
}

void CommandScreen::answerReplaceQuestion() const
{
    using Existing = CommandLine::Existing;
    if (m_line.existing != Existing::ask)
        prefWrite(RunKeys::replaceFilesCheck, m_line.existing == Existing::replace ? 1 : 0);
}

QString CommandScreen::analysisResult(SourceDico record) const
{
    // The poster is a scratch file that is gone when the reader sees this.
    remove(record, Keys::imgPathStr);
    write(record, Keys::srcPathStr, shownPath(readStr(record, Keys::srcPathStr)));
    return m_line.isJson ? analysedJson(record) : recordText(record);
}

} // namespace vignar
