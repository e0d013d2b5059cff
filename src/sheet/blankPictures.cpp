#include "sheet/blankPictures.h"

#include "classShared/lineLog.h"
#include "sheet/extractionFolder.h"
#include "sheet/extractionPasses.h"
#include "sheet/imageExport.h"
#include "sheet/pictureTimes.h"

#include <QFile>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int rounds = 3;
constexpr QSize averaged{64, 64};
constexpr double largestVariance = 4.0 * 4.0;

class Variance
{
public:
    void add(int value)
    {
        m_sum += value;
        m_squares += double(value) * value;
        ++m_count;
    }
    double value() const
    {
        const double mean = m_sum / m_count;
        return m_squares / m_count - mean * mean;
    }

private:
    double m_sum = 0;
    double m_squares = 0;
    int m_count = 0;
};

} // namespace

bool isBlank(const QString &picturePath)
{
    const QImage picture =
        loadedPicture(picturePath, averaged).convertToFormat(QImage::Format_RGB32);
    if (picture.isNull())
        return false;
    Variance red;
    Variance green;
    Variance blue;
    for (int y = 0; y < picture.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            red.add(qRed(row[x]));
            green.add(qGreen(row[x]));
            blue.add(qBlue(row[x]));
        }
    }
    return std::max({red.value(), green.value(), blue.value()}) < largestVariance;
}

BlankRetakes::BlankRetakes(ThumbnailPlan plan, QString folder, double duration)
    : m_plan(std::move(plan)), m_folder(std::move(folder)), m_duration(duration)
{
}

double BlankRetakes::furtherInstant(int index) const
{
    const auto at = static_cast<size_t>(index);
    const double start = m_plan.instants[at];
    const double end = at + 1 < m_plan.instants.size() ? m_plan.instants[at + 1] : m_duration;
    return start + std::max(end - start, 0.0) * m_round / (rounds + 1);
}

QString BlankRetakes::furtherPath(int index) const
{
    return thumbnailPath(m_folder, index) + u".further.jpg"_s;
}

void BlankRetakes::findBlanks()
{
    for (const QString &picture : extractedPictures(m_folder)) {
        const int index = thumbnailIndex(picture);
        if (size_t(index) < m_plan.instants.size() && !m_plan.chosen.contains(index) &&
            isBlank(picture))
            m_blank.insert(index);
    }
}

void BlankRetakes::takeOver()
{
    const std::set<int> tried = m_blank;
    for (const int index : tried) {
        const QString further = furtherPath(index);
        const QString picture = thumbnailPath(m_folder, index);
        const bool isTaken = imgSizes(further) && !isBlank(further) && QFile::remove(picture) &&
                             QFile::rename(further, picture);
        QFile::remove(further);
        if (!isTaken)
            continue;
        m_replaced[index] = furtherInstant(index);
        m_blank.erase(index);
    }
}

Dico BlankRetakes::nextRound(const SourceDico &source)
{
    if (m_round == 0)
        findBlanks();
    else
        takeOver();
    Dico passes;
    if (m_blank.empty() || m_round == rounds)
        return passes;
    ++m_round;
    const QString filter = thumbnailFilter(source, m_plan.size);
    const bool isTelling = contains(source, Keys::thTrueTimecode);
    for (const int index : m_blank) {
        const double instant = furtherInstant(index);
        logLine(u"th blank            : #%ld taken again at %.2f", index, instant);
        // An intra picture might only come where the next thumbnail is taken.
        const QStringList pass = ffmpegPass(
            source, instant, isTelling ? filter + timeTeller(index) : filter, furtherPath(index));
        passes.insert(QString::number(index), withoutIntraSelection(pass));
    }
    return passes;
}

} // namespace vignar
