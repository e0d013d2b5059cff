#pragma once

#include "app/rowChoices.h"
#include "app/rowPictures.h"

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
        RowChoices choices;
    };

    /// Plans a row and starts its passes. False, and nothing has happened, if that is not
    /// possible.
    bool begin(const Plan &plan);

    /// Path of its source; null when there is none.
    const QString &source() const { return m_source; }
    /// The pictures under way of that source; null if they are of another one, which are
    /// given up.
    std::unique_ptr<RowPictures> handOver(const QString &source);

    void suspend();
    void resume();
    /// Kills what runs and removes what is there.
    void release();

private:
    QString m_source;
    std::unique_ptr<RowPictures> m_pictures;
};

} // namespace vignar
