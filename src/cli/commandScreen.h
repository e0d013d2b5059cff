#pragma once

#include "app/outlets.h"
#include "classShared/sourceDico.h"
#include "cli/commandLine.h"

namespace vignar
{

/// What the user of a command line has chosen, as the batch control asks for it.
class CommandScreen : public Outlets
{
public:
    explicit CommandScreen(const CommandLine &line) : m_line(line) {}

    int chosenLayout() const override;
    int chosenFormat() const override;
    QString destinationField() const override;

    const CommandLine &line() const { return m_line; }

    /// True when the sheets have nowhere to go: the folder was typed or is in the
    /// preferences, and is not there.
    bool isDestinationMissing() const;

    /// The end of a source that no run has told of.
    SheetOutcome failure(const QString &source, const QString &reason) const;

    /// The end of a source whose sheet has nowhere to go.
    SheetOutcome destinationFailure(const QString &source) const;

    /// Answers the replace question for the next run as --existing says.
    void answerReplaceQuestion() const;

    /// What the command analyse prints of a source.
    QString analysisResult(SourceDico record) const;

private:
    const CommandLine m_line;
};

} // namespace vignar
