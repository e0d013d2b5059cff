#include "app/sheetDriver.h"

#include "app/batchList.h"
#include "app/destinationChecks.h"
#include "app/measuredDuration.h"
#include "app/sheetDisplay.h"
#include "classShared/format.h"
#include "classShared/lineLog.h"
#include "settings/logFiles.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/ownMark.h"
#include "sheet/plannedSource.h"
#include "tasks/toolPlaces.h"

#include <QFileInfo>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

SourceDico SheetDriver::planningInput(const SourceDico &source, int layout)
{
    SourceDico input = source;
    if (prefValue(Prefs::prefLimitAuto))
        write(input, Keys::thNumberAuto, 1);
    if (prefValue(Prefs::prefDerush)) {
        write(input, Keys::thDerush, 1);
        write(input, Keys::thDerushInterval, prefValue(Prefs::prefDerushInterval));
    }
    if (prefValue(Prefs::prefTrueTimecode))
        write(input, Keys::thTrueTimecode, 1);
    write(input, Keys::thNumberInt, prefValue(limitKey(layout)));
    return input;
}

QString SheetDriver::destination() const
{
    return destinationFolder(m_outlets.destinationField());
}

SheetTarget SheetDriver::plannedTarget(const SourceDico &source, QSet<QString> &taken) const
{
    return sheetTarget(destination(), readStr(source, Keys::srcPathStr), sheetNaming(source),
                       taken);
}

StepEnd SheetDriver::beginRow()
{
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::encDeb);
    prefWrite(RunKeys::encFin, 1);
    m_outlets.setActionText(RunnerKind::main, QFileInfo(m_outcome->source).fileName());
    m_outlets.setStepsText({});
    m_outlets.setProgressMaximum(ProgressBar::steps, 0);
    const Result<void> prepared = prepareRow();
    // Whatever the row has not taken over has been begun in vain.
    m_next.release();
    return prepared ? StepEnd::again : failRow(prepared.reason(), m_outcome->status);
}

Result<void> SheetDriver::prepareRow()
{
    if (ffmpegPath().isEmpty())
        return Failure{localised(u"V_reason_noFfmpeg"_s)};
    if (auto folder = preparedDestination(destination()); !folder)
        return folder;

    if (auto settled = settleNames(); !settled)
        return settled;
    if (auto space = checkedSpace(destination()); !space)
        return space;
    return takeFolder();
}

void SheetDriver::setTarget(const SheetTarget &target)
{
    m_target = target;
    prefWriteChildDico(RunKeys::processEncDico, Keys::dstPathStr, m_target.dstPath);
    prefWriteChildDico(RunKeys::processEncDico, Keys::dstPathStrMultimediaHd,
                       m_target.diskPicturePath);
}

SheetTarget SheetDriver::furtherTarget()
{
    SheetNaming naming = sheetNaming(workingRecord());
    naming.firstNumber = m_outlets.furtherNumber(m_outcome->source, m_target.number + 1);
    return sheetTarget(destination(), m_outcome->source, naming, m_taken);
}

Result<void> SheetDriver::settleNames()
{
    setTarget(plannedTarget(workingRecord(), m_taken));
    const QString usual = m_target.sheetFile(m_outcome->format);
    for (;;) {
        const auto places = settlePlaces(m_target, m_outcome->format, m_batch.count() > 1);
        if (!places)
            return Failure{places.reason()};
        m_agreed = places->agreed;
        if (places->sheet == PlacesSettled::Sheet::keep)
            return keepSheet();
        if (places->sheet == PlacesSettled::Sheet::make)
            break;
        setTarget(furtherTarget());
    }
    const QString sheet = m_target.sheetFile(m_outcome->format);
    if (sheet != usual)
        m_outcome->notes += filled(localised(u"V_reason_notOurs"_s), usual, sheet);
    return {};
}

/// A run that was killed may have left a sheet of ours without what goes with it.
Result<void> SheetDriver::keepSheet()
{
    const QString sheet = m_target.sheetFile(m_outcome->format);
    const QStringList beside = sideFiles(m_target);
    const auto isMissing = [](const QString &path) { return !fileIdentity(path); };
    m_isSheetKept = std::ranges::any_of(beside, isMissing) && bearsOurMark(sheet);
    if (m_isSheetKept) {
        // Half of a seek preview is of no use.
        const QStringList preview{m_target.vttFile(), m_target.spriteFile()};
        if (std::ranges::any_of(preview, isMissing))
            m_agreed = ownFiles(preview);
        return {};
    }
    m_outcome->status = SheetOutcome::Status::kept;
    m_outcome->sheet = sheet;
    return Failure{localised(u"V_reason_kept"_s)};
}

void SheetDriver::takeFreeTarget()
{
    const QString taken = m_target.sheetFile(m_outcome->format);
    QStringList names;
    do {
        setTarget(furtherTarget());
        names = QStringList{m_target.sheetFile(m_outcome->format)} + sideFiles(m_target);
    } while (std::ranges::any_of(
        names, [](const QString &path) { return fileIdentity(path).has_value(); }));
    m_agreed.clear();
    m_outcome->notes +=
        filled(localised(u"V_reason_appeared"_s), taken, m_target.sheetFile(m_outcome->format));
}

Result<void> SheetDriver::takeFolder()
{
    m_workClock.start();
    SheetPlan plan;
    m_pictures = m_next.handOver(m_outcome->source);
    if (m_pictures)
        plan = plannedSheet();
    m_isBegunAhead = m_pictures && !prefValue(Prefs::prefPlainPasses) &&
                     plan.ffmpegPasses == m_pictures->passes();
    if (!m_isBegunAhead) {
        // Other pictures are wanted by now.
        m_pictures.reset();
        auto folder = ExtractionFolder::make();
        if (!folder)
            return Failure{folder.reason()};
        m_pictures = std::make_unique<RowPictures>(std::move(*folder));
        plan = plannedSheet();
    }
    prefWriteChildDico(RunKeys::processEncDico, Keys::purgePathStr1, m_pictures->folder());
    summaryLogAppend(filled(u"\n----------\n\nsource              : %@\n", m_outcome->source));
    summaryLogAppend(filled(u"destination         : %@\n", m_target.dstPath));
    prefWriteChildDico(RunKeys::processEncDico, Keys::encQtEnc, 1);
    return usePlan(plan);
}

SheetPlan SheetDriver::plannedSheet() const
{
    return planSheet(m_choices.layout, planningInput(workingRecord(), m_choices.layout),
                     m_pictures->folder());
}

Result<void> SheetDriver::usePlan(const SheetPlan &plan)
{
    m_plan = plan.thumbnails;
    m_outcome->interval = m_plan.interval;
    m_outcome->intervalAsked = m_plan.askedInterval;
    m_retakes = {m_plan, m_pictures->folder(), read(workingRecord(), Keys::w_duration).value_or(0)};
    m_areBlanksSettled = false;
    if (auto possible = checkedPlan(plan, m_choices); !possible)
        return possible;
    if (!plan.ffmpegPasses.isEmpty())
        prefWriteChildDico(RunKeys::processEncDico, Keys::appvgThFf, plan.ffmpegPasses);
    if (!plan.grabberPasses.isEmpty())
        prefWriteChildDico(RunKeys::processEncDico, Keys::appvgThQt, plan.grabberPasses);
    prefWriteChildDico(RunKeys::processEncDico, Keys::appvgDisplay, plan.display);
    m_outlets.setProgressMaximum(ProgressBar::steps, m_plan.count);
    return {};
}

StepEnd SheetDriver::planAgain()
{
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::encV);
    if (const Result<void> planned = usePlan(plannedSheet()); !planned)
        return failRow(planned.reason(), SheetOutcome::Status::failed);
    return StepEnd::again;
}

/// The pictures are begun afresh in a folder of their own: other instants have the same names.
Result<void> SheetDriver::planMeasured(double seconds)
{
    auto folder = ExtractionFolder::make();
    if (!folder)
        return Failure{folder.reason()};
    const SourceDico before = workingRecord();
    const SourceDico record = withDuration(before, seconds);
    m_outcome->statedDuration = plannedSeconds(before);
    m_outcome->measuredDuration = plannedSeconds(record);
    logLine(u"w_duration          :-( %ld s stated, %ld s measured", m_outcome->statedDuration,
            m_outcome->measuredDuration);
    m_pictures = std::make_unique<RowPictures>(std::move(*folder));
    m_batch.setRecord(
        m_row, withDuration(read(m_batch.row(m_row), RowKeys::dico).value_or(Dico()), seconds));
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::appvgThFf);
    prefDeleteChildDico0(RunKeys::processEncDico, Keys::appvgDisplay);
    if (!contains(record, Keys::intraFailure))
        prefDeleteChildDico0(RunKeys::processEncDico, Keys::intraFailure);
    prefWriteChildDico(RunKeys::processEncDico, Keys::w_duration,
                       read(record, Keys::w_duration).value_or(1));
    prefWriteChildDico(RunKeys::processEncDico, Keys::purgePathStr1, m_pictures->folder());
    prefWriteChildDico(RunKeys::processEncDico, Keys::encV, 1);
    return {};
}

void SheetDriver::beginNextRow()
{
    const int index = m_batch.waitingRow(m_row + 1);
    if (index < 0 || prefValue(Prefs::prefPlainPasses) ||
        !QFileInfo::exists(m_batch.sourcePath(index)) || !m_next.source().isNull())
        return;
    const RowChoices choices = choicesOf(m_batch.row(index));
    const SourceDico record = read(m_batch.row(index), RowKeys::dico).value_or(Dico());
    // Its names are taken when its turn comes.
    QSet<QString> taken = m_taken;
    const SheetTarget target = plannedTarget(record, taken);
    if (!isMadeWithoutAsking(target, choices.format))
        return;
    if (m_next.begin({planningInput(record, choices.layout), choices}))
        Q_EMIT aheadBegun();
}

} // namespace vignar
