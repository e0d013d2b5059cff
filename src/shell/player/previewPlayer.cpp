#include "shell/player/previewPlayer.h"

#include "app/batchList.h"
#include "app/sheetDriver.h"
#include "sheet/thumbnailPlan.h"
#include "shell/player/mpvPlayer.h"

namespace vignar
{

namespace
{

SourceDico recordOf(const BatchEntry &row)
{
    return read(row, RowKeys::dico).value_or(SourceDico());
}

int layoutOf(const BatchEntry &row)
{
    return read(row, Keys::out).value_or(mixLayout);
}

/// The plan as it is without any choice of the user's.
ThumbnailPlan barePlan(const BatchEntry &row)
{
    SourceDico source = recordOf(row);
    remove(source, Keys::chosenInstants);
    return planThumbnails(layoutOf(row), SheetDriver::planningInput(source, layoutOf(row)));
}

} // namespace

PreviewPlayer::PreviewPlayer(BatchList &batch, PlayerMaker makePlayer, QObject *parent)
    : QObject(parent), m_batch(batch), m_makePlayer(std::move(makePlayer))
{
    if (!m_makePlayer)
        m_makePlayer = [] { return std::make_unique<MpvPlayer>(Sound::device); };
    connect(&batch, &BatchList::rowRemoved, this, [this] {
        if (m_window && rowOf(m_window->path()) < 0)
            close();
    });
    connect(&batch, &BatchList::rowChanged, this, [this](int row) {
        if (m_window && m_batch.sourcePath(row) == m_window->path())
            m_window->setPictures(plannedPictures(row));
    });
}

PreviewPlayer::~PreviewPlayer()
{
    close();
}

int PreviewPlayer::rowOf(const QString &path) const
{
    for (int row = 0; row < m_batch.count(); ++row) {
        if (m_batch.sourcePath(row) == path)
            return row;
    }
    return -1;
}

PlannedPictures PreviewPlayer::plannedPictures(int row) const
{
    const BatchEntry &entry = m_batch.row(row);
    const ThumbnailPlan plan = barePlan(entry);
    return {plan.instants, chosenInstants(recordOf(entry), layoutOf(entry), plan)};
}

void PreviewPlayer::open(const SourceDico &source)
{
    const int row = rowOf(readStr(source, Keys::srcPathStr));
    if (row < 0)
        return;
    if (!m_window) {
        m_window = new PlayerWindow(m_makePlayer);
        m_window->setAttribute(Qt::WA_DeleteOnClose);
        connect(m_window, &PlayerWindow::chosenChanged, this, &PreviewPlayer::keepChosen);
    }
    const QImage poster = read(m_batch.row(row), RowKeys::img).value_or(QImage());
    const double duration = read(source, Keys::w_duration).value_or(0);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
    m_window->open(m_batch.sourcePath(row), poster, duration, plannedPictures(row));
}

void PreviewPlayer::planAgain()
{
    if (const int row = m_window ? rowOf(m_window->path()) : -1; row >= 0)
        m_window->setPictures(plannedPictures(row));
}

void PreviewPlayer::close()
{
    if (m_window)
        m_window->close();
}

void PreviewPlayer::keepChosen(const ChosenInstants &chosen)
{
    const int row = rowOf(m_window->path());
    if (row < 0)
        return;
    SourceDico source = recordOf(m_batch.row(row));
    setChosenInstants(source, layoutOf(m_batch.row(row)), barePlan(m_batch.row(row)), chosen);
    m_batch.setRecord(row, source);
}

} // namespace vignar
