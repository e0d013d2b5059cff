#include "shell/desktopSession.h"

#include "classShared/format.h"
#include "classShared/lineLog.h"
#include "classShared/standIns.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "shell/noticeBar.h"
#include "shell/shellKeys.h"
#include "shell/windowPlaces.h"

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

const QString windowName = u"main"_s;
constexpr int endAttemptLimit = 3;

} // namespace

SessionState DesktopSession::state()
{
    SessionState state;
    const BatchList &batch = m_application.whichArrayController();
    for (int row = 0; row < batch.count(); ++row)
        state.rows.append({batch.row(row), m_model.fate(batch.sourcePath(row))});

    state.pending = m_application.unfinishedSources();

    state.isMaking = m_application.sheetDriver().isActive() && !m_isEnding;
    return state;
}

void DesktopSession::start(const QStringList &paths)
{
    // The list first: the drawer that it opens is part of the window's place.
    restore();
    sweepStandIns(m_application.unfinishedSources() + m_model.sources() + paths);
    restoreWindow();
    m_window.show();
    if (!paths.isEmpty())
        openFiles(paths);
}

void DesktopSession::restoreWindow()
{
    restoreWindowPlace(m_window, windowName);
    if (const auto width = prefStored(ShellKeys::drawerWidth); width && m_window.isDrawerOpen())
        m_window.setDrawerWidth(*width);
}

void DesktopSession::saveWindow()
{
    saveWindowPlace(m_window, windowName);
    if (m_window.isDrawerOpen())
        prefWrite(ShellKeys::drawerWidth, m_window.drawerWidth());
}

void DesktopSession::restore()
{
    const SessionState saved = m_saved.load();
    BatchList &batch = m_application.whichArrayController();
    int unmade = 0;
    for (const SessionState::Row &row : saved.rows) {
        batch.append(row.entry);
        const int index = batch.count() - 1;
        m_model.setFate(batch.sourcePath(index), row.fate);
        unmade += batch.resultat(index) != Puces::puceSuccess;
    }
    setGoAllowed(batch.count() > 0);
    if (saved.isMaking) {
        Notice notice{NoticeKind::warning,
                      localised(u"V_crash_title"_s),
                      filled(localised(u"V_crash_text"_s), unmade),
                      {}};
        if (unmade > 0)
            notice.buttons.append(
                {localised(u"V_crash_goOn"_s), [this] { go(RowsToMake::unmade); }});
        m_window.notices().show(notice);
    }
    if (!saved.pending.isEmpty())
        openFiles(saved.pending);
}

void DesktopSession::quit()
{
    m_window.close();
}

void DesktopSession::quitNow()
{
    m_window.setCloseQuestion({});
    if (!m_isEnding) {
        m_isEnding = true;
        saveWindow();
        m_saved.freeze();
        m_application.stopAll();
    }
    m_window.close();
    endWhenIdle();
}

bool DesktopSession::mayClose()
{
    if (m_isEnding)
        return true;
    if (!m_application.isCloseQuit())
        return false;
    // Saved before the stop: what it interrupts waits in the list of the next start.
    m_isEnding = true;
    saveWindow();
    m_saved.freeze();
    m_application.stopAll();
    return true;
}

void DesktopSession::endWhenIdle()
{
    if (!m_isEnding || m_hasEnded)
        return;
    if (m_application.sheetDriver().isActive() || m_application.isTakingSources()) {
        m_endTimer.start();
        return;
    }
    m_hasEnded = true;
    m_endTimer.stop();
    // Queued: a driver may still be on the call stack.
    QMetaObject::invokeMethod(this, &DesktopSession::ended, Qt::QueuedConnection);
}

void DesktopSession::retryEnding()
{
    ++m_endAttempts;
    if (m_endAttempts < endAttemptLimit) {
        logLine(m_endAttempts == 1 ? u"…et 2"_s : u"…et 3"_s);
        m_application.stopAll();
        return;
    }
    // The tools die with us.
    logLine(u"…et 3 :-( echec");
    m_endTimer.stop();
    m_hasEnded = true;
    Q_EMIT ended();
}

} // namespace vignar
