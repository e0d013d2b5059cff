#include "cli/worker.h"

#include "app/sheetDisplay.h"
#include "classShared/format.h"
#include "cli/workerMessages.h"
#include "settings/logFiles.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"

#include <QCoreApplication>
#include <QDir>

namespace vignar
{

using namespace Qt::StringLiterals;

using Command = CommandLine::Command;

namespace
{

/// Has the program show what there is to show, and ask what there is to ask.
class WorkerAlerts : public AlertPresenter
{
public:
    explicit WorkerAlerts(WorkerChannel &channel) : m_channel(channel) {}

    AlertAnswer present(const AlertRequest &request) override
    {
        m_channel.say(alertMessage(request));
        if (request.alternateButton.isEmpty())
            return {};
        const auto answer = m_channel.awaitAnswer();
        const int button = answer ? read(*answer, WorkerKeys::button).value_or(0) : 0;
        // From here on it is settled for this source as if it had been from the start.
        if (answer && read(*answer, WorkerKeys::isForAll).value_or(false))
            prefWrite(RunKeys::replaceFilesCheck,
                      AlertButton(button) == AlertButton::second ? 1 : 0);
        return {AlertButton(button), false};
    }

private:
    WorkerChannel &m_channel;
};

} // namespace

Worker::Worker(const CommandLine &line) : CommandScreen(line)
{
    setAlertPresenter(std::make_unique<WorkerAlerts>(m_channel));
    connect(&m_channel, &WorkerChannel::told, this, &Worker::told);
    connect(&m_channel, &WorkerChannel::closed, this, &Worker::stop);
    connect(&m_signals, &SignalWatcher::interrupted, this, &Worker::stop);
}

Worker::~Worker()
{
    setAlertPresenter({});
}

int Worker::run()
{
    QCoreApplication::exec();
    return m_signals.isInterrupted() ? interruptedStatus : 0;
}

void Worker::told(const Dico &message)
{
    const QString word = readStr(message, WorkerKeys::word);
    if (word == WorkerWords::stop)
        stop();
    else if (word == WorkerWords::take && !m_hasSource)
        take(readStr(message, WorkerKeys::source));
    else if (word == WorkerWords::make && m_hasSource && !m_isStopping)
        make(read(message, WorkerKeys::number).value_or(1));
}

void Worker::take(const QString &source)
{
    m_hasSource = true;
    m_planned = 0;
    m_application.reset();
    Outlets &screen = *this;
    m_application = std::make_unique<appDelegate>(screen);
    connect(&m_application->whichArrayController(), &BatchList::rowAdded, this, &Worker::rowAdded);
    answerReplaceQuestion();
    holdSummaryLog();
    // The first of several sources is looked at as a drop of its own would be, and its link
    // followed; that has been done for this one where it was wanted.
    m_application->draggedFiles({QString(), source});
}

void Worker::rowAdded(int index)
{
    if (line().command != Command::analyse)
        return;
    Dico message = workerMessage(WorkerWords::printed);
    const BatchEntry row = m_application->whichArrayController().row(index);
    write(message, WorkerKeys::text, analysisResult(read(row, RowKeys::dico).value_or(Dico())));
    m_channel.say(message);
}

void Worker::sourceRefused(const QString &path, const QString &reason)
{
    Dico message = workerMessage(WorkerWords::refused);
    write(message, WorkerKeys::source, path);
    write(message, WorkerKeys::reason, reason);
    m_channel.say(message);
}

void Worker::analysisEnded()
{
    const BatchList &batch = m_application->whichArrayController();
    if (m_isStopping || line().command != Command::sheet || batch.count() == 0)
        return done();
    m_channel.say(analysedMessage(sheetNaming(read(batch.row(0), RowKeys::dico).value_or(Dico()))));
}

void Worker::make(int number)
{
    BatchList &batch = m_application->whichArrayController();
    SourceDico record = read(batch.row(0), RowKeys::dico).value_or(Dico());
    write(record, Keys::sheetNumber, number);
    batch.setRecord(0, record);
    if (m_application->iba_batchGoBt())
        return;
    sheetFinished(destinationFailure(batch.sourcePath(0)));
    done();
}

void Worker::setProgressMaximum(ProgressBar bar, double maximum)
{
    if (bar != ProgressBar::steps || maximum < 1)
        return;
    m_planned = int(maximum);
    setProgressValue(bar, 0);
}

void Worker::setProgressValue(ProgressBar bar, double value)
{
    if (bar != ProgressBar::steps || m_planned == 0)
        return;
    Dico message = workerMessage(WorkerWords::progress);
    write(message, WorkerKeys::landed, int(value));
    write(message, WorkerKeys::planned, m_planned);
    m_channel.say(message);
}

int Worker::furtherNumber(const QString &, int number)
{
    Dico message = workerMessage(WorkerWords::further);
    write(message, WorkerKeys::number, number);
    m_channel.say(message);
    const auto answer = m_channel.awaitAnswer();
    return answer ? read(*answer, WorkerKeys::number).value_or(number) : number;
}

void Worker::sheetFinished(const SheetOutcome &outcome)
{
    m_channel.say(outcomeMessage(outcome));
}

void Worker::batchEnded()
{
    done();
}

void Worker::done()
{
    releaseSummaryLog();
    m_hasSource = false;
    Dico message = workerMessage(WorkerWords::done);
    write(message, WorkerKeys::isLast, m_isStopping);
    m_channel.say(message);
    if (m_isStopping)
        quit();
}

void Worker::stop()
{
    if (std::exchange(m_isStopping, true))
        return;
    if (!m_hasSource)
        return quit();
    m_application->stopAll();
    if (!m_application->sheetDriver().isActive() && !m_application->isTakingSources())
        done();
}

void Worker::quit()
{
    // Queued: the drivers are still on the call stack.
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

} // namespace vignar
