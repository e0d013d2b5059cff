#pragma once

#include "app/passExecutor.h"
#include "sheet/extractionFolder.h"

#include <QHash>

namespace vignar
{

/// The pictures of one row: the folder that they are written to, and the passes that take
/// them. Its end kills what runs and removes the folder. Main thread only.
class RowPictures : public QObject
{
    Q_OBJECT

public:
    explicit RowPictures(ExtractionFolder folder);
    ~RowPictures() override;

    QString folder() const { return m_folder.path(); }

    /// Starts passes (index text to argument list) of a source. Does nothing while it runs.
    void start(const Dico &passes, const SourceDico &source,
               PassExecutor::Effort effort = PassExecutor::Effort::everything);
    /// Those of the last start().
    const Dico &passes() const { return m_passes; }

    /// Those that it gave up.
    Dico leftOut() const;

    /// From start() until finished().
    bool isRunning() const { return m_isRunning; }
    /// PassExecutor::fault() and isLate().
    RunFault fault() const { return m_executor.fault(); }
    bool isLate() const { return m_executor.isLate(); }
    /// Pictures of the last start() that are there.
    int landedPictures() const { return m_landed; }

    void suspend() { m_executor.suspend(); }
    void resume() { m_executor.resume(); }
    /// Kills what runs; finished() follows.
    void terminate() { m_executor.terminate(); }

    /// Picture file to the seconds at which it is shown in the source, as far as told.
    const QHash<QString, double> &shownAt() const { return m_shownAt; }
    void setShownAt(const QString &picture, double seconds) { m_shownAt[picture] = seconds; }

Q_SIGNALS:
    void landed(int pictures);
    /// From the event loop, once for each start().
    void finished();

private:
    ExtractionFolder m_folder;
    Dico m_passes;
    QHash<QString, double> m_shownAt;
    int m_landed = 0;
    bool m_isRunning = false;
    PassExecutor m_executor;
};

} // namespace vignar
