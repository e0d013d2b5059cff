#pragma once

#include "app/sourceFiles.h"
#include "tasks/backgroundRun.h"

#include <QObject>
#include <QSet>
#include <QStringList>

namespace vignar
{

class AnalysisDriver;
class BatchList;
class Outlets;
struct KnownSources;

/// Which of the dropped items may be folders that stand for what is under them.
enum class FoldersTaken {
    /// The first one, which then replaces all others.
    first,
    /// Each, in its place.
    all
};

/// The dropped list with a folder in first place (links resolved) replaced by what is
/// under it; a folder with nothing under it leaves the list as it is.
FolderEntries withFolderContents(const QStringList &dropped);

/// The dropped list with each folder (links resolved) replaced by what is under it.
FolderEntries withContentsOfFolders(const QStringList &dropped);

/// Turns dropped or opened items into pending sources for the analysis.
///
/// Folders are searched on another thread, one drop after another in the order in which they
/// came. From a drop until all that came of it is a row or refused the drop area looks busy.
class Intake : public QObject
{
    Q_OBJECT

public:
    Intake(Outlets &outlets, const BatchList &batch, AnalysisDriver &analysis,
           QObject *parent = nullptr);

    /// Brings what it can of the items to the analysis; sources already known there and rows
    /// are left out.
    void draggedFiles(const QStringList &paths, FoldersTaken folders = FoldersTaken::first);

    /// Forgets the drops that are still being searched.
    void giveUp();

    /// Drops are being searched, or their sources analysed.
    bool isBusy() const;
    /// The items of the drops that are still being searched.
    QStringList droppedItems() const;

Q_SIGNALS:
    /// The drop area got busy: a running batch pauses.
    void busyStarted();
    /// The drop area waits for files again: a paused batch goes on. Never while isBusy().
    void busyEnded();

private:
    struct Drop {
        QStringList paths;
        FoldersTaken folders;
    };
    /// What is left of a drop.
    struct Admission {
        /// Without known sources and repeats.
        qsizetype fresh = 0;
        /// Of these, those that may be videos.
        QStringList sources;
        QSet<QString> sourceSet;
        QList<UnreadEntry> unread;
    };

    static Admission admit(const Drop &drop, const KnownSources &known);
    void searchNext();
    void taken(const Admission &admission);
    void enterBusyLook();
    void leaveBusyLook();

    Outlets &m_outlets;
    const BatchList &m_batch;
    AnalysisDriver &m_analysis;
    /// The first is being searched, unless the search was given up.
    QList<Drop> m_drops;
    bool m_isGivenUp = false;
    BackgroundRun<Admission> m_search;
};

} // namespace vignar
