#pragma once

#include "app/outlets.h"

#include <QStringList>

namespace vignar
{

/// Counts what became of the rows of one run, and of the sources of one analysis.
class RunTally
{
public:
    void add(const SheetOutcome &outcome);
    void addRefusal(const QString &source, const QString &reason);

    int finished() const { return m_made + m_kept + m_failed; }
    int failed() const { return m_failed; }
    int refused() const { return m_refused; }

    /// "Sheets made: 3 · kept: 1".
    QString summary() const;
    /// A line each for the first of what went wrong, and how many more there were.
    QString troubles() const;

private:
    int m_made = 0;
    int m_kept = 0;
    int m_failed = 0;
    int m_refused = 0;
    QStringList m_troubles;
};

/// What the list says of a row that came to this end.
QString reasonText(const SheetOutcome &outcome);

} // namespace vignar
