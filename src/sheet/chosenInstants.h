#pragma once

#include "classShared/sourceDico.h"

#include <QMap>

#include <vector>

namespace vignar
{

struct ThumbnailPlan;

/// Thumbnail index to the instant, in seconds from the start of the source, of the
/// picture that the user wants there.
using ChosenInstants = QMap<int, double>;

/// What the user has chosen for a plan; entries that the plan has no place for are left
/// out. Choices hold for the layout, the count and the interval that they were made
/// with, and come back with them.
ChosenInstants chosenInstants(const SourceDico &source, int layout, const ThumbnailPlan &plan);

/// Replaces the choices for a plan in the record.
void setChosenInstants(SourceDico &source, int layout, const ThumbnailPlan &plan,
                       const ChosenInstants &chosen);

/// Puts the chosen instants and their timecodes into the plan, which has its own.
void useChosenInstants(ThumbnailPlan &plan, int layout, const SourceDico &source);

/// Index of the instant closest to the seconds, the earlier of two equally close; -1
/// without instants. They are in ascending order.
int nearestInstant(const std::vector<double> &instants, double seconds);

} // namespace vignar
