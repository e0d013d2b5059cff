#pragma once

#include <QObject>
#include <QStringList>

namespace vignar
{

class BatchList;
class Outlets;

/// The dropped list with a folder in first place (links resolved) replaced by what is
/// under it; a folder with nothing under it leaves the list as it is.
QStringList withFolderContents(const QStringList &dropped);

/// Turns dropped or opened items into pending sources for the analysis.
class Intake : public QObject
{
    Q_OBJECT

public:
    Intake(Outlets &outlets, const BatchList &batch, QObject *parent = nullptr);

    /// Admits what it can of the items and stores it under "analysisSrcPathesDico";
    /// sources still waiting there keep their places before the new ones.
    void draggedFiles(const QStringList &paths);

    /// The look of a drop area that waits for files; lets the batch go on.
    void leaveBusyLook();

Q_SIGNALS:
    /// The drop area got busy: a running batch pauses.
    void busyStarted();
    /// Pending sources are stored and "analysisDeb" is set.
    void sourcesReady();
    /// The drop area waits for files again: a paused batch goes on.
    void busyEnded();

private:
    void enterBusyLook();
    QStringList withoutKnownSources(const QStringList &paths) const;
    void storePending(const QStringList &paths);

    Outlets &m_outlets;
    const BatchList &m_batch;
};

} // namespace vignar
