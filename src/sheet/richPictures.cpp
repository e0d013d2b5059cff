#include "sheet/richPictures.h"

#include "classShared/lineLog.h"
#include "classShared/sizes.h"

using namespace Qt::StringLiterals;

namespace vignar
{

namespace
{

int neighbourOf(int first, int count)
{
    if (first >= 3)
        return first - 3;
    if (first + 2 < count)
        return first + 1;
    return first != 0 ? 0 : count - 2;
}

} // namespace

std::vector<int> recordWeights(const std::vector<double> &weights)
{
    const int count = static_cast<int>(weights.size());
    if (count == 1)
        return {0};
    std::vector<int> records;
    double heaviest = -1;
    for (int index = count * 2 / 10; index < count * 9 / 10; ++index) {
        if (weights[index] > heaviest) {
            heaviest = weights[index];
            records.push_back(index);
        }
    }
    return records;
}

PicturePair diskPictures(const std::vector<double> &weights)
{
    const std::vector<int> records = recordWeights(weights);
    if (records.empty())
        return {};
    if (weights.size() == 1)
        return {0, -1};
    const int first = records.back();
    // Deliberately the record that the heaviest one broke, which lies earlier in the
    // movie, and not the second heaviest, which is often its twin.
    if (records.size() > 1)
        return {first, records[records.size() - 2]};
    return {first, neighbourOf(first, static_cast<int>(weights.size()))};
}

std::vector<double> loggedWeights(const QStringList &pictures)
{
    std::vector<double> weights;
    weights.reserve(pictures.size());
    for (const QString &path : pictures)
        weights.push_back(poidsFile(path, u"o"_s));
    int previous = -1;
    for (const int index : recordWeights(weights)) {
        logLine(u"weightestTh #%ld      : %.0f o (prev #%ld)", index, weights[index], previous);
        previous = index;
    }
    return weights;
}

} // namespace vignar
