#include "shell/platform/batchPresence.h"

#include "settings/stringTables.h"

namespace vignar
{

using namespace Qt::StringLiterals;

void BatchPresence::setState(const BatchState &state)
{
    if (state.isRunning && !state.isPaused)
        m_services.sleepInhibitor->inhibit(localised(u"V_awake_reason"_s));
    else
        m_services.sleepInhibitor->release();
    if (state.isRunning)
        m_services.taskbarProgress->show(state.done);
    else
        m_services.taskbarProgress->hide();
}

void BatchPresence::tellEnd(const EndNotice &notice, bool isWindowActive)
{
    if (!isWindowActive)
        m_services.endNotifier->show(notice);
}

} // namespace vignar
