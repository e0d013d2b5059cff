#pragma once

#include "app/outlets.h"
#include "cli/recordText.h"

#include <QString>

namespace vignar
{

/// The objects of --json, each on one line. Absent values are null.
QString sheetJson(const SheetOutcome &outcome);
/// Of a source that was not taken into the list.
QString refusedSheetJson(const SheetOutcome &outcome);
QString analysedJson(const SourceDico &record);
QString refusedAnalysisJson(const QString &source, const QString &reason);
QString planJson(const PlannedSource &planned);

} // namespace vignar
