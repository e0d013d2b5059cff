#pragma once

#include "classShared/keys.h"

#include <functional>

namespace vignar
{

/// What the corrections look at beside the record.
struct FieldOrderContext {
    /// Localised field order measured on decoded frames; null: undecided. Empty: no probe.
    std::function<QString()> measure;
    bool isMovieFrameworkOnly = false;
};

/// Corrects the field order of the first video stream where the readers are known to be
/// wrong for its codec.
void correctFieldOrder(Dico &record, const FieldOrderContext &context);

} // namespace vignar
