#pragma once

#include "app/outlets.h"
#include "app/poster.h"
#include "tasks/backgroundRun.h"

#include <QObject>

namespace vignar
{

class BatchList;

/// Turns the record of one source after another into a row of the batch list, as soon as its
/// poster is made on another thread. Rows and refusals come in the order in which they are
/// asked for.
class RowMaker : public QObject
{
    Q_OBJECT

public:
    RowMaker(Outlets &outlets, BatchList &batch, QObject *parent = nullptr);

    /// Also until the work on a source that was given up has ended.
    bool isBusy() const { return m_isBusy; }
    /// The source that only its poster keeps from being a row; null: none, or it is given up.
    QString source() const { return m_source; }

    /// Begins with a source; none must be under way. The record tells its path and that of
    /// the poster. A source without any picture is refused.
    void start(const SourceDico &record);

    void refuse(const QString &source, const QString &reason);

    /// No row for the source at hand; its end is told all the same.
    void giveUp();

Q_SIGNALS:
    /// The source that was begun with is a row, refused or given up.
    void ended();

private:
    struct Refusal {
        QString source;
        QString reason;
    };

    void end(SourceDico record, const Result<PosterPicture> &picture);
    void append(const SourceDico &record);

    Outlets &m_outlets;
    BatchList &m_batch;
    QString m_source;
    bool m_isBusy = false;
    QList<Refusal> m_laterRefusals;
    BackgroundRun<Result<PosterPicture>> m_poster;
};

} // namespace vignar
