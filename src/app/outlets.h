#pragma once

#include "classShared/sourceDico.h"
#include "sheet/sheetComposer.h"

#include <QStringList>

namespace vignar
{

/// The three tool runners of the application.
enum class RunnerKind { main = 0, analysis = 1, extra = 2 };

/// The progress bars that the core drives: one a runner, and the pictures of a sheet.
enum class ProgressBar { main, analysis, extra, steps };

/// What became of one row of a batch run.
struct SheetOutcome {
    enum class Status { made, kept, failed, stopped };

    QString source;
    Status status = Status::failed;
    /// One sentence; empty for a sheet that was made.
    QString reason;
    /// Path of the sheet made or kept, else empty.
    QString sheet;
    /// Path of the disk picture made or kept, else empty.
    QString diskPicture;
    /// Paths of the seek preview's files made or kept, else empty.
    QString sprite;
    QString vtt;
    /// What else is to be reported, one sentence each: files that were kept, a name that had
    /// to be another one, files beside the sheet that could not be written.
    QStringList notes;
    /// A file beside the sheet was asked for and could not be written.
    bool isIncomplete = false;
    int layout = mixLayout;
    SheetFormat format = SheetFormat::jpeg;
    /// Pictures on the sheet, and pictures planned that could not be had.
    int thumbnails = 0;
    int missing = 0;
    /// Seconds between two pictures as planned, and as asked for (0: not).
    double interval = 0;
    int intervalAsked = 0;
    /// Whole seconds, where the header stated far more than the source holds; else 0.
    int statedDuration = 0;
    int measuredDuration = 0;
    /// Wall-clock seconds spent on the row.
    double seconds = 0;
};

/// The screen as the core sees it: the window, the command line and the tests each
/// implement it. All calls come on the main thread. What only shows something does
/// nothing by default.
class Outlets
{
public:
    virtual ~Outlets() = default;

    // What the user has chosen.

    /// Layout and format (0 PDF, 1 JPEG) for rows added now.
    virtual int chosenLayout() const = 0;
    virtual int chosenFormat() const = 0;
    /// Path in the destination field, as typed.
    virtual QString destinationField() const = 0;
    virtual void setDestinationField(const QString &) {}
    /// Lets the user choose a folder, starting from one; null when declined.
    virtual QString chooseFolder(const QString &title, const QString &start)
    {
        Q_UNUSED(title)
        Q_UNUSED(start)
        return {};
    }

    /// The number, at least the given one, that tells the files of a source from those of
    /// others. Asked where files that are kept bear the names with the smaller numbers.
    virtual int furtherNumber(const QString &source, int number)
    {
        Q_UNUSED(source)
        return number;
    }

    // Progress.

    /// A maximum of 0 means that the end is not known.
    virtual void setProgressMaximum(ProgressBar, double) {}
    virtual void setProgressValue(ProgressBar, double) {}
    virtual void setPercentText(RunnerKind, const QString &) {}
    virtual void setActionText(RunnerKind, const QString &) {}
    virtual void setStepsText(const QString &) {}
    virtual void setWheelSpinning(RunnerKind, bool) {}
    virtual void setStopVisible(RunnerKind, bool) {}

    // The drop area and the buttons.

    /// imageName is "dndApp" or, while busy, "dndAppOff".
    virtual void setDropArea(const QString &imageName, const QString &caption)
    {
        Q_UNUSED(imageName)
        Q_UNUSED(caption)
    }
    virtual void setGoEnabled(bool) {}
    virtual void setDrawerOpen(bool) {}

    // What the user is told.

    /// A notice attached to the main window; nothing waits for its answer.
    virtual void showSheetNotice(const QString &title, const QString &text)
    {
        Q_UNUSED(title)
        Q_UNUSED(text)
    }
    /// A source was not taken into the batch list.
    virtual void sourceRefused(const QString &path, const QString &reason)
    {
        Q_UNUSED(path)
        Q_UNUSED(reason)
    }
    /// Every source handed to the intake has become a row or was refused.
    virtual void analysisEnded() {}
    virtual void sheetFinished(const SheetOutcome &) {}
    /// The batch is over, by itself or stopped.
    virtual void batchEnded() {}
    /// Shows a folder in the file browser.
    virtual void reveal(const QString &) {}
};

} // namespace vignar
