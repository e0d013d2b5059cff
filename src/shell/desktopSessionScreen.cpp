#include "shell/desktopSession.h"

#include "classShared/format.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "shell/choiceRow.h"
#include "shell/destinationRow.h"
#include "shell/dropArea.h"
#include "shell/fileManager.h"
#include "shell/noticeBar.h"
#include "shell/progressPanel.h"

#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

int DesktopSession::chosenLayout() const
{
    return m_window.layoutChooser().chosen();
}

int DesktopSession::chosenFormat() const
{
    return m_window.formatChooser().chosen();
}

QString DesktopSession::destinationField() const
{
    return m_window.destination().path();
}

void DesktopSession::setDestinationField(const QString &path)
{
    m_window.destination().setPath(path);
    prefWrite(Prefs::prefDefautDstPathStr, path);
}

QString DesktopSession::chooseFolder(const QString &title, const QString &start)
{
    return m_window.destination().choose(title, start);
}

void DesktopSession::setProgressMaximum(ProgressBar bar, double maximum)
{
    if (bar == ProgressBar::steps)
        m_window.progress().setStepsMaximum(maximum);
}

void DesktopSession::setProgressValue(ProgressBar bar, double value)
{
    if (bar == ProgressBar::steps)
        m_window.progress().setStepsValue(value);
}

void DesktopSession::setActionText(RunnerKind kind, const QString &text)
{
    if (kind == RunnerKind::main) {
        m_window.progress().setFileName(text);
    } else if (kind == RunnerKind::analysis) {
        const QString source = m_application.analysisDriver().sourceAtHand();
        m_window.dropArea().setActivity(text, QFileInfo(source).fileName());
        m_saved.changed();
    }
}

void DesktopSession::setStepsText(const QString &text)
{
    m_window.progress().setSteps(text);
}

void DesktopSession::setStopVisible(RunnerKind kind, bool isVisible)
{
    if (kind == RunnerKind::analysis) {
        m_window.dropArea().setStopVisible(isVisible);
    } else if (kind == RunnerKind::main) {
        m_window.progress().setRunning(isVisible);
        showRows();
    }
}

void DesktopSession::setDropArea(const QString &imageName, const QString &caption)
{
    const bool isBusy = imageName == u"dndAppOff";
    DropArea &area = m_window.dropArea();
    area.setCaption(caption);
    if (!isBusy)
        area.setActivity({}, {});
    area.setBusy(isBusy);
    updateCommands();
    m_window.progress().setHeldUp(isBusy ? localised(u"V_progress_heldUp"_s) : QString());
}

void DesktopSession::setGoEnabled(bool isEnabled)
{
    setGoAllowed(isEnabled);
}

void DesktopSession::setDrawerOpen(bool isOpen)
{
    m_window.setDrawerOpen(isOpen);
}

void DesktopSession::showSheetNotice(const QString &title, const QString &text)
{
    m_window.notices().show({NoticeKind::information, title, text, {}});
}

void DesktopSession::sourceRefused(const QString &path, const QString &reason)
{
    m_analysis.addRefusal(path, reason);
}

void DesktopSession::analysisEnded()
{
    if (m_analysis.refused() > 0) {
        const QString title = m_analysis.refused() == 1
                                  ? localised(u"V_refused_one"_s)
                                  : filled(localised(u"V_refused_many"_s), m_analysis.refused());
        m_window.notices().show({NoticeKind::warning, title, m_analysis.troubles(), {}});
    }
    m_analysis = {};
    m_saved.changed();
    if (m_deferredGo)
        go(*std::exchange(m_deferredGo, {}));
    endWhenIdle();
}

void DesktopSession::sheetFinished(const SheetOutcome &outcome)
{
    m_run.add(outcome);
    RowFate fate{reasonText(outcome), outcome.sheet, {}};
    if (outcome.status == SheetOutcome::Status::made)
        fate.choice = m_model.choiceBegunWith(outcome.source);
    m_model.setFate(outcome.source, fate);
    showRows();
}

void DesktopSession::tellOfFailures()
{
    const bool isOne = m_run.failed() == 1;
    Notice notice{NoticeKind::failure,
                  localised(isOne ? u"D_echec_1"_s : u"D_echec_1bis"_s),
                  m_run.troubles() + u'\n' + m_run.summary(),
                  {}};
    notice.buttons.append({localised(u"V_notice_retry"_s), [this] { go(RowsToMake::unmade); }});
    m_window.notices().show(notice);
    Q_EMIT batchFinished(notice.title, m_run.summary());
}

void DesktopSession::batchEnded()
{
    const QString endTitle = localised(u"D_fin_GUI"_s);
    const Notice *shown = m_window.notices().shown();
    const bool isEndShown = shown && shown->title == endTitle;
    m_window.notices().withdraw(endTitle);
    if (m_run.failed() > 0) {
        tellOfFailures();
    } else if (isEndShown) {
        m_window.notices().show({NoticeKind::success,
                                 endTitle,
                                 (m_run.summary() + u'\n' + m_run.troubles()).trimmed(),
                                 {{localised(u"V_notice_open"_s), [this] { openDestination(); }}}});
        Q_EMIT batchFinished(endTitle, m_run.summary());
    }
    m_model.lookForSources();
    showRows();
    endWhenIdle();
}

void DesktopSession::reveal(const QString &folder)
{
    if (!m_isEnding)
        openFolder(folder, this);
}

} // namespace vignar
