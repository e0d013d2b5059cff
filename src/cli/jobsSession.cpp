#include "cli/jobsSession.h"

#include "classShared/files.h"
#include "classShared/format.h"
#include "cli/terminal.h"
#include "cli/workerMessages.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "tasks/workFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

QString workerFolder(int number)
{
    return workFolder() + u"/job-%1"_s.arg(number);
}

} // namespace

JobsSession::JobsSession(const CommandScreen &screen, ProgressLine &progress, Results &results,
                         const QStringList &sources, const JobsPlan &plan)
    : m_screen(screen), m_progress(progress), m_results(results), m_plan(plan)
{
    for (const QString &path : sources)
        m_sources.push_back({.path = path});
    connect(&m_signals, &SignalWatcher::interrupted, this, &JobsSession::stop);
}

bool JobsSession::run()
{
    for (int count = 0; count < m_plan.workers; ++count)
        startWorker();
    QCoreApplication::exec();
    m_progress.clear();
    return !m_signals.isInterrupted();
}

QStringList JobsSession::workerArguments()
{
    const QString folder = workerFolder(m_started);
    QDir().mkpath(folder);
    QStringList arguments{u"--"_s + workerOption, folder};
    const int cores = std::max(1, QThread::idealThreadCount());
    if (m_screen.line().command == CommandLine::Command::sheet)
        arguments << u"--set"_s
                  << u"%1=%2"_s.arg(QString(Prefs::prefPassProcesses))
                         .arg(std::max(1, cores / m_plan.workers));
    return arguments + m_plan.typed;
}

void JobsSession::startWorker()
{
    auto *worker = new WorkerProcess(workerArguments(), this);
    const QString folder = workerFolder(m_started++);
    ++m_running;
    connect(worker, &WorkerProcess::told, this,
            [this, worker](const Dico &message) { told(*worker, message); });
    connect(worker, &WorkerProcess::ended, this, [this, worker, folder] {
        rmCocoa(folder);
        workerEnded(*worker);
    });
    giveSource(*worker);
}

void JobsSession::giveSource(WorkerProcess &worker)
{
    worker.setSource({});
    if (m_isStopping || m_nextTaken == m_sources.size())
        return worker.close();
    Source &source = m_sources[m_nextTaken];
    worker.setSource(m_nextTaken++);
    source.worker = &worker;
    source.stage = Source::Stage::analysing;
    Dico message = workerMessage(WorkerWords::take);
    write(message, WorkerKeys::source, source.path);
    worker.say(message);
    showProgress();
}

void JobsSession::told(WorkerProcess &worker, const Dico &message)
{
    if (!worker.source())
        return;
    const size_t position = *worker.source();
    Source &source = m_sources[position];
    const QString word = readStr(message, WorkerKeys::word);
    source.isTold = source.isTold || word == WorkerWords::refused || word == WorkerWords::outcome ||
                    word == WorkerWords::printed;
    if (word == WorkerWords::analysed) {
        source.naming = namingOf(message);
        source.stage = Source::Stage::ready;
        makeInOrder();
    } else if (word == WorkerWords::refused) {
        ++m_refused;
        m_results.refused(position, readStr(message, WorkerKeys::source),
                          readStr(message, WorkerKeys::reason));
    } else if (word == WorkerWords::alert) {
        takeAlert(source, alertOf(message));
    } else if (word == WorkerWords::further) {
        takeFurther(source, read(message, WorkerKeys::number).value_or(1));
    } else if (word == WorkerWords::progress) {
        takeProgress(source, message);
    } else if (word == WorkerWords::outcome) {
        m_results.finished(position, outcomeOf(message));
    } else if (word == WorkerWords::printed) {
        m_results.printed(position, readStr(message, WorkerKeys::text));
    } else if (word == WorkerWords::done) {
        sourceDone(position);
        if (read(message, WorkerKeys::isLast).value_or(false))
            worker.setSource({});
        else
            giveSource(worker);
    }
}

void JobsSession::takeAlert(Source &source, const AlertRequest &alert)
{
    if (alert.alternateButton.isEmpty()) {
        alertTimed(alert.title, alert.text, alert.defaultButton, {}, {}, alert.style,
                   alert.seconds);
        return;
    }
    source.question = alert;
    askInOrder();
}

void JobsSession::takeProgress(Source &source, const Dico &message)
{
    source.landed = read(message, WorkerKeys::landed).value_or(0);
    source.planned = read(message, WorkerKeys::planned).value_or(0);
    source.stage = Source::Stage::settled;
    askInOrder();
    showProgress();
}

void JobsSession::sourceDone(size_t position)
{
    Source &source = m_sources[position];
    source.stage = Source::Stage::done;
    source.worker = nullptr;
    source.question.reset();
    ++m_done;
    // An analysis that was stopped says nothing.
    if (source.isTold || m_isStopping)
        m_results.leftOut(position);
    else
        tellFailure(position, localised(u"V_reason_stopped"_s));
    goOn();
}

void JobsSession::sourceLost(size_t position)
{
    const Source &source = m_sources[position];
    if (!source.isTold)
        tellFailure(position,
                    localised(m_isStopping ? u"V_reason_stopped"_s : u"V_reason_processEnded"_s));
    sourceDone(position);
}

void JobsSession::tellFailure(size_t position, const QString &reason)
{
    Source &source = m_sources[position];
    source.isTold = true;
    if (m_screen.line().command != CommandLine::Command::sheet)
        return m_results.refused(position, source.path, reason);
    m_results.finished(position, m_screen.failure(source.path, reason));
}

void JobsSession::workerEnded(WorkerProcess &worker)
{
    --m_running;
    if (const auto position = worker.source())
        sourceLost(*position);
    worker.deleteLater();
    if (!m_isStopping && m_nextTaken < m_sources.size())
        startWorker();
    if (m_running == 0)
        QCoreApplication::quit();
}

void JobsSession::goOn()
{
    makeInOrder();
    askInOrder();
    showProgress();
}

void JobsSession::makeInOrder()
{
    using Stage = Source::Stage;
    for (; m_nextMade < m_sources.size(); ++m_nextMade) {
        Source &source = m_sources[m_nextMade];
        if (source.stage < Stage::ready)
            return;
        if (source.stage == Stage::ready)
            make(source);
    }
}

void JobsSession::make(Source &source)
{
    const SheetTarget target = sheetTarget(destinationFolder(m_screen.destinationField()),
                                           source.path, source.naming, m_takenNames);
    source.stage = Source::Stage::making;
    ++m_begun;
    if (!m_progress.isTerminal())
        m_progress.print(u"[%1/%2] %3"_s.arg(m_begun)
                             .arg(int(m_sources.size()) - m_refused)
                             .arg(QFileInfo(source.path).fileName()));
    Dico message = workerMessage(WorkerWords::make);
    write(message, WorkerKeys::number, target.number);
    source.worker->say(message);
}

void JobsSession::askInOrder()
{
    for (; m_nextAsked < m_sources.size(); ++m_nextAsked) {
        Source &source = m_sources[m_nextAsked];
        if (const auto question = std::exchange(source.question, {})) {
            source.worker->say(answerTo(*question));
        }
        if (source.stage < Source::Stage::settled)
            return;
    }
}

Dico JobsSession::answerTo(const AlertRequest &question)
{
    Dico message = workerMessage(WorkerWords::answer);
    if (m_answer) {
        write(message, WorkerKeys::button, int(*m_answer));
        write(message, WorkerKeys::isForAll, true);
        return message;
    }
    // A worker knows of one source only, and does not offer to answer for all.
    const AlertAnswer answer = alertTimedSuppressible(
        question.title, question.text, question.defaultButton, question.alternateButton,
        localised(u"D_applyToAll"_s), question.style, question.seconds);
    if (answer.isSuppressed && answer.button != AlertButton::timeout)
        m_answer = answer.button;
    write(message, WorkerKeys::button, int(answer.button));
    return message;
}

void JobsSession::takeFurther(Source &source, int number)
{
    SheetNaming naming = source.naming;
    naming.firstNumber = number;
    const SheetTarget target = sheetTarget(destinationFolder(m_screen.destinationField()),
                                           source.path, naming, m_takenNames);
    Dico message = workerMessage(WorkerWords::answer);
    write(message, WorkerKeys::number, target.number);
    source.worker->say(message);
}

void JobsSession::showProgress()
{
    while (m_oldest < m_nextTaken && m_sources[m_oldest].stage == Source::Stage::done)
        ++m_oldest;
    if (m_oldest == m_nextTaken || !m_progress.isTerminal())
        return;
    int landed = 0;
    int planned = 0;
    double made = m_done;
    for (size_t position = m_oldest; position < m_nextTaken; ++position) {
        const Source &source = m_sources[position];
        if (source.stage == Source::Stage::done || source.planned == 0)
            continue;
        landed += source.landed;
        planned += source.planned;
        made += double(source.landed) / source.planned;
    }
    const auto total = double(m_sources.size());
    const QString pictures =
        planned > 0 ? filled(u"%@ %ld/%ld ", localisedCapitalised(u"th"_s), landed, planned)
                    : QString();
    m_progress.show(filled(u"[%ld/%lu] ", m_done, m_sources.size()) + pictures +
                    u"%1% %2"_s.arg(int(100 * made / total), 3)
                        .arg(QFileInfo(m_sources[m_oldest].path).fileName()));
}

void JobsSession::stop()
{
    m_isStopping = true;
    m_progress.clear();
    for (const Source &source : m_sources) {
        if (source.worker)
            source.worker->say(workerMessage(WorkerWords::stop));
    }
}

} // namespace vignar
