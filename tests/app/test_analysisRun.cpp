#include "app/appDelegate.h"
#include "settings/preferenceStore.h"
#include "support/makeClip.h"
#include "support/recordingOutlets.h"
#include "tasks/workFolder.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int patience = 60000;

/// Notes rows and refusals in the order in which they come.
class OrderedOutlets : public RecordingOutlets
{
public:
    QStringList arrivals;

    void sourceRefused(const QString &path, const QString &reason) override
    {
        RecordingOutlets::sourceRefused(path, reason);
        arrivals.append(QFileInfo(path).fileName());
    }
};

} // namespace

class TestAnalysisRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(setUpWorkFolder(u"test"_s));
        QVERIFY(makeClip(clip(u"a.mp4"_s), u"testsrc2=s=320x180:r=10:d=6"_s));
        // Its poster takes a while: no intra picture follows the place where it is looked for.
        QVERIFY(makeClip(clip(u"slow.mp4"_s), u"testsrc2=s=640x360:r=25:d=60"_s,
                         {u"-preset"_s, u"ultrafast"_s, u"-g"_s, u"9999"_s}));
        QFile letter(clip(u"letter.mp4"_s));
        QVERIFY(letter.open(QIODevice::WriteOnly) && letter.write("Dear friend,\n") > 0);
    }
    void init()
    {
        setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
        m_outlets = std::make_unique<OrderedOutlets>();
        m_application = std::make_unique<appDelegate>(*m_outlets);
        BatchList &batch = m_application->whichArrayController();
        connect(&batch, &BatchList::rowAdded, this, [this, &batch](int index) {
            m_outlets->arrivals.append(QFileInfo(batch.sourcePath(index)).fileName());
        });
    }
    void cleanup() { m_application.reset(); }

    void rowsAndRefusalsComeInOrder()
    {
        m_application->draggedFiles(
            {clip(u"slow.mp4"_s), clip(u"letter.mp4"_s), clip(u"a.mp4"_s)});
        QTRY_COMPARE_WITH_TIMEOUT(m_outlets->analysisEnds, 1, patience);
        QCOMPARE(m_outlets->arrivals, (QStringList{u"slow.mp4"_s, u"letter.mp4"_s, u"a.mp4"_s}));
    }

    void dropsWhileAPosterIsMadeJoin()
    {
        dropSlowClip();
        m_application->draggedFiles({clip(u"slow.mp4"_s), clip(u"a.mp4"_s)});
        QTRY_COMPARE_WITH_TIMEOUT(m_outlets->analysisEnds, 1, patience);
        QCOMPARE(m_outlets->arrivals, (QStringList{u"slow.mp4"_s, u"a.mp4"_s}));
    }

    void stopWhileAPosterIsMadeTellsNothing()
    {
        dropSlowClip();
        m_application->iba_taskStopBt(RunnerKind::analysis);
        QTRY_COMPARE_WITH_TIMEOUT(m_outlets->analysisEnds, 1, patience);
        QCOMPARE(m_outlets->arrivals, QStringList());
    }

    void endsWhileAPosterIsMade() { dropSlowClip(); }

private:
    QString clip(const QString &name) const { return m_clips.filePath(name); }

    /// Until only its poster is missing.
    void dropSlowClip()
    {
        m_application->draggedFiles({clip(u"slow.mp4"_s)});
        QTRY_VERIFY_WITH_TIMEOUT(!m_application->analysisDriver().sourceInTheMaking().isNull(),
                                 patience);
    }

    QTemporaryDir m_clips;
    std::unique_ptr<OrderedOutlets> m_outlets;
    std::unique_ptr<appDelegate> m_application;
};

QTEST_MAIN(TestAnalysisRun)
#include "test_analysisRun.moc"
