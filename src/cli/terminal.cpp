#include "cli/terminal.h"

#include "classShared/printable.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

int terminalColumns()
{
    winsize size{};
    constexpr int usualColumns = 80;
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                           : usualColumns;
}

bool writeTo(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const auto length = static_cast<size_t>(bytes.size());
    const bool isTaken = std::fwrite(bytes.constData(), 1, length, stream) == length;
    return std::fflush(stream) == 0 && isTaken;
}

} // namespace

Result<void> printResult(const QString &lines)
{
    const QString shown = isatty(STDOUT_FILENO) ? printableLines(lines) : lines;
    if (writeTo(stdout, shown + u'\n'))
        return {};
    return Failure{QString::fromLocal8Bit(std::strerror(errno))};
}

void replaceClosedStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0)
            // The lowest free number is the one that is missing.
            ::open("/dev/null", O_RDONLY);
    }
}

ProgressLine::ProgressLine() : m_isTerminal(isatty(STDERR_FILENO)) {}

void ProgressLine::show(const QString &text)
{
    if (!m_isTerminal || text == m_shown)
        return;
    m_shown = text;
    writeTo(stderr, u"\r\x1b[K"_s + printable(text).left(terminalColumns() - 1));
}

void ProgressLine::print(const QString &text)
{
    clear();
    writeTo(stderr, printable(text) + u'\n');
}

void ProgressLine::clear()
{
    if (!m_isTerminal || m_shown.isEmpty())
        return;
    m_shown.clear();
    writeTo(stderr, u"\r\x1b[K"_s);
}

} // namespace vignar
