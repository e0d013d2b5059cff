#pragma once

#include "sheet/thumbnailPlan.h"

#include <map>
#include <set>

namespace vignar
{

/// True for a picture of one flat colour: averaged down to 64 × 64 pixels, which takes
/// grain and noise away, its red, green and blue deviate by less than 4 of 255 levels in
/// the root mean square. False for what does not load.
bool isBlank(const QString &picturePath);

/// Has the blank pictures of an extraction taken again: each at up to three further
/// instants, quarters of the way to the next one or to the end of the source. The first
/// that is not blank takes its place; without one the blank picture stays. Pictures at
/// instants that the user has chosen are left alone.
class BlankRetakes
{
public:
    BlankRetakes() = default;
    /// The extraction folder, and the seconds of the source.
    BlankRetakes(ThumbnailPlan plan, QString folder, double duration);

    /// Puts what the passes of the last round have left in its place. Answers the passes
    /// of the next one, index text to argument list; none when there is nothing to do.
    Dico nextRound(const SourceDico &source);

    bool isUnderWay() const { return m_round > 0; }

    /// Thumbnail index to the instant of the picture that has taken its place.
    const std::map<int, double> &replaced() const { return m_replaced; }

    /// Where a thumbnail's further pictures are written.
    QString furtherPath(int index) const;

private:
    double furtherInstant(int index) const;
    void findBlanks();
    void takeOver();

    ThumbnailPlan m_plan;
    QString m_folder;
    double m_duration = 0;
    int m_round = 0;
    std::set<int> m_blank;
    std::map<int, double> m_replaced;
};

} // namespace vignar
