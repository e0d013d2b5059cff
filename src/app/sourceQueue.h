#pragma once

#include "classShared/keys.h"
#include "tasks/backgroundRun.h"

#include <QObject>
#include <QSet>
#include <QStringList>

namespace vignar
{

/// The sources that wait for their analysis, in the order in which they will be taken.
///
/// "analysisSrcPathesDico" is printed from it. A short queue is printed at each change. A long one
/// is printed on another thread, and anew only once a good part of it has been taken, so that
/// the cost of a source does not grow with the number of those behind it; until then the printed
/// form begins with sources that have been taken.
class SourceQueue : public QObject
{
    Q_OBJECT

public:
    /// The longest queue that is printed at each change.
    static constexpr qsizetype shortQueue = 256;

    explicit SourceQueue(QObject *parent = nullptr) : QObject(parent) {}

    bool isEmpty() const { return m_paths.isEmpty(); }
    qsizetype size() const { return m_paths.size(); }
    const QStringList &paths() const { return m_paths; }
    const QSet<QString> &asSet() const { return m_set; }

    /// The sources, and the same as a set, which takes a while to build for many. They must be
    /// new to the queue, and each but once among them.
    void append(const QStringList &sources, const QSet<QString> &sourceSet);
    /// The queue must not be empty.
    QString takeFirst();
    void clear();

private:
    void print();
    void printAside();

    QStringList m_paths;
    QSet<QString> m_set;
    /// Length of the queue when it was printed last; -1: sources have joined since.
    qsizetype m_printed = -1;
    BackgroundRun<Dico> m_printing;
};

} // namespace vignar
