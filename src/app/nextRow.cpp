#include "app/nextRow.h"

#include "app/sheetDisplay.h"
#include "classShared/lineLog.h"
#include "sheet/thumbnailPlan.h"

namespace vignar
{

bool NextRow::begin(const Plan &plan)
{
    release();
    auto folder = ExtractionFolder::make();
    if (!folder)
        return false;
    auto pictures = std::make_unique<RowPictures>(std::move(*folder));
    const SheetPlan sheet = planSheet(plan.choices.layout, plan.source, pictures->folder());
    if (sheet.ffmpegPasses.isEmpty() || !checkedPlan(sheet, plan.choices))
        return false;
    m_source = readStr(plan.source, Keys::srcPathStr);
    m_pictures = std::move(pictures);
    logLine(u"th ahead            : %@", m_source);
    m_pictures->start(sheet.ffmpegPasses, plan.source, PassExecutor::Effort::vanguard);
    return true;
}

std::unique_ptr<RowPictures> NextRow::handOver(const QString &source)
{
    if (source != m_source)
        release();
    auto pictures = std::move(m_pictures);
    release();
    return pictures;
}

void NextRow::suspend()
{
    if (m_pictures)
        m_pictures->suspend();
}

void NextRow::resume()
{
    if (m_pictures)
        m_pictures->resume();
}

void NextRow::release()
{
    m_pictures.reset();
    m_source.clear();
}

} // namespace vignar
