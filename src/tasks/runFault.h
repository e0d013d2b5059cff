#pragma once

#include <QString>

namespace vignar
{

/// Why a run of a tool has not given what it was started for, where that is not the fault of
/// what the source holds.
enum class RunFault {
    none,
    /// It was ended at a limit of time.
    tookTooLong,
    /// It could not have the memory that it wanted.
    neededMemory,
    /// A signal that we had not sent ended it: a crash, or somebody's kill.
    killed,
    /// The source is no video but a list of other files.
    listOfFiles
};

/// What the end of a run tells: its status, 128 plus the number of the signal that ended it,
/// and its text. Meant for runs that have failed: a source that was read in spite of a
/// complaint has no fault.
RunFault faultOf(int status, const QString &report);

/// The sentence for the user; null for none.
QString faultReason(RunFault fault);

} // namespace vignar
