#include "app/frameGrabber.h"
#include "classShared/lineLog.h"
#include "tasks/toolPlaces.h"

#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

/// A movie of 64 × 48 that tells where it was sent, with one frame that cannot be decoded.
class FakeMovie : public OpenedMovie
{
public:
    FakeMovie(double duration, QList<qint64> *visited) : m_duration(duration), m_visited(visited) {}

    double duration() const override { return m_duration; }
    qint64 timeScale() const override { return 600; }
    void setCurrentTime(qint64 time) override { m_visited->append(time); }
    QImage currentFrameImage() override
    {
        QImage frame(64, 48, QImage::Format_RGB32);
        frame.fill(Qt::green);
        return m_visited->last() == brokenTime ? QImage() : frame;
    }

    static constexpr qint64 brokenTime = 90 * 600;

private:
    double m_duration;
    QList<qint64> *m_visited;
};

class FakeFramework : public MovieFramework
{
public:
    double duration = 100;
    QList<qint64> visited;

    std::unique_ptr<OpenedMovie> openMovie(const QString &) override
    {
        return std::make_unique<FakeMovie>(duration, &visited);
    }
    Dico inspect(const QString &) override { return {}; }
    double measureFrameRate(const QString &, RateMeasurement) override { return 0; }
    bool writeExtract(const QString &, const QString &) override { return false; }
    bool canDecode(const QString &) override { return true; }
    bool hasMpeg2Playback() const override { return false; }
    bool hasMpeg2Demultiplexer() const override { return false; }
};

class TestFrameGrabber : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    FakeFramework m_framework;

    FrameRequest request(const QStringList &timecodes = {}) const
    {
        return {.source = u"a.mov"_s,
                .folder = m_folder->path(),
                .size = {32, 18},
                .timecodes = timecodes};
    }
    QStringList files() const { return QDir(m_folder->path()).entryList(QDir::Files); }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_framework = FakeFramework();
    }

    void everyTimecodeIsVisited()
    {
        QVERIFY(grabFrames(m_framework, request({u"0:00:10.50"_s, u"1:00:00.04"_s})));
        QCOMPARE(m_framework.visited, (QList<qint64>{6300, 2160024}));
        QCOMPARE(files(), (QStringList{u"img00.jpg"_s, u"img01.jpg"_s}));
        QCOMPARE(QImage(m_folder->filePath(u"img01.jpg"_s)).size(), QSize(32, 18));
    }

    void withoutTimecodesOneFrameNearTheStart()
    {
        QVERIFY(grabFrames(m_framework, request()));
        m_framework.duration = 1;
        QVERIFY(grabTestFrame(m_framework, u"a.mov"_s, m_folder->path(), {160, 90}));
        QVERIFY(grabFrames(m_framework, request()));
        QCOMPARE(m_framework.visited, (QList<qint64>{1200, 0, 0}));
        QCOMPARE(files(), (QStringList{u"img00.jpg"_s, u"qtcompliant.jpg"_s}));
    }

    void oneLostFrameCostsNoOther()
    {
        QVERIFY(!grabFrames(m_framework, request({u"0:01:29"_s, u"0:01:30"_s, u"0:01:31"_s})));
        QCOMPARE(files(), (QStringList{u"img00.jpg"_s, u"img02.jpg"_s}));

        FrameRequest keeping = request();
        keeping.isOverwrite = false;
        keeping.size = {10, 10};
        QVERIFY(!grabFrames(m_framework, keeping));
        QCOMPARE(QImage(m_folder->filePath(u"img00.jpg"_s)).size(), QSize(32, 18));
    }

    void theProgramTellsThatItHasNoFramework()
    {
        const auto run = [](const QStringList &arguments) {
            QProcess program;
            program.start(toolsFolder() + u"/qtThumbs"_s, arguments);
            const bool hasEnded = program.waitForFinished();
            return std::pair(hasEnded ? program.exitCode() : -1,
                             QString::fromUtf8(program.readAllStandardError()));
        };
        const auto [status, log] =
            run({u"-i"_s, u"-x.mov"_s, u"-w"_s, u"640"_s, u"-h"_s, u"480"_s, u"-tc"_s,
                 u"0:00:01-0:00:02"_s, u"-y"_s, u"-o"_s, m_folder->path()});
        QCOMPARE(status, 1);
        QVERIFY2(log.contains(u"How many thumbs     ? 2 (0:00:01-0:00:02)"_s), qPrintable(log));
        QVERIFY2(log.contains(u"Erreur              : not readable movie"_s), qPrintable(log));
        QCOMPARE(run({u"-i"_s, u"a.mov"_s, u"-o"_s, m_folder->path()}).first, 2);
        QVERIFY(files().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestFrameGrabber)
#include "test_frameGrabber.moc"
