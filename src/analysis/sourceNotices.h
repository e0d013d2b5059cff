#pragma once

#include <QString>

namespace vignar
{

/// What the analysis tells the user while it runs. Every notice closes itself, so that an
/// unattended run never waits.

void noticeUnknownDuration(const QString &srcPath);
void noticeBrokenTimecode();
void noticeLostSound(const QString &srcPath);
/// Shown with the developers' switch alone.
void noticeForDevelopers(const QString &srcPath, const QString &text);

} // namespace vignar
