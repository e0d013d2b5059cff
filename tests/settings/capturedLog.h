#pragma once

#include "classShared/lineLog.h"

#include <QStringList>

/// Collects the log lines written while it lives.
class CapturedLog
{
public:
    CapturedLog()
    {
        vignar::setLogSink([this](const QString &line) { lines.append(line); });
    }
    ~CapturedLog() { vignar::setLogSink({}); }

    int count(const QString &text) const { return int(lines.filter(text).size()); }

    QStringList lines;
};
