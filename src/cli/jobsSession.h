#pragma once

#include "app/sheetDestination.h"
#include "app/signalWatcher.h"
#include "cli/commandScreen.h"
#include "cli/results.h"
#include "cli/workerProcess.h"
#include "settings/alerts.h"

#include <QObject>
#include <QSet>

namespace vignar
{

class ProgressLine;

/// How the work is shared among worker processes.
struct JobsPlan {
    int workers = 2;
    /// The user's own arguments, for the workers to read.
    QStringList typed;
};

/// One command whose sources are worked on by several processes at once. What one worker
/// alone must not decide is decided here, in the order of the sources: the names of the
/// sheets and the answers to questions. A worker that dies costs the source in its hands.
class JobsSession : public QObject
{
    Q_OBJECT

public:
    JobsSession(const CommandScreen &screen, ProgressLine &progress, Results &results,
                const QStringList &sources, const JobsPlan &plan);

    /// Runs the event loop until the command is done; false when it was interrupted.
    bool run();

private:
    struct Source {
        /// Ready: waits for the word to be made. Settled: has no more questions.
        enum class Stage { waiting, analysing, ready, making, settled, done };

        QString path;
        Stage stage = Stage::waiting;
        WorkerProcess *worker = nullptr;
        SheetNaming naming;
        std::optional<AlertRequest> question;
        /// What became of it has been told.
        bool isTold = false;
        int landed = 0;
        int planned = 0;
    };

    void startWorker();
    QStringList workerArguments();
    void giveSource(WorkerProcess &worker);
    void told(WorkerProcess &worker, const Dico &message);
    void workerEnded(WorkerProcess &worker);
    void takeAlert(Source &source, const AlertRequest &alert);
    void takeProgress(Source &source, const Dico &message);
    void sourceDone(size_t position);
    void sourceLost(size_t position);
    void tellFailure(size_t position, const QString &reason);

    void goOn();
    void makeInOrder();
    void make(Source &source);
    void askInOrder();
    Dico answerTo(const AlertRequest &question);
    void takeFurther(Source &source, int number);
    void showProgress();
    void stop();

    const CommandScreen &m_screen;
    ProgressLine &m_progress;
    Results &m_results;
    const JobsPlan m_plan;
    SignalWatcher m_signals;
    std::vector<Source> m_sources;
    int m_running = 0;
    int m_started = 0;
    /// Sources before it have been taken by a worker, told to be made, or settled.
    size_t m_nextTaken = 0;
    size_t m_nextMade = 0;
    size_t m_nextAsked = 0;
    /// The first source that is not done.
    size_t m_oldest = 0;
    QSet<QString> m_takenNames;
    /// The answer to all questions that follow.
    std::optional<AlertButton> m_answer;
    bool m_isStopping = false;
    int m_refused = 0;
    int m_begun = 0;
    int m_done = 0;
};

} // namespace vignar
