#include "app/appDelegate.h"
#include "app/decodedFrames.h"
#include "app/poster.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "support/makeClip.h"
#include "support/recordingOutlets.h"
#include "tasks/workFolder.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int patience = 60000;

} // namespace

/// The pictures that are taken of a source before it is a row: the decoded frames of the
/// probe, and the poster.
class TestSourcePictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(setUpWorkFolder(u"test"_s)); }
    void init() { setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>()); }

    void posterPosition_data()
    {
        QTest::addColumn<double>("duration");
        QTest::addColumn<double>("position");
        QTest::newRow("unknown") << 0.0 << 0.0;
        QTest::newRow("10 s") << 10.0 << 0.0;
        QTest::newRow("11 s") << 11.0 << 10.0;
        QTest::newRow("60 s") << 60.0 << 10.0;
        QTest::newRow("61 s") << 61.0 << 60.0;
        QTest::newRow("120 s") << 120.0 << 60.0;
        QTest::newRow("121 s") << 121.0 << 120.0;
    }
    void posterPosition()
    {
        QFETCH(double, duration);
        SourceDico source;
        write(source, Keys::w_duration, duration);
        QTEST(vignar::posterPosition(source), "position");
    }

    void posterHasTheShapeOfThePicture_data()
    {
        QTest::addColumn<QString>("made");
        QTest::addColumn<QString>("aspect");
        QTest::addColumn<QSize>("stated");
        QTest::addColumn<QSize>("poster");
        QTest::newRow("portrait") << u"270x480"_s << QString() << QSize(270, 480)
                                  << QSize(160, 284);
        QTest::newRow("anamorphic")
            << u"360x288"_s << u"16:9"_s << QSize(360, 288) << QSize(160, 90);
        QTest::newRow("nothing stated") << u"320x240"_s << QString() << QSize() << QSize(160, 90);
    }
    void posterHasTheShapeOfThePicture()
    {
        QFETCH(QString, made);
        QFETCH(QString, aspect);
        QFETCH(QSize, stated);
        const QString clip = file(u"shape.mp4"_s);
        const QString poster = file(u"poster.jpg"_s);
        QVERIFY(makeClip(clip, u"testsrc2=s=%1:r=10:d=2"_s.arg(made)));
        SourceDico source;
        write(source, Keys::srcPathStr, clip);
        if (!aspect.isNull())
            write(source, Keys::v_dar, 0, aspect);
        if (!stated.isEmpty()) {
            write(source, Keys::v_width, 0, stated.width());
            write(source, Keys::v_height, 0, stated.height());
        }
        const Result<PosterPicture> picture = makePoster(source, poster);
        QVERIFY2(picture, qPrintable(picture.reason()));
        QCOMPARE(*picture, PosterPicture::intra);
        QTEST(QImage(poster).size(), "poster");
    }

    void readsTheHeaderOfFrames_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("order");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QString>("par");
        QTest::addColumn<double>("fps");
        QTest::addColumn<bool>("isWhole");
        const QByteArray header = "YUV4MPEG2 W4 H2 F25:1 I";
        const QByteArray frame = "FRAME\n" + QByteArray(12, 'x');
        QTest::newRow("top") << header + "t A64:45 C420jpeg\n" + frame << u"TFF"_s << QSize(4, 2)
                             << u"64:45"_s << 25.0 << true;
        QTest::newRow("bottom") << header + "b A1:1\n" + frame << u"BFF"_s << QSize(4, 2)
                                << u"1:1"_s << 25.0 << true;
        QTest::newRow("progressive")
            << header + "p A0:0\n" + frame << u"PFF"_s << QSize(4, 2) << QString() << 25.0 << true;
        QTest::newRow("mixed") << header + "m\n" + frame << QString() << QSize(4, 2) << QString()
                               << 25.0 << true;
        QTest::newRow("broken off")
            << header + "p\nFRAME\nxxxxx" << u"PFF"_s << QSize(4, 2) << QString() << 25.0 << false;
        QTest::newRow("no rate, no size") << QByteArray("YUV4MPEG2 W0 H2 F1:0 Ip\n") + frame
                                          << u"PFF"_s << QSize(0, 2) << QString() << 0.0 << false;
        QTest::newRow("another format") << QByteArray("RIFF W4 H2 F25:1\n") + frame << QString()
                                        << QSize(0, 0) << QString() << 0.0 << false;
        QTest::newRow("empty") << QByteArray() << QString() << QSize(0, 0) << QString() << 0.0
                               << false;
    }
    void readsTheHeaderOfFrames()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, order);
        const QString path = file(u"frame.yuv"_s);
        QFile frames(path);
        QVERIFY(frames.open(QIODevice::WriteOnly) && frames.write(content) == content.size());
        frames.close();
        QCOMPARE(fieldOrderOfFrames(path),
                 order.isNull() ? QString() : localised(order, fieldsTable));
        const DecodedPicture picture = pictureOfFrames(path);
        QTEST(picture.size, "size");
        QTEST(picture.par, "par");
        QTEST(picture.fps, "fps");
        QTEST(holdsDecodedFrame(path), "isWhole");
    }

    void probesAndRescues_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("forced");
        QTest::addColumn<int>("rows");
        const QStringList mpeg4{u"-c:v"_s, u"mpeg4"_s, u"-g"_s, u"5"_s};
        QTest::newRow("complaints, but pictures")
            << mpeg4 + QStringList{u"-bsf:v"_s, u"noise=amount=400"_s} << QString() << 1;
        QTest::newRow("right format") << mpeg4 << u"avi"_s << 1;
        QTest::newRow("wrong format") << mpeg4 << u"h264"_s << 0;
    }
    void probesAndRescues()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, forced);
        const QString clip = file(u"a.avi"_s);
        QVERIFY(makeClip(clip, u"testsrc2=s=320x240:r=25:d=3"_s, arguments));
        if (!forced.isNull())
            prefWrite(Prefs::ffFileForceFormatStr, forced);
        RecordingOutlets outlets;
        appDelegate application(outlets);
        application.draggedFiles({clip});
        QTRY_COMPARE_WITH_TIMEOUT(outlets.analysisEnds, 1, patience);
        QTEST(application.whichArrayController().count(), "rows");
        QCOMPARE(outlets.refused.size(), 1 - application.whichArrayController().count());
    }

private:
    QString file(const QString &name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

QTEST_MAIN(TestSourcePictures)
#include "test_sourcePictures.moc"
