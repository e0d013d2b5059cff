#pragma once

#include "settings/alerts.h"

#include <QString>

#include <functional>

namespace vignar
{

/// What the analysis has to tell the user. It closes itself after so many seconds, so that an
/// unattended run never waits.
struct SourceNotice {
    QString title;
    QString text;
    AlertStyle style = AlertStyle::warning;
    int seconds = 0;
};

/// Where notices go; the analysis may run on any thread.
using NoticeOutlet = std::function<void(const SourceNotice &)>;

/// Shows it at once. Main thread only.
void showNotice(const SourceNotice &notice);

SourceNotice unknownDurationNotice(const QString &srcPath);
SourceNotice brokenTimecodeNotice();
SourceNotice lostSoundNotice(const QString &srcPath);

} // namespace vignar
