#include "settings/stringTables.h"
#include "sheet/extractionPasses.h"
#include "sheet/infoTexts.h"
#include "sheet/thumbnailPlan.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

class TestThumbnailPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void plan_data();
    void plan();
    void texts();
    void extractorIsChosenByTheRecord();

private:
    QString makeFile(const QString &name, qint64 size);

    QTemporaryDir m_folder;
};

/// The entries of a JSON object, written with "'" for the quotes and \\u0027 for itself.
static SourceDico record(const QByteArray &entries)
{
    const QByteArray json = QByteArray("{" + entries + "}").replace('\'', '"');
    return QJsonDocument::fromJson(json).toVariant().toMap();
}

/// A file of that size, without bytes on the disk.
QString TestThumbnailPlan::makeFile(const QString &name, qint64 size)
{
    QFile file(m_folder.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.resize(size) ? file.fileName() : QString();
}

/// What a plan says, in one line.
static QString described(const ThumbnailPlan &plan)
{
    QString text = u"#%1 %2 at"_s.arg(plan.count).arg(plan.isCountFixed ? u"fixed" : u"free");
    for (const double instant : plan.instants)
        text += u' ' + QString::number(instant);
    return text + u" last %1 size %2x%3"_s.arg(plan.timecodes.value(plan.count - 1))
                      .arg(plan.size.width())
                      .arg(plan.size.height());
}

static QByteArray sized(int width, int height, const char *aspect)
{
    return "'v0_width': " + QByteArray::number(width) +
           ", 'v0_height': " + QByteArray::number(height) + ", 'v0_dar': '" + aspect + "'";
}

void TestThumbnailPlan::plan_data()
{
    QTest::addColumn<int>("layout");
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QString>("part");
    const auto add = [](const char *name, int layout, const QByteArray &source, const char *part) {
        QTest::newRow(name) << layout << source << QString::fromLatin1(part);
    };
    const QByteArray automatic = "'thNumberAuto': 1, 'w_duration': ";
    add("auto, below a bound", minLayout, automatic + "119.9", "#12 free");
    add("auto, above a bound", minLayout, automatic + "120", "#18 free");
    add("auto, cut to the layout", medLayout, automatic + "7200", "#24 free");
    add("auto, unknown layout is Mix", 7, automatic + "7199", "#36 free");
    add("auto, endless", bigLayout, automatic + "1e300", "#8 free");
    add("auto, unknown duration", bigLayout, "'thNumberAuto': 1", "#2 free at 1.25 5 last");
    add("default number, whole rows", medLayout, "", "#15 free");
    add("less than a row", minLayout, "'thNumberInt': 4", "#0 free at last");
    add("negative number", minLayout, "'thNumberInt': -7", "#0 free at last");

    const QByteArray minute = "'thDerush': 1, 'thDerushInterval': 60, 'w_duration': ";
    add("interval, shorter source", bigLayout, minute + "30", "#2 fixed at 10 29 last 0:00:29.00");
    add("interval, exact multiple", bigLayout, minute + "600", "#11 fixed at 10 60");
    add("interval, five over", bigLayout, minute + "605", "#12 fixed");
    add("interval, six over", bigLayout, minute + "606", "540 600 605 605 last");
    add("interval, above the normal number", bigLayout, minute + "606, 'thNumberInt': 11",
        "#10 free");
    add("interval, switched off", bigLayout, "'thDerushInterval': 5", "#16 free");

    add("far apart", bigLayout, "'w_duration': 4210, 'thNumberInt': 4", "10 1052.5 2105 3157.5 ");
    add("forty seconds apart", bigLayout, "'w_duration': 80, 'thNumberInt': 2", "at 10 40 last");
    add("kept from the end", bigLayout, "'w_duration': 3, 'thNumberInt': 6",
        "at 0.125 0.5 1 1.5 2 2 last 0:00:02.00");
    add("under a second", bigLayout, "'w_duration': 0.5, 'thNumberInt': 2",
        "at 0 0 last 0:00:00.00");

    add("unknown size", bigLayout, sized(0, 0, "unknown"), "size 1280x960");
    add("full HD", bigLayout, sized(1920, 1080, "16:9"), "size 1280x720");
    add("stretched", bigLayout, sized(720, 576, "16:9"), "size 1024x576");
    add("too wide, then too high", bigLayout, sized(2160, 3840, "9:16"), "size 540x960");
    add("unknown ratio", bigLayout, sized(640, 480, "0:1"), "size 640x480");
    add("thinner than a pixel", bigLayout, sized(10000, 1, ""), "size 1280x2");
    add("absurd ratio", bigLayout, sized(640, 480, "1e30:1"), "size 1280x2");
}

void TestThumbnailPlan::plan()
{
    QFETCH(int, layout);
    QFETCH(QByteArray, source);
    QFETCH(QString, part);
    const QString found = described(planThumbnails(layout, record(source)));
    QVERIFY2(found.contains(part), qPrintable(found));
}

void TestThumbnailPlan::texts()
{
    setInterfaceLanguage(u"en"_s);
    SourceDico full = record("'w_duration': 3725.9, 'v0_width': 720, 'v0_height': 576,"
                             "'v0_fields': 'top field first', 'v0_fps': 25, 'v0_dar': '16:9',"
                             "'v0_codec': 'apch', 'a0_codec': 'aac', 'wrapper': 'mov,mp4'");
    write(full, Keys::srcPathStr, makeFile(u"100%@ fun.part 1.mov"_s, qint64(5) << 20));
    Dico texts = infoTexts(full);
    QVERIFY(QDate::fromString(texts.take(Keys::date).toString(), Qt::ISODate).isValid());
    QCOMPARE(texts, record("'name': '100%@ fun.part 1', 'location': '" + m_folder.path().toUtf8() +
                           R"(', 'duration': '1h02\u002705\u0022', 'poids': '5 MB',)"
                           R"('vIdentity': 'Width 720 pixels * Height 576 px)"
                           R"( - Interlacing \u0027top field first\u0027)"
                           R"( - Frame rate 25.00 - Aspect ratio 16:9', 'essence':)"
                           R"('Container mov,mp4 (.mov) - Contents: Video ProRes (apch),)"
                           R"( Audio aac')"));

    SourceDico bare = record("'v0_fps': 666, 'v0_codec': 'aic'");
    write(bare, Keys::srcPathStr, makeFile(u"film"_s, qint64(3) << 30));
    texts = infoTexts(bare);
    QCOMPARE(readStr(texts, Keys::vIdentity), u"Width 1280 pixels * Height 960 px"_s);
    QCOMPARE(readStr(texts, Keys::poids), u"3.00 GB"_s);
    QCOMPARE(readStr(texts, Keys::essence),
             u"Container - Contents: Video AppleIntermediateCodec"_s);
}

void TestThumbnailPlan::extractorIsChosenByTheRecord()
{
    SourceDico source = record("'w_duration': 100");
    QVERIFY(planSheet(medLayout, source, u"/o"_s).display.isEmpty());
    write(source, Keys::srcPathStr, makeFile(u"clip.mp4"_s, 1));
    const SheetPlan byTool = planSheet(medLayout, source, u"/o"_s);
    QCOMPARE(byTool.ffmpegPasses.size(), 15);
    QCOMPARE(byTool.ffmpegPasses.value(u"14"_s).toStringList().last(), u"/o/img14.jpg"_s);
    QVERIFY(byTool.grabberPasses.isEmpty());
    QCOMPARE(read(byTool.display, Keys::timecode)->value(u"3"_s).toString(), u"0:00:20.00"_s);
    QCOMPARE(read(byTool.display, Keys::hTh), 960);

    write(source, Keys::decSkip, 1);
    const SheetPlan byGrabber = planSheet(medLayout, source, u"/o"_s);
    QCOMPARE(byGrabber.grabberPasses.keys(), QStringList{u"0"_s});
    QVERIFY(byGrabber.ffmpegPasses.isEmpty());
    QVERIFY(usesMovieGrabber({{Keys::dec, 0}}) && !usesMovieGrabber({{Keys::decSkip, 0}}));
}

QTEST_GUILESS_MAIN(TestThumbnailPlan)
#include "test_thumbnailPlan.moc"
