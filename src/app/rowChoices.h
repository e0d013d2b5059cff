#pragma once

#include "app/batchEntry.h"
#include "sheet/sheetComposer.h"

namespace vignar
{

/// What a row is made as now, from its own choices and the preferences.
struct RowChoices {
    int layout = mixLayout;
    /// Pixels across the sheet; 0 for a PDF.
    int width = 0;
    SheetFormat format = SheetFormat::jpeg;
};

RowChoices choicesOf(const BatchEntry &row);

/// The preference that limits the number of thumbnails of a layout.
Key<int> limitKey(int layout);

} // namespace vignar
