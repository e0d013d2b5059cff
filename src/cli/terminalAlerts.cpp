#include "cli/terminalAlerts.h"

#include "cli/terminal.h"

#include <poll.h>
#include <unistd.h>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// The choices as they are typed: a number, and a "!" behind it for all that follow.
QString choiceList(const AlertRequest &request)
{
    const QString choices = u"[1] %1  [2] %2"_s.arg(request.defaultButton, request.alternateButton);
    if (request.otherButton.isEmpty())
        return choices;
    return choices + (request.isSuppressible ? u"  [1!] [2!] = %1"_s : u"  [3] %1"_s)
                         .arg(request.otherButton);
}

/// A typed line, or null when the time is over, input ends or a signal came.
QString readLine(int seconds)
{
    pollfd input{STDIN_FILENO, POLLIN, 0};
    const int limit = seconds > 0 ? seconds * 1000 : -1;
    if (poll(&input, 1, limit) != 1 || !(input.revents & POLLIN))
        return {};
    char text[64];
    const ssize_t length = read(STDIN_FILENO, text, sizeof text);
    return length > 0 ? QString::fromUtf8(text, length).trimmed() : QString();
}

AlertButton buttonOf(QChar digit, const AlertRequest &request)
{
    if (digit == u'1')
        return AlertButton::first;
    if (digit == u'2')
        return AlertButton::second;
    const bool hasThird = !request.otherButton.isEmpty() && !request.isSuppressible;
    return digit == u'3' && hasThird ? AlertButton::third : AlertButton::timeout;
}

} // namespace

TerminalAlerts::TerminalAlerts(ProgressLine &line) : m_line(line) {}

AlertAnswer TerminalAlerts::present(const AlertRequest &request)
{
    // Without anybody to answer, a question is noise: what became of it is told later.
    const bool isQuestion = !request.alternateButton.isEmpty();
    if (isQuestion && !(m_line.isTerminal() && isatty(STDIN_FILENO)))
        return {};
    const QString text =
        request.text.isEmpty() ? request.title : request.title + u": "_s + request.text;
    m_line.print(text.simplified());
    return isQuestion ? ask(request) : AlertAnswer{};
}

AlertAnswer TerminalAlerts::ask(const AlertRequest &request)
{
    const QString wait = request.seconds > 0 ? u" (%1 s)"_s.arg(request.seconds) : QString();
    m_line.print(choiceList(request) + wait);
    const QString typed = readLine(request.seconds);
    if (typed.isEmpty())
        return {};
    return {buttonOf(typed.front(), request), request.isSuppressible && typed.endsWith(u'!')};
}

} // namespace vignar
