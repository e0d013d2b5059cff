#include "sheetFixture.h"

#include "sheet/extractionPasses.h"
#include "sheet/pictureMetadata.h"
#include "sheet/seekPreview.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

class TestSeekPreview : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cuesCoverTheWholeSource()
    {
        // The second and the third stand at one instant, as at the end of a short source.
        const std::vector<PreviewTile> tiles{
            {2.5, {0, 0, 160, 90}}, {3599.9996, {160, 0, 160, 90}}, {3600, {320, 0, 160, 90}}};
        QCOMPARE(
            previewCues(u"été 1%.jpg"_s, tiles, 3601.25),
            u"WEBVTT\n"
            "\nNOTE made by "_s +
                softwareName() +
                u"\n"
                "\n00:00:00.000 --> 01:00:00.000\n%C3%A9t%C3%A9%201%25.jpg#xywh=0,0,160,90\n"
                "\n01:00:00.000 --> 01:00:01.250\n%C3%A9t%C3%A9%201%25.jpg#xywh=320,0,160,90\n"_s);
        // An unknown duration.
        QVERIFY(previewCues(u"a.jpg"_s, tiles, 0).contains(u"--> 01:00:01.000\na.jpg#xywh=320"));
    }

    void tilesShowThePicturesOfTheirTimes()
    {
        const QTemporaryDir folder;
        SeekPreview preview{.instants = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
                            .duration = 13,
                            .pictureSize = {90, 160},
                            .spritePath = folder.filePath(u"a-sprite.jpg"_s),
                            .vttPath = folder.filePath(u"a.vtt"_s)};
        for (int index = 0; index < 12; ++index) {
            preview.pictures += thumbnailPath(folder.path(), index);
            QVERIFY(
                plain({90, 160}, index == 11 ? Qt::red : Qt::blue).save(preview.pictures[index]));
        }
        // One was never extracted; one is no picture.
        QVERIFY(QFile::remove(preview.pictures[5]));
        QFile broken(preview.pictures[7]);
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("no picture") > 0);
        broken.close();
        QVERIFY(writeSeekPreview(preview));
        const QImage sprite(preview.spritePath);
        QCOMPARE(sprite.size(), QSize(900, 320));
        QVERIFY(isNear(sprite.pixelColor(865, 80), Qt::red));
        QFile cues(preview.vttPath);
        QVERIFY(cues.open(QIODevice::ReadOnly));
        const QByteArray text = cues.readAll();
        QCOMPARE(text.count("-->"), 10);
        QVERIFY2(text.endsWith("00:00:12.000 --> 00:00:13.000\na-sprite.jpg#xywh=810,0,90,160\n"),
                 text.constData());

        const FullDisk full;
        QVERIFY(writeSeekPreview(preview).reason().contains(preview.spritePath));
    }
};

QTEST_GUILESS_MAIN(TestSeekPreview)
#include "test_seekPreview.moc"
