#include "analysis/sourceNotices.h"

#include "classShared/format.h"
#include "settings/stringTables.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace vignar
{

void showNotice(const SourceNotice &notice)
{
    alertTimed(notice.title, notice.text, {}, {}, {}, notice.style, notice.seconds);
}

// Two of the texts stand in both languages at once, whatever the interface speaks.

SourceNotice unknownDurationNotice(const QString &srcPath)
{
    return {QFileInfo(srcPath).fileName(),
            u"(fr)\nDurée introuvable :-( La barre de progression sera fausse.\n\n"
            "(en)\nThe duration could not be found: the progress bar will be wrong."_s,
            AlertStyle::warning, 60};
}

SourceNotice brokenTimecodeNotice()
{
    return {localised(u"D_duration_1"_s), localised(u"D_duration_2"_s), AlertStyle::warning, 60};
}

SourceNotice lostSoundNotice(const QString &srcPath)
{
    return {filled(u"%@audio :-(", QFileInfo(srcPath).fileName() + u'\n'),
            u"(fr)\nSource de m***e ET sonorisée ou pas :-( Elle sera traitée sans le son "
            "et, si elle est entrelacée, avec une taille fausse.\n\n"
            "(en)\nThis source will be processed without sound and, if it is interlaced, "
            "with a wrong size."_s,
            AlertStyle::critical, 40};
}

} // namespace vignar
