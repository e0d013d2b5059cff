#include "analysis/sourceNotices.h"

#include "classShared/lineLog.h"
#include "settings/alerts.h"
#include "settings/stringTables.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace vignar
{
namespace
{

void timedNotice(const QString &title, const QString &text, AlertStyle style, int seconds)
{
    alertTimed(title, text, {}, {}, {}, style, seconds);
}

} // namespace

// Two of the texts stand in both languages at once, whatever the interface speaks.

void noticeUnknownDuration(const QString &srcPath)
{
    timedNotice(QFileInfo(srcPath).fileName(),
                u"(fr)\nDurée introuvable :-( La barre de progression sera fausse.\n\n"
                "(en)\nThe duration could not be found: the progress bar will be wrong."_s,
                AlertStyle::warning, 60);
}

void noticeBrokenTimecode()
{
    timedNotice(localised(u"D_duration_1"_s), localised(u"D_duration_2"_s), AlertStyle::warning,
                60);
}

void noticeLostSound(const QString &srcPath)
{
    timedNotice(filled(u"%@audio :-(", QFileInfo(srcPath).fileName() + u'\n'),
                u"(fr)\nSource de m***e ET sonorisée ou pas :-( Elle sera traitée sans le son "
                "et, si elle est entrelacée, avec une taille fausse.\n\n"
                "(en)\nThis source will be processed without sound and, if it is interlaced, "
                "with a wrong size."_s,
                AlertStyle::critical, 40);
}

void noticeForDevelopers(const QString &srcPath, const QString &text)
{
    if constexpr (isVerbose())
        timedNotice(srcPath, text, AlertStyle::warning, 30);
}

} // namespace vignar
