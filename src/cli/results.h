#pragma once

#include "app/outlets.h"
#include "app/sourceFiles.h"
#include "cli/commandScreen.h"
#include "cli/jsonLines.h"

#include <QHash>
#include <QStringList>

#include <optional>
#include <vector>

namespace vignar
{

class ProgressLine;

/// What is said where standard output takes no results.
QString lostResults(const QString &reason);

/// Tells what becomes of the sources. Complaints go to standard error at once; results go
/// to standard output in the order of the sources, each as soon as those before it are
/// settled.
class Results
{
public:
    Results(const CommandLine &line, ProgressLine &progress, const QStringList &sources);

    /// Where a source stands; the number of sources for one that is not among them.
    size_t positionOf(const QString &source) const;

    // Each settles a source for good.
    void refused(size_t position, const QString &source, const QString &reason);
    void finished(size_t position, const SheetOutcome &outcome);
    void planned(size_t position, const PlannedSource &planned);
    void printed(size_t position, const QString &text);
    /// Names what could not be searched; of many the first ones.
    void unread(const QList<UnreadEntry> &entries);

    /// Nothing is printed of it.
    void leftOut(size_t position);

    /// Prints what waits for sources that will not be settled any more.
    void flush();

    bool hasFailure() const { return m_hasFailure; }

private:
    void note(const QString &source, const QString &text);
    void complain(const QString &source, const QString &reason);
    void tell(const SheetOutcome &outcome);
    void settle(size_t position, const QString &text);
    void print(const QString &text);

    const CommandScreen m_screen;
    ProgressLine &m_progress;
    QHash<QString, size_t> m_positions;
    /// What is to be printed of each source; null texts print nothing.
    std::vector<std::optional<QString>> m_texts;
    size_t m_next = 0;
    bool m_hasFailure = false;
    bool m_isOutputLost = false;
};

} // namespace vignar
