#include "shell/savedBatch.h"

#include <QElapsedTimer>

namespace vignar
{

SavedBatch::SavedBatch(const QString &folder, std::function<SessionState()> current,
                       QObject *parent)
    : QObject(parent), m_file(folder), m_current(std::move(current))
{
    m_writer.setMaxThreadCount(1);
    m_timer.setSingleShot(true);
    m_timer.setInterval(saveDelay);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (m_isWriting)
            m_timer.start();
        else
            saveAside();
    });
}

SavedBatch::~SavedBatch()
{
    m_writer.waitForDone();
}

void SavedBatch::changed()
{
    // Started once and left to run out: changes that keep coming must not put it off.
    if (!m_isFrozen && !m_timer.isActive())
        m_timer.start();
}

void SavedBatch::saveAside()
{
    m_timer.stop();
    m_isAnotherDue = m_isWriting;
    if (m_isWriting)
        return;
    m_isWriting = true;
    m_writer.start([this, state = m_current()] {
        QElapsedTimer clock;
        clock.start();
        m_file.write(state);
        const std::chrono::milliseconds pause(4 * clock.elapsed());
        QMetaObject::invokeMethod(this, [this, pause] {
            m_isWriting = false;
            m_timer.setInterval(std::max(saveDelay, pause));
            if (m_isAnotherDue && !m_isFrozen)
                saveAside();
        });
    });
}

bool SavedBatch::save()
{
    m_timer.stop();
    if (m_isFrozen)
        return true;
    m_writer.waitForDone();
    return m_file.write(m_current());
}

void SavedBatch::freeze()
{
    save();
    m_isFrozen = true;
}

} // namespace vignar
