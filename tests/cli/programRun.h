#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QStringList>

namespace vignar
{

/// Milliseconds that a test waits for the program.
constexpr int patience = 60000;

/// What a run of the program has left: its status (-1: it crashed or hung), its standard
/// error, and the objects of --json.
struct ProgramRun {
    int status = -1;
    QString errors;
    QList<QJsonObject> lines;
};

inline ProgramRun finished(QProcess &process)
{
    ProgramRun run;
    if (!process.waitForFinished(patience))
        return run;
    run.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.errors = QString::fromUtf8(process.readAllStandardError());
    for (const QByteArray &line : process.readAllStandardOutput().split('\n')) {
        if (!line.isEmpty())
            run.lines.append(QJsonDocument::fromJson(line).object());
    }
    return run;
}

inline ProgramRun runVignar(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(VIGNAR_CLI), arguments);
    return finished(process);
}

} // namespace vignar
