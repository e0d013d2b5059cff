#include "cli/terminalAlerts.h"

#include "cli/terminal.h"

#include <QStringList>

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
    QStringList choices{u"[1] "_s + request.defaultButton, u"[2] "_s + request.alternateButton};
    if (request.isSuppressible)
        choices.append(u"[1!] [2!] "_s + request.otherButton);
    else if (!request.otherButton.isEmpty())
        choices.append(u"[3] "_s + request.otherButton);
    return choices.join(u"  "_s);
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
    const QString text =
        request.text.isEmpty() ? request.title : request.title + u": "_s + request.text;
    m_line.print(text.simplified());
    const bool isQuestion = !request.alternateButton.isEmpty();
    const bool canAnswer = m_line.isTerminal() && isatty(STDIN_FILENO);
    return isQuestion && canAnswer ? ask(request) : AlertAnswer{};
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
