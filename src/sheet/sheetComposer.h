#pragma once

#include "classShared/result.h"
#include "classShared/sourceDico.h"
#include "classShared/wholeFile.h"

#include <functional>

namespace vignar
{

enum class SheetFormat { jpeg, pdf, png, webp };

/// "jpg", "pdf", "png" or "webp".
QString sheetExtension(SheetFormat format);

/// The picture format that an extension stands for; JPEG for any other text.
SheetFormat pictureFormatOf(const QString &extension);

/// The file that a sheet is written to: dstPath with the format's extension.
QString sheetPath(const QString &dstPath, SheetFormat format);

/// Success where the sheet of a display dictionary and as many pictures can be drawn; else
/// the reason. To be asked before any picture is taken.
Result<void> sheetFits(const Dico &display, int pictureCount, SheetFormat format);

/// Draws the sheet of a display dictionary and has it written, unless mayWrite, asked once
/// the sheet is drawn, says no: that is a failure which leaves what was there. Pictures that do not
/// load are left out. The file carries its title and the name of the source (Keys::srcPathStr, may
/// be absent). The reason of a failure names the path. Needs a QGuiApplication for its texts; a
/// dictionary without colours takes them from the preferences. Any thread.
Result<void> composeSheet(const Dico &display, SheetFormat format,
                          const std::function<bool()> &mayWrite = {},
                          const FileWriter &write = writeOver);

} // namespace vignar
