#include "sheet/chosenInstants.h"

#include "classShared/format.h"
#include "sheet/thumbnailPlan.h"

#include <algorithm>
#include <cmath>

namespace vignar
{

namespace
{

/// A picture chosen for the second of eight is no choice for the second of thirty.
QString planName(int layout, const ThumbnailPlan &plan)
{
    return filled(u"%ld:%ld:%.3f", layout, plan.count, plan.interval);
}

} // namespace

ChosenInstants chosenInstants(const SourceDico &source, int layout, const ThumbnailPlan &plan)
{
    const Dico plans = read(source, Keys::chosenInstants).value_or(Dico());
    const Dico stored = plans.value(planName(layout, plan)).toMap();
    ChosenInstants chosen;
    for (auto entry = stored.cbegin(); entry != stored.cend(); ++entry) {
        bool isIndex = false;
        const int index = entry.key().toInt(&isIndex);
        const double seconds = entry.value().toDouble();
        if (isIndex && index >= 0 && index < plan.count && std::isfinite(seconds) && seconds >= 0)
            chosen.insert(index, seconds);
    }
    return chosen;
}

void setChosenInstants(SourceDico &source, int layout, const ThumbnailPlan &plan,
                       const ChosenInstants &chosen)
{
    Dico plans = read(source, Keys::chosenInstants).value_or(Dico());
    Dico stored;
    for (auto entry = chosen.cbegin(); entry != chosen.cend(); ++entry)
        stored.insert(QString::number(entry.key()), entry.value());
    plans.insert(planName(layout, plan), stored);
    write(source, Keys::chosenInstants, plans);
}

void useChosenInstants(ThumbnailPlan &plan, int layout, const SourceDico &source)
{
    const ChosenInstants chosen = chosenInstants(source, layout, plan);
    for (auto entry = chosen.cbegin(); entry != chosen.cend(); ++entry) {
        plan.instants[static_cast<size_t>(entry.key())] = entry.value();
        plan.timecodes[entry.key()] =
            timecodeText(entry.value());
        plan.chosen.insert(entry.key());
    }
}

int nearestInstant(const std::vector<double> &instants, double seconds)
{
    const auto nearest =
        std::min_element(instants.begin(), instants.end(), [seconds](double one, double other) {
            return std::abs(one - seconds) < std::abs(other - seconds);
        });
    return nearest == instants.end() ? -1 : static_cast<int>(nearest - instants.begin());
}

} // namespace vignar
