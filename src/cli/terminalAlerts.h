#pragma once

#include "settings/alerts.h"

namespace vignar
{

class ProgressLine;

/// Alerts on the terminal: notices are printed, questions asked where somebody can
/// answer and left unanswered elsewhere.
class TerminalAlerts : public AlertPresenter
{
public:
    explicit TerminalAlerts(ProgressLine &line);

    AlertAnswer present(const AlertRequest &request) override;

private:
    AlertAnswer ask(const AlertRequest &request);

    ProgressLine &m_line;
};

} // namespace vignar
