#include "analysis/movieFramework.h"

namespace vignar
{
namespace
{

class AbsentMovieFramework final : public MovieFramework
{
public:
    Dico inspect(const QString &) override { return {}; }
    double measureFrameRate(const QString &, RateMeasurement) override { return 0; }
    bool writeExtract(const QString &, const QString &) override { return false; }
    bool canDecode(const QString &) override { return false; }
    std::unique_ptr<OpenedMovie> openMovie(const QString &) override { return {}; }
    bool hasMpeg2Playback() const override { return false; }
    bool hasMpeg2Demultiplexer() const override { return false; }
};

} // namespace

std::unique_ptr<MovieFramework> makeAbsentMovieFramework()
{
    return std::make_unique<AbsentMovieFramework>();
}

} // namespace vignar
