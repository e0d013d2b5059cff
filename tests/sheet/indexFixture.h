#pragma once

#include "sheet/intraSearch.h"
#include "sheet/pictureTimes.h"
#include "tasks/blockingRuns.h"
#include "tasks/toolPlaces.h"

#include <QProcess>
#include <QTemporaryDir>

#include <cmath>

namespace vignar
{

/// Videos that ffmpeg makes, and what it finds in them by decoding.
class MadeVideos
{
public:
    /// Cuts soon after a key picture make intra pictures that are none.
    static QString cuts()
    {
        return QStringLiteral(
            "-vf negate=enable='lt(mod(t\\,3.4)\\,1.7)' -c:v libx264 -preset fast "
            "-x264-params keyint=200:min-keyint=199:scenecut=100");
    }

    static QString moving() { return QStringLiteral("-f lavfi -i testsrc2=s=96x64:r=25:d=30"); }
    static QString sounding() { return moving() + QStringLiteral(" -f lavfi -i sine=d=30"); }

    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString input(const QString &name) const { return QStringLiteral("-i ") + path(name); }

    /// From words between blanks.
    bool make(const QString &name, const QString &input, const QString &options) const
    {
        QStringList arguments{QStringLiteral("-nostdin"), QStringLiteral("-v"),
                              QStringLiteral("error"), QStringLiteral("-y")};
        arguments << input.split(QLatin1Char(' ')) << options.split(QLatin1Char(' ')) << path(name);
        return QProcess::execute(ffmpegPath(), arguments) == 0;
    }

    /// When the intra picture that a pass of an instant takes is shown (seconds), as the pass
    /// with another input tells it; nothing where it takes none.
    static std::optional<double> decodedTime(const QStringList &input, double instant)
    {
        using namespace Qt::StringLiterals;
        const QStringList plain{ffmpegPath(), u"-ss"_s, QString::number(instant, 'f', 2)};
        QStringList pass{ffmpegPath()};
        pass << input << u"-t"_s << u"12"_s << u"-vf"_s
             << u"select=eq(pict_type\\,I)"_s + timeTeller(0) << u"-vframes"_s << u"1"_s << u"-f"_s
             << u"null"_s << u"-an"_s << u"-"_s;
        return toldTime(taskArray(pass), plain + pass.mid(1), 0);
    }

    /// Where an index tells of another picture than decoding finds; empty when nowhere.
    QString firstDifference(PictureIndex &index, const QString &name) const
    {
        using namespace Qt::StringLiterals;
        for (const double instant : {0.0, 0.04, 2.0, 3.4, 5.13, 7.9, 13.6, 20.41, 29.5}) {
            const auto [outcome, picture] = intraPictureAt(index, instant, 12);
            const QString seek = QString::number(instant, 'f', 2);
            const auto decoded = decodedTime({u"-ss"_s, seek, u"-i"_s, path(name)}, instant);
            const double told = double(picture.shownAt) / double(index.ticksASecond());
            const bool isSame = decoded ? outcome == IntraSearch::Outcome::found &&
                                              std::abs(told - *decoded) < 0.001
                                        : outcome == IntraSearch::Outcome::none;
            if (!isSame)
                return u"%1: %2, not %3"_s.arg(seek).arg(told).arg(decoded.value_or(-1));
        }
        return {};
    }

private:
    QTemporaryDir m_folder;
};

} // namespace vignar
