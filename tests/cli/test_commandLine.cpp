#include "classShared/printable.h"
#include "classShared/sourceDico.h"
#include "cli/argumentBytes.h"
#include "cli/commandLine.h"
#include "cli/jsonLines.h"
#include "cli/recordText.h"
#include "cli/sourceArguments.h"
#include "settings/preferenceKeys.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

class TestCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusesWrongArguments_data();
    void refusesWrongArguments();
    void readsOptions();
    void cutsWhatNamesAreMadeOf();
    void expandsSources();
    void argumentsKeepTheirBytes();
    void jsonIsExactAndPrintable();
    void recordIsGroupedWithUnits();
};

void TestCommandLine::refusesWrongArguments_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("named");
    QTest::newRow("no command") << u""_s << u"command"_s;
    QTest::newRow("unknown command") << u"bake a.mp4"_s << u"bake"_s;
    QTest::newRow("no source") << u"sheet"_s << u"source"_s;
    QTest::newRow("unknown option") << u"sheet --colour red a.mp4"_s << u"colour"_s;
    QTest::newRow("unknown layout") << u"sheet -l huge a.mp4"_s << u"huge"_s;
    QTest::newRow("unknown format") << u"sheet -f gif a.mp4"_s << u"gif"_s;
    QTest::newRow("unknown answer") << u"sheet --existing maybe a.mp4"_s << u"maybe"_s;
    QTest::newRow("no thumbnails") << u"sheet --thumbs 0 a.mp4"_s << u"0"_s;
    QTest::newRow("no interval") << u"sheet --every -5 a.mp4"_s << u"-5"_s;
    QTest::newRow("no jobs") << u"sheet --jobs 0 a.mp4"_s << u"0"_s;
    QTest::newRow("unknown setting") << u"sheet --set nope=1 a.mp4"_s << u"nope"_s;
    QTest::newRow("too many thumbnails") << u"sheet --thumbs 601 a.mp4"_s << u"from 1 to 600"_s;
    QTest::newRow("too long an interval") << u"sheet --every 86401 a.mp4"_s << u"to 86400"_s;
    QTest::newRow("setting of the wrong kind") << u"sheet --set prefDpi=x a.mp4"_s << u"prefDpi"_s;
    QTest::newRow("unknown format set") << u"sheet --set prefSheetFormat=bmp a.mp4"_s << u"bmp"_s;
    QTest::newRow("setting out of range") << u"sheet --set prefComputerWidth=60000 a.mp4"_s
                                          << u"prefComputerWidth must be a whole number from 640 "
                                             "to 7680, not '60000'"_s;
    QTest::newRow("no number") << u"plan --set prefBorderSize=nan a.mp4"_s << u"from 0 to 40"_s;
    QTest::newRow("no colour") << u"plan --set pageBkgColor=red a.mp4"_s << u"hexadecimal"_s;
    QTest::newRow("neither on nor off") << u"plan --set pageName=2 a.mp4"_s << u"0 or 1"_s;
    QTest::newRow("too long a text")
        << u"plan --set pageCommentText=%1 a.mp4"_s.arg(u"c"_s.repeated(1001)) << u"1000 bytes"_s;
    for (const char *key : {"update", "rateVersion", "rateDeclined", "ratedVersion", "prefColor"})
        QTest::addRow("nothing reads %s", key)
            << u"sheet --set %1=1 a.mp4"_s.arg(QLatin1String(key)) << u"there is no setting"_s;
    QTest::newRow("setting without a value") << u"sheet --set prefDpi a.mp4"_s << u"prefDpi"_s;
    QTest::newRow("option of another command") << u"plan -f pdf a.mp4"_s << u"format"_s;
}

void TestCommandLine::refusesWrongArguments()
{
    QFETCH(QString, typed);
    QFETCH(QString, named);
    const auto line = parseCommandLine(typed.split(u' ', Qt::SkipEmptyParts));
    QVERIFY(!line);
    QVERIFY2(line.reason().contains(named), qPrintable(line.reason()));
}

void TestCommandLine::readsOptions()
{
    const auto line = parseCommandLine(
        u"--prefs p.json -v sheet -o out --layout min -f pdf --suffix -x --existing keep --thumbs "
        u"12 "
        "--every 7 --set pageBkgColor=000000 --set prefBorderSize=2.5 --json a.mp4 -- -b.mp4"_s
            .split(u' '));
    QVERIFY2(line, qPrintable(line.reason()));
    QCOMPARE(line->sources, (QStringList{u"a.mp4"_s, u"-b.mp4"_s}));
    QVERIFY(line->isVerbose && line->isJson);
    QCOMPARE(line->layout, int(minLayout));
    QCOMPARE(line->format, 0);
    QCOMPARE(line->existing, CommandLine::Existing::keep);
    QCOMPARE(read(line->settings, Prefs::prefSuffix), u"-x"_s);
    QCOMPARE(read(line->settings, Prefs::prefLimitAuto), 0);
    QCOMPARE(read(line->settings, Prefs::prefLimitMin), 12);
    QCOMPARE(read(line->settings, Prefs::prefDerushInterval), 7);
    QCOMPARE(read(line->settings, Prefs::prefBorderSize), 2.5);
    QCOMPARE(read(line->settings, Prefs::pageBkgColor), u"000000"_s);
}

void TestCommandLine::cutsWhatNamesAreMadeOf()
{
    const QString clapper = u"\U0001F3AC"_s;
    const auto line = parseCommandLine({u"sheet"_s, u"--suffix"_s, u"s"_s + clapper.repeated(100),
                                        u"--set"_s, u"prefNameTemplate={name}"_s, u"a.mp4"_s});
    QVERIFY2(line, qPrintable(line.reason()));
    // 25 of four bytes each would be one byte too many.
    QCOMPARE(read(line->settings, Prefs::prefSuffix), u"s"_s + clapper.repeated(24));
    QCOMPARE(line->notes.size(), 1);
    QVERIFY2(line->notes[0].startsWith(u"--suffix: cut to the longest that is possible, 100 bytes"),
             qPrintable(line->notes[0]));
}

void TestCommandLine::expandsSources()
{
    QTemporaryDir folder;
    QDir(folder.path()).mkpath(u"in/deep"_s);
    QDir(folder.path()).mkpath(u"none"_s);
    for (const QString &name : {u"in/deep/b.mkv"_s, u"in/a.MP4"_s, u"in/c.txt"_s, u"d.mp4"_s})
        QVERIFY(QFile(folder.filePath(name)).open(QIODevice::WriteOnly));
    const auto at = [&folder](const QString &name) { return folder.filePath(name); };
    const SourceArguments sources =
        expandSources({at(u"in"_s), at(u"in/a.MP4"_s), at(u"in/c.txt"_s), at(u"none"_s),
                       at(u"gone.mp4"_s), u""_s, at(u"d.mp4"_s)});
    QCOMPARE(sources.files,
             (QStringList{at(u"in/a.MP4"_s), at(u"in/deep/b.mkv"_s), at(u"d.mp4"_s)}));
    QStringList refused;
    for (const RefusedArgument &argument : sources.refused)
        refused.append(argument.source);
    QCOMPARE(refused, (QStringList{at(u"in/c.txt"_s), at(u"none"_s), at(u"gone.mp4"_s), u""_s}));
}

void TestCommandLine::argumentsKeepTheirBytes()
{
    for (const char *bytes :
         {"", "plain", "été 🎬", "caf\xe9", "\xe9", "\xf0\x9f\x8e", "\xed\xb2\x80",
          "\xc0\x80 \xf0\x9f\x8e\xac\xff\xc3\xa9", "\xef\xbb\xbfx"})
        QCOMPARE(argumentBytes(argumentText(bytes)), QByteArray(bytes));
    QCOMPARE(argumentText("été 🎬"), u"été 🎬"_s);
    QVERIFY(isPlainText(u"été 🎬"_s) && !isPlainText(argumentText("caf\xe9")));
    const auto line = parseCommandLine(
        {u"sheet"_s, u"-o"_s, argumentText("/v/\xe9t\xe9"), argumentText("caf\xe9.mp4")});
    QVERIFY(!line && line.reason().contains(u"'/v/\ufffdt\ufffd' is not valid UTF-8"_s));
}

void TestCommandLine::jsonIsExactAndPrintable()
{
    const QString name = u"/v/\x1b[2J\n\u009b\u202e\U000e0041 été 🎬.mp4"_s;
    const QString line = refusedAnalysisJson(name, u""_s);
    QCOMPARE(printable(line), line);
    QVERIFY(line.contains(u"été 🎬"_s));
    QCOMPARE(QJsonDocument::fromJson(line.toUtf8())["source"_L1].toString(), name);
}

void TestCommandLine::recordIsGroupedWithUnits()
{
    SourceDico record;
    write(record, Keys::srcPathStr, u"/v/a.mp4"_s);
    write(record, Keys::w_duration, 12.5);
    write(record, Keys::v_width, 0, 640);
    write(record, Keys::a_rate, 0, 48000);
    write(record, Keys::a_id, 0, 2);
    // Offsets are filed under the stream's number in the file.
    record.insert(u"a2_offsetMs"_s, -20);
    const QStringList lines = recordText(record).split(u'\n');
    QCOMPARE(lines.size(), 9);
    QCOMPARE(lines[1].trimmed(), u"container"_s);
    QVERIFY(lines[2].endsWith(u"12.5 seconds (00:00:12.50)"_s));
    QCOMPARE(lines[3].trimmed(), u"video 0"_s);
    QVERIFY(lines[4].endsWith(u"640 pixels"_s));
    QCOMPARE(lines[5].trimmed(), u"audio 0"_s);
    QVERIFY(lines[6].endsWith(u"48000 Hz"_s));
    QVERIFY(lines[7].endsWith(u"-20 milliseconds"_s));
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "test_commandLine.moc"
