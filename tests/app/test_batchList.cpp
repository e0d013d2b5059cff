#include "app/batchList.h"
#include "settings/alerts.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "support/recordingOutlets.h"

#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

class FixedAnswer : public AlertPresenter
{
public:
    explicit FixedAnswer(AlertButton button) : m_button(button) {}
    AlertAnswer present(const AlertRequest &) override { return {m_button, false}; }

private:
    AlertButton m_button;
};

void fill(BatchList &batch, int count)
{
    for (int number = 1; number <= count; ++number) {
        SourceDico dico;
        write(dico, Keys::srcPathStr, u"/v/%1.mp4"_s.arg(number));
        batch.append(makeBatchEntry(dico, number, mixLayout, 1));
    }
}

QStringList sources(const BatchList &batch)
{
    QStringList paths;
    for (int index = 0; index < batch.count(); ++index)
        paths.append(batch.sourcePath(index));
    return paths;
}

} // namespace

class TestBatchList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        prefDelete(RunKeys::encCurrentProcessingFile);
        setAlertPresenter({});
    }

    void captionShowsPicture_data();
    void captionShowsPicture();
    void removalRenumbers();
    void removalOfRowInProgressIsRefused();
    void removalOfAllKeepsRowInProgress();
    void removalOfAllAsksFirst_data();
    void removalOfAllAsksFirst();
    void removalDeletesPoster();
    void sourcesAreKnownUntilTheirLastRowGoes();
};

void TestBatchList::captionShowsPicture_data()
{
    QTest::addColumn<QString>("fields");
    QTest::addColumn<QString>("caption");
    QTest::newRow("progressive") << localised(u"PFF"_s, fieldsTable)
                                 << u"a%d.mp4\n(1920x)1080p30\n1h02'05\""_s;
    QTest::newRow("interlaced") << localised(u"TFF"_s, fieldsTable)
                                << u"a%d.mp4\n(1920x)1080i30\n1h02'05\""_s;
    QTest::newRow("unknown counts as interlaced")
        << QString() << u"a%d.mp4\n(1920x)1080i30\n1h02'05\""_s;
}

void TestBatchList::captionShowsPicture()
{
    QFETCH(QString, fields);
    SourceDico dico;
    write(dico, Keys::srcPathStr, u"/v/a%d.mp4"_s);
    write(dico, Keys::v_width, 0, 1920);
    write(dico, Keys::v_height, 0, 1080);
    write(dico, Keys::v_fps, 0, 29.97);
    write(dico, Keys::w_duration, 3725.0);
    if (!fields.isNull())
        write(dico, Keys::v_fields, 0, fields);
    QTEST(rowCaption(dico), "caption");
}

void TestBatchList::removalRenumbers()
{
    RecordingOutlets outlets;
    BatchList batch(outlets);
    fill(batch, 4);
    QVERIFY(outlets.isDrawerOpen);
    batch.select(1);
    QVERIFY(batch.batchRemoval(true, true));
    QCOMPARE(sources(batch), (QStringList{u"/v/1.mp4"_s, u"/v/3.mp4"_s, u"/v/4.mp4"_s}));
    for (int index = 0; index < batch.count(); ++index)
        QCOMPARE(read(batch.row(index), RowKeys::order), index + 1);
}

void TestBatchList::removalOfRowInProgressIsRefused()
{
    RecordingOutlets outlets;
    BatchList batch(outlets);
    fill(batch, 2);
    prefWrite(RunKeys::encCurrentProcessingFile, u"/v/2.mp4"_s);
    batch.select(1);
    QVERIFY(!batch.batchRemoval(true, true));
    QCOMPARE(batch.count(), 2);
    QCOMPARE(outlets.notices.size(), 1);
    QVERIFY(batch.isSelectedSrcInProgress(u"/v/2.mp4"_s));
    QVERIFY(!batch.isSelectedSrcInProgress(u"/v/1.mp4"_s));
}

void TestBatchList::removalOfAllKeepsRowInProgress()
{
    RecordingOutlets outlets;
    BatchList batch(outlets);
    fill(batch, 5);
    prefWrite(RunKeys::encCurrentProcessingFile, u"/v/3.mp4"_s);
    QVERIFY(batch.batchRemoval(false, false));
    QCOMPARE(sources(batch), QStringList{u"/v/3.mp4"_s});
    QVERIFY(outlets.isDrawerOpen);
}

void TestBatchList::removalOfAllAsksFirst_data()
{
    QTest::addColumn<AlertButton>("answer");
    QTest::addColumn<int>("remaining");
    QTest::newRow("cancel") << AlertButton::first << 3;
    QTest::newRow("nobody answers") << AlertButton::timeout << 3;
    QTest::newRow("yes") << AlertButton::second << 0;
}

void TestBatchList::removalOfAllAsksFirst()
{
    QFETCH(AlertButton, answer);
    setAlertPresenter(std::make_unique<FixedAnswer>(answer));
    RecordingOutlets outlets;
    BatchList batch(outlets);
    fill(batch, 3);
    batch.encBatchRemoveAll(true);
    QTEST(batch.count(), "remaining");
    QCOMPARE(outlets.isDrawerOpen, batch.count() > 0);
}

void TestBatchList::removalDeletesPoster()
{
    QTemporaryDir folder;
    const QString poster = folder.filePath(u"poster.jpg"_s);
    QVERIFY(QImage(16, 9, QImage::Format_RGB32).save(poster));
    SourceDico dico;
    write(dico, Keys::srcPathStr, u"/v/1.mp4"_s);
    write(dico, Keys::imgPathStr, poster);
    RecordingOutlets outlets;
    BatchList batch(outlets);
    batch.append(makeBatchEntry(dico, 1, mixLayout, 1));
    QVERIFY(contains(batch.row(0), RowKeys::img));
    batch.select(0);
    QVERIFY(batch.batchRemoval(true, false));
    QVERIFY(!QFile::exists(poster));
    QVERIFY(!outlets.isDrawerOpen);
}

void TestBatchList::sourcesAreKnownUntilTheirLastRowGoes()
{
    RecordingOutlets outlets;
    BatchList batch(outlets);
    fill(batch, 2);
    fill(batch, 1);
    batch.select(0);
    QVERIFY(batch.batchRemoval(true, false));
    QVERIFY(batch.holdsSource(u"/v/1.mp4"_s));
    batch.select(1);
    QVERIFY(batch.batchRemoval(true, false));
    QCOMPARE(sources(batch), QStringList{u"/v/2.mp4"_s});
    QVERIFY(!batch.holdsSource(u"/v/1.mp4"_s));
    QVERIFY(batch.holdsSource(u"/v/2.mp4"_s));
}

QTEST_GUILESS_MAIN(TestBatchList)
#include "test_batchList.moc"
