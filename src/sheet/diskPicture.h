#pragma once

#include "classShared/wholeFile.h"

#include <QString>

namespace vignar
{

/// Makes the 360 × 480 picture of two extracted pictures and has it written. False when there
/// is no picture or no writing.
bool multimediaDiskThumb(const QString &pictureFolder, const QString &destination,
                         const FileWriter &write = writeOver);

} // namespace vignar
