#pragma once

#include "app/outlets.h"
#include "sheet/thumbnailPlan.h"

#include <QString>

namespace vignar
{

/// The objects of --json, each on one line. Absent values are null.
QString sheetJson(const SheetOutcome &outcome);
QString refusedSheetJson(const QString &source, const QString &reason);
QString analysedJson(const SourceDico &record);
QString refusedAnalysisJson(const QString &source, const QString &reason);
QString planJson(const QString &source, int layout, const SheetPlan &plan);

} // namespace vignar
