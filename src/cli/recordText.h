#pragma once

#include "classShared/sourceDico.h"
#include "sheet/thumbnailPlan.h"

#include <QString>

namespace vignar
{

/// A record for people: container first, then each stream, units written out.
QString recordText(const SourceDico &record);

/// A plan for people: its numbers, then one line an instant.
QString planText(const QString &source, int layout, const SheetPlan &plan);

} // namespace vignar
