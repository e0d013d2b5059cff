#pragma once

#include "classShared/sourceDico.h"
#include "sheet/thumbnailPlan.h"

#include <QString>

namespace vignar
{

/// A record for people: container first, then each stream, units written out.
QString recordText(const SourceDico &record);

/// What the command plan finds out of a source.
struct PlannedSource {
    QString source;
    int layout = mixLayout;
    SheetPlan plan;
    /// Why no sheet could be made of it; empty where one could.
    QString reason;
};

/// A plan for people: its numbers, then one line for each instant.
QString planText(const PlannedSource &planned);

} // namespace vignar
