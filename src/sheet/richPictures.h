#pragma once

#include <QStringList>

#include <vector>

namespace vignar
{

/// Two pictures by index; -1: none.
struct PicturePair {
    int first = -1;
    int second = -1;
};

/// The weight of a file tells how much there is to see in it, and the first fifth and
/// the last tenth (titles, credits) do not count. Indexes of those pictures in between
/// that are heavier than every one before them, ascending; the last is the heaviest.
std::vector<int> recordWeights(const std::vector<double> &weights);

/// The two pictures for a disk by their weights in bytes (-1: no such file).
PicturePair diskPictures(const std::vector<double> &weights);

/// Weights of picture files in bytes, the records among them logged.
std::vector<double> loggedWeights(const QStringList &pictures);

} // namespace vignar
