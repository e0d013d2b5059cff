#pragma once

#include "app/outlets.h"
#include "app/sheetDestination.h"
#include "settings/alerts.h"

#include <QByteArray>

namespace vignar
{

/// What program and worker say to each other: one JSON object a line, from the program on
/// the worker's standard input, from the worker on its standard output.
namespace WorkerKeys
{

/// Which message it is, one of WorkerWords; the other keys depend on it.
inline constexpr Key<QString> word{"word"};
inline constexpr Key<QString> source{"source"};
inline constexpr Key<QString> reason{"reason"};
/// What is to be printed.
inline constexpr Key<QString> text{"text"};
/// The number from which the name of the sheet is sought.
inline constexpr Key<int> number{"number"};
/// The button of an answer.
inline constexpr Key<int> button{"button"};
/// The answer was given to an earlier question, for all that follow.
inline constexpr Key<bool> isForAll{"isForAll"};
/// The worker ends by itself and takes no other source.
inline constexpr Key<bool> isLast{"isLast"};
/// Pictures that are there, and pictures planned.
inline constexpr Key<int> landed{"landed"};
inline constexpr Key<int> planned{"planned"};

} // namespace WorkerKeys

namespace WorkerWords
{

// To the worker.

/// Work on this source.
inline constexpr QLatin1String take{"take"};
/// Make the sheet of the source that was analysed.
inline constexpr QLatin1String make{"make"};
/// What was answered to the question: a button, or a number.
inline constexpr QLatin1String answer{"answer"};
/// Give up what is under way, clean up and end.
inline constexpr QLatin1String stop{"stop"};

// From the worker, about the source in hand.

/// It is known; its sheet waits for the word to make it.
inline constexpr QLatin1String analysed{"analysed"};
inline constexpr QLatin1String refused{"refused"};
/// A notice, or, where there are two buttons, a question that waits for its answer.
inline constexpr QLatin1String alert{"alert"};
/// Files that are kept bear the names; it asks for a number from the given one on.
inline constexpr QLatin1String further{"further"};
/// How many pictures are there. The first one says that all questions are over.
inline constexpr QLatin1String progress{"progress"};
inline constexpr QLatin1String outcome{"outcome"};
/// A result that is no sheet.
inline constexpr QLatin1String printed{"printed"};
/// Nothing more comes of the source.
inline constexpr QLatin1String done{"done"};

} // namespace WorkerWords

/// A message that is nothing but its word.
Dico workerMessage(QLatin1String word);
Dico outcomeMessage(const SheetOutcome &outcome);
SheetOutcome outcomeOf(const Dico &message);
Dico alertMessage(const AlertRequest &request);
AlertRequest alertOf(const Dico &message);
Dico analysedMessage(const SheetNaming &naming);
SheetNaming namingOf(const Dico &message);

/// The message on one line, without its end.
QByteArray messageLine(const Dico &message);
/// Empty where the line holds no message.
Dico messageOf(const QByteArray &line);

} // namespace vignar
