#pragma once

#include "app/rowPictures.h"
#include "app/sheetDestination.h"

#include <memory>

namespace vignar
{

/// The row whose turn comes next: its pictures are taken while the sheet before it is
/// composed. Nothing of it shows; it is given up without a trace whenever its turn finds
/// it other than it was.
class NextRow
{
public:
    struct Plan {
        /// Its record with what the preferences ask for.
        SourceDico source;
        int layout = mixLayout;
        SheetTarget target;
    };

    /// Claims the folder of a row, plans, and starts its passes. False, and nothing has
    /// happened, where that is not possible.
    bool begin(const Plan &plan);

    /// Path of its source; null when there is none.
    const QString &source() const { return m_source; }
    /// Path of its sheet without extension; null when there is none.
    const QString &dstPath() const { return m_dstPath; }

    /// The pictures under way of that source and sheet; of others they are given up, and
    /// null is the answer.
    std::unique_ptr<RowPictures> handOver(const QString &source, const QString &dstPath);

    void suspend();
    void resume();
    /// Kills what runs and removes what is there.
    void release();

private:
    QString m_source;
    QString m_dstPath;
    std::unique_ptr<RowPictures> m_pictures;
};

} // namespace vignar
