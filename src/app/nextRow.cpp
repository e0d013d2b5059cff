#include "app/nextRow.h"

#include "classShared/lineLog.h"
#include "sheet/thumbnailPlan.h"

namespace vignar
{

bool NextRow::begin(const Plan &plan)
{
    release();
    auto folder = claimExtractionFolder(plan.target.dstPath);
    if (!folder)
        return false;
    auto pictures = std::make_unique<RowPictures>(*folder);
    const SheetPlan sheet = planSheet(plan.layout, plan.source, pictures->folder());
    if (sheet.ffmpegPasses.isEmpty())
        return false;
    m_source = readStr(plan.source, Keys::srcPathStr);
    m_dstPath = plan.target.dstPath;
    m_pictures = std::move(pictures);
    logLine(u"th ahead            : %@", m_source);
    m_pictures->start(sheet.ffmpegPasses, plan.source);
    return true;
}

std::unique_ptr<RowPictures> NextRow::handOver(const QString &source, const QString &dstPath)
{
    if (source != m_source || dstPath != m_dstPath)
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
    m_dstPath.clear();
}

} // namespace vignar
