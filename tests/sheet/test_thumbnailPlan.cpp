#include "settings/stringTables.h"
#include "sheet/chosenInstants.h"
#include "sheet/extractionPasses.h"
#include "sheet/infoTexts.h"
#include "sheet/thumbnailPlan.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

/// The entries of a JSON object, written with "'" for the quotes and \\u0027 for itself.
static SourceDico record(const QByteArray &entries)
{
    const QByteArray json = QByteArray("{" + entries + "}").replace('\'', '"');
    return QJsonDocument::fromJson(json).toVariant().toMap();
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

class TestThumbnailPlan : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    /// A file of that size, without bytes on the disk.
    QString makeFile(const QString &name, qint64 size)
    {
        QFile file(m_folder.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.resize(size) ? file.fileName() : QString();
    }

private Q_SLOTS:
    void automaticCountsFollowTheDuration_data()
    {
        QTest::addColumn<int>("shortest");
        QTest::addColumn<int>("longest");
        // Pictures of Big, Med, Min, Mix and of an unknown layout.
        QTest::addColumn<QList<int>>("counts");
        const auto add = [](int shortest, int longest, const QList<int> &counts) {
            QTest::addRow("%d to %d", shortest, longest) << shortest << longest << counts;
        };
        add(0, 119, {2, 3, 12, 6, 6});
        add(120, 299, {2, 6, 18, 12, 12});
        add(300, 719, {4, 9, 24, 18, 18});
        add(720, 1799, {6, 12, 30, 24, 24});
        add(1800, 3599, {6, 18, 42, 30, 30});
        add(3600, 7199, {8, 24, 48, 36, 36});
        // Five rows of Big and ten of Med would be one and two more than these hold.
        add(7200, 2000000000, {8, 24, 60, 48, 48});
    }
    void automaticCountsFollowTheDuration()
    {
        QFETCH(const int, shortest);
        QFETCH(const int, longest);
        QFETCH(const QList<int>, counts);
        for (const int seconds : {shortest, longest}) {
            const SourceDico source{{Keys::thNumberAuto, 1}, {Keys::w_duration, seconds}};
            QList<int> found;
            for (const int layout : {0, 1, 2, 3, 7})
                found += planThumbnails(layout, source).count;
            QCOMPARE(found, counts);
        }
    }

    void plan_data()
    {
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<QString>("part");
        QTest::addColumn<int>("layout");
        const auto add = [](const char *name, const QByteArray &source, const char *part,
                            int layout = bigLayout) {
            QTest::newRow(name) << source << QString::fromLatin1(part) << layout;
        };
        const QByteArray automatic = "'thNumberAuto': 1, 'w_duration': ";
        add("auto, part of a second", automatic + "119.9", "#12 free", minLayout);
        add("auto, endless", automatic + "1e300", "#8 free");
        add("auto, unknown duration", "'thNumberAuto': 1", "#2 free at 1.25 5 last");
        add("default number, whole rows", "", "#15 free", medLayout);
        add("less than a row", "'thNumberInt': 4", "#0 free at last", minLayout);
        add("negative number", "'thNumberInt': -7", "#0 free at last", minLayout);

        const QByteArray minute = "'thDerush': 1, 'thDerushInterval': 60, 'w_duration': ";
        add("interval, shorter source", minute + "30", "#2 fixed at 10 29 last 0:00:29.00");
        add("interval, exact multiple", minute + "600", "#11 fixed at 10 60");
        add("interval, one over", minute + "601", "#11 fixed");
        add("interval, two over", minute + "602", "#12 fixed");
        add("interval, five over", minute + "605", "#12 fixed");
        add("interval, six over", minute + "606", "540 600 605 605 last");
        add("interval, at the number", minute + "600, 'thNumberInt': 11", "#11 fixed");
        add("interval, above the number", minute + "600, 'thNumberInt': 10", "#10 free");
        add("interval, above it by the end", minute + "606, 'thNumberInt': 12", "#12 free");
        add("interval, longer than the source", minute + "59, 'thNumberInt': 1", "#2 fixed");
        add("interval, the number counts first", minute + "606, 'thNumberAuto': 1", "#4 free");
        // 16777221 / 5592407 is 3, but a little less in single precision.
        add("interval, rounded quotient",
            "'thDerush': 1, 'thDerushInterval': 5592407, 'w_duration': 16777221, 'thNumberInt': 3",
            "#3 fixed");
        add("interval, switched off", "'thDerushInterval': 5", "#16 free");
        add("interval, none", "'thDerush': 1", "#16 free");
        add("interval, zero", "'thDerush': 1, 'thDerushInterval': 0", "#16 free");
        add("interval, negative", "'thDerush': 1, 'thDerushInterval': -4", "#16 free");

        const QByteArray six = "'thNumberInt': 6, 'w_duration': ";
        add("far apart", six + "600", "at 10 100 200 300 400 500 last");
        add("40 seconds apart", six + "240", "at 10 40 80 120 160 200 last");
        add("a little more than 40", six + "246", "at 10 41 82 123 164 205 last");
        add("a little less than 40", six + "234", "at 9.75 39 78 117 156 195 last");
        add("hundredths are cut", six + "110", "last 0:01:31.66");
        add("kept from the end", six + "3", "at 0.125 0.5 1 1.5 2 2 last 0:00:02.00");
        add("under a second", six + "0.5", "at 0 0 0 0 0 0 last 0:00:00.00");

        const QByteArray tall = "'v0_width': 2160, 'v0_height': 3840, 'v0_dar': ";
        const QByteArray wide = "'v0_width': 1920, 'v0_height': 1080, 'v0_dar': ";
        add("unknown size", "'v0_width': 0, 'v0_height': 0, 'v0_dar': ''", "size 1280x960");
        add("too wide, then too high", tall + "'9:16'", "size 540x960");
        add("stretched", tall + "'4:3'", "size 1280x960");
        add("whole pixels, by the aspect", "'v0_width': 720, 'v0_height': 578, 'v0_dar': '16:9'",
            "size 1027x578");
        add("whole pixels, too wide", "'v0_width': 1920, 'v0_height': 1036", "size 1280x690");
        add("whole pixels, too high", "'v0_width': 1082, 'v0_height': 1921", "size 540x960");
        add("just not too large", "'v0_width': 1280, 'v0_height': 960", "size 1280x960");
        add("unknown ratio", wide + "'0:1'", "size 1280x720");
        add("absurd ratio", wide + "'1e30:1'", "size 1280x2");
    }
    void plan()
    {
        QFETCH(int, layout);
        QFETCH(QByteArray, source);
        QFETCH(QString, part);
        const QString found = described(planThumbnails(layout, record(source)));
        QVERIFY2(found.contains(part), qPrintable(found));
    }

    void chosenInstantsHoldForTheirPlan()
    {
        SourceDico source = record("'w_duration': 600, 'thNumberInt': 8");
        const ThumbnailPlan planned = planThumbnails(bigLayout, source);
        QCOMPARE(nearestInstant(planned.instants, 112.5), 1);
        QCOMPARE(nearestInstant(planned.instants, 1e9), 7);
        QCOMPARE(nearestInstant({}, 1), -1);
        setChosenInstants(source, bigLayout, planned, {{1, 93.127}, {7, 599.96}, {8, 1}});

        write(source, Keys::srcPathStr, makeFile(u"clip.mp4"_s, 1));
        const SheetPlan sheet = planSheet(bigLayout, source, u"/o"_s);
        QVERIFY(described(sheet.thumbnails).contains(u"at 10 93.127 150 225 300 375 450 599.96 "));
        QCOMPARE(read(sheet.display, Keys::timecode)->value(u"1"_s).toString(), u"0:01:33.12"_s);
        // Only the chosen picture must be that one and no other near it.
        const QStringList exact = sheet.ffmpegPasses.value(u"1"_s).toStringList();
        QCOMPARE(
            exact.mid(1, 15).join(u' '),
            u"-ss 63.000 -loglevel info -itsoffset 0.001 -i %1 -ss 30.127 -t 12 -vframes 1 -vf"_s
                .arg(readStr(source, Keys::srcPathStr)));
        QVERIFY(!exact.value(16).contains(u"select") && nextAttempt(exact).isEmpty());
        QVERIFY(sheet.ffmpegPasses.value(u"2"_s).toStringList().value(12).contains(u"select"));

        // Another layout or count has pictures of its own, and the choice comes back with its plan.
        QVERIFY(planThumbnails(medLayout, source).chosen.empty());
        write(source, Keys::thNumberInt, 6);
        QVERIFY(planThumbnails(bigLayout, source).chosen.empty());
        write(source, Keys::thNumberInt, 9);
        QVERIFY(planThumbnails(bigLayout, source).chosen == std::set({1, 7}));
        setChosenInstants(source, bigLayout, planned, {});
        QCOMPARE(described(planThumbnails(bigLayout, source)), described(planned));
    }

    void texts()
    {
        setInterfaceLanguage(u"en"_s);
        SourceDico full = record("'w_duration': 3725.9, 'v0_width': 720, 'v0_height': 576,"
                                 "'v0_fields': 'top field first', 'v0_fps': 25, 'v0_dar': '16:9',"
                                 "'v0_codec': 'apch', 'a0_codec': 'aac', 'wrapper': 'mov,mp4'");
        write(full, Keys::srcPathStr, makeFile(u"100%@ fun.part 1.mov"_s, qint64(5) << 20));
        Dico texts = infoTexts(full);
        QVERIFY(QDate::fromString(texts.take(Keys::date).toString(), Qt::ISODate).isValid());
        QCOMPARE(texts,
                 record("'name': '100%@ fun.part 1', 'location': '" + m_folder.path().toUtf8() +
                        R"(', 'duration': '1h02\u002705\u0022', 'poids': '5 MB',)"
                        R"('vIdentity': 'Width 720 pixels * Height 576 px)"
                        R"( - Interlacing \u0027top field first\u0027)"
                        R"( - Frame rate 25.00 - Aspect ratio 16:9', 'essence':)"
                        R"('Container mov,mp4 (.mov) - Contents: Video ProRes (apch),)"
                        R"( Audio aac')"));

        SourceDico bare = record("'v0_fps': 666, 'v0_codec': 'aic', 'w_comment': 'two\\nlines'");
        write(bare, Keys::srcPathStr, makeFile(u"film"_s, qint64(3) << 30));
        texts = infoTexts(bare);
        QCOMPARE(readStr(texts, Keys::vIdentity), u"Width 1280 pixels * Height 960 px"_s);
        QCOMPARE(readStr(texts, Keys::poids), u"3.00 GB"_s);
        QVERIFY(readStr(texts, Keys::essence).endsWith(u": Video AppleIntermediateCodec"));
        QCOMPARE(readStr(texts, Keys::comment), u"two lines"_s);
    }

    void extractorIsChosenByTheRecord()
    {
        SourceDico source = record("'w_duration': 100");
        QVERIFY(planSheet(medLayout, source, u"/o"_s).display.isEmpty());
        write(source, Keys::srcPathStr, makeFile(u"clip.mp4"_s, 1));
        const SheetPlan byTool = planSheet(medLayout, source, u"/o"_s);
        QVERIFY(byTool.ffmpegPasses.size() == 15 && byTool.grabberPasses.isEmpty());
        QCOMPARE(read(byTool.display, Keys::timecode)->value(u"3"_s).toString(), u"0:00:20.00"_s);
        write(source, Keys::thNumberInt, 2);
        const SheetPlan none = planSheet(medLayout, source, u"/o"_s);
        QVERIFY(none.ffmpegPasses.isEmpty() && !none.display.isEmpty());
        write(source, Keys::decSkip, 1);
        QVERIFY(planSheet(medLayout, source, u"/o"_s).grabberPasses.isEmpty());
        write(source, Keys::thNumberInt, 16);
        const SheetPlan byGrabber = planSheet(medLayout, source, u"/o"_s);
        QVERIFY(byGrabber.ffmpegPasses.isEmpty() && byGrabber.grabberPasses.size() == 1);
        QVERIFY(usesMovieGrabber({{Keys::dec, 0}}) && !usesMovieGrabber({{Keys::decSkip, 0}}));
    }
};

QTEST_GUILESS_MAIN(TestThumbnailPlan)
#include "test_thumbnailPlan.moc"
