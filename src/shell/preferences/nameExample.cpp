#include "shell/preferences/nameExample.h"

#include "app/sheetDisplay.h"
#include "classShared/format.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "shell/preferences/sampleSource.h"

#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

NameExample::NameExample(QWidget *parent) : ElidedLabel(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void NameExample::refresh()
{
    const SourceDico sample = sampleSource();
    const SheetFormat format = prefValue(Prefs::prefDpi) == 0
                                   ? SheetFormat::pdf
                                   : pictureFormatOf(prefValue(Prefs::prefSheetFormat));
    QSet<QString> taken;
    const SheetTarget target =
        sheetTarget({}, readStr(sample, Keys::srcPathStr), sheetNaming(sample), taken);
    setText(filled(localised(u"V_prefs_nameExample"_s),
                   QFileInfo(target.sheetFile(format)).fileName()));
}

} // namespace vignar
