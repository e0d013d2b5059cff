#pragma once

#include <QProcess>

namespace vignar
{

/// Prepares a process before its start: the tool's environment, standard input from
/// nowhere, and on Linux the kernel's promise that the child dies with us, kill -9
/// included.
void prepareChild(QProcess &process);

/// The largest report of a tool that is kept, in bytes: of a longer one the head and
/// the tail remain, half each.
inline constexpr qint64 reportLimit = 8 * 1024 * 1024;

/// Collects a report within reportLimit.
class ReportBuffer
{
public:
    explicit ReportBuffer(qint64 limit = reportLimit);
    void append(const QByteArray &bytes);
    /// Head and tail; where bytes were dropped, a line break joins the two.
    QByteArray bytes() const;
    void clear();

private:
    qint64 m_limit;
    QByteArray m_head;
    QByteArray m_tail;
};

/// The bytes as UTF-8, or as Latin-1 where they are not valid UTF-8.
QString decodedReport(const QByteArray &bytes);

} // namespace vignar
