#include "app/batchList.h"
#include "app/sheetDriver.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"
#include "settings/stringTables.h"
#include "sheet/extractionFolder.h"
#include "sheet/thumbnailPlan.h"
#include "shell/player/mpvPlayer.h"
#include "shell/player/playerControls.h"
#include "shell/player/previewPlayer.h"
#include "support/recordingOutlets.h"
#include "tasks/toolPlaces.h"

#include <QAbstractButton>
#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

/// Writes down what it is asked for; the test ends its moves.
class FakePlayer : public MediaPlayer
{
public:
    QStringList calls;

    void open(const QString &, double seconds) override { add(u"open %1"_s.arg(seconds)); }
    void seek(double seconds) override { add(u"seek %1"_s.arg(seconds)); }
    void step(FrameStep direction) override
    {
        add(direction == FrameStep::back ? u"back"_s : u"forward"_s);
    }
    void setPaused(bool isPaused) override { add(isPaused ? u"pause"_s : u"play"_s); }
    void setMuted(bool isMuted) override { add(isMuted ? u"mute"_s : u"sound"_s); }
    void setRoom(const QSize &) override {}

    /// Ends the move under way at a place, and tells what was asked since the last time.
    QStringList endMove(double seconds)
    {
        Q_EMIT positionChanged(seconds);
        Q_EMIT moveEnded(seconds);
        return std::exchange(calls, {});
    }

private:
    void add(const QString &call) { calls.append(call); }
};

/// A film whose pictures carry their number, 25 a second: ten stripes, black or white, the
/// first worth 1.
static constexpr int filmSeconds = 12;

static int numberOn(const QImage &picture)
{
    int number = 0;
    for (int bit = 0; bit < 10; ++bit) {
        if (qGray(picture.pixel(int((bit + 0.5) * picture.width() / 10), picture.height() / 2)) >
            127)
            number |= 1 << bit;
    }
    return number;
}

class TestPlayer : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    RecordingOutlets m_outlets;

    QString at(const QString &name) const { return m_folder.filePath(name); }

    static void ffmpeg(const QStringList &arguments)
    {
        QCOMPARE(QProcess::execute(ffmpegPath(), QStringList{u"-v"_s, u"error"_s} + arguments), 0);
    }

    /// The list with one row, of the film or of a copy of it under another name.
    std::unique_ptr<BatchList> batchOf(const QString &path, int layout = bigLayout)
    {
        auto batch = std::make_unique<BatchList>(m_outlets);
        const SourceDico source{{Keys::srcPathStr, path},
                                {Keys::w_duration, filmSeconds},
                                {Keys::v_width(0), 160},
                                {Keys::v_height(0), 96}};
        batch->append(makeBatchEntry(source, 1, layout, 1));
        return batch;
    }
    static SourceDico record(const BatchList &batch)
    {
        return read(batch.row(0), RowKeys::dico).value_or(SourceDico());
    }
    static bool isHeldOpen(const QString &path)
    {
        const QFileInfoList open =
            QDir(u"/proc/self/fd"_s).entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries);
        return std::any_of(open.begin(), open.end(),
                           [&path](const QFileInfo &each) { return each.symLinkTarget() == path; });
    }

private Q_SLOTS:
    void initTestCase();
    void init();
    void onlyTheLastOfManySeeksIsMade();
    void everyKeyHasItsCommand_data();
    void everyKeyHasItsCommand();
    void heldKeysLeaveNoTail();
    void buttonsKeepTheirKeys();
    void usedPictureIsTheOneShown();
    void timeRunsFromLeftToRight();
    void rowsThatGoCloseTheWindow();
    void everyPictureCanBeReached_data();
    void everyPictureCanBeReached();
    void playsToTheEndAndAgain();
    void usedPictureComesOnTheSheet_data();
    void usedPictureComesOnTheSheet();
    void picturesStandUpright_data();
    void picturesStandUpright();
    void listsOpenNothing_data();
    void listsOpenNothing();
    void closingReleasesTheFile();
};

void TestPlayer::initTestCase()
{
    const QString numbered =
        u"color=black:size=160x96:rate=25:duration=%1,format=gray,"
        "geq=lum='255*mod(floor(N/pow(2,floor(X/16))),2)',format=yuv420p"_s.arg(filmSeconds);
    const QString marks = at(u"marks.txt"_s);
    QFile file(marks);
    QVERIFY(file.open(QIODevice::WriteOnly) &&
            file.write(";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=4000\n"
                       "[CHAPTER]\nTIMEBASE=1/1000\nSTART=4000\nEND=12000\n") > 0);
    file.close();
    // Few key frames: a seek to anywhere else must decode a long way.
    ffmpeg({u"-f"_s,
            u"lavfi"_s,
            u"-i"_s,
            numbered,
            u"-f"_s,
            u"lavfi"_s,
            u"-i"_s,
            u"sine=duration=%1"_s.arg(filmSeconds),
            u"-i"_s,
            marks,
            u"-map"_s,
            u"0"_s,
            u"-map"_s,
            u"1"_s,
            u"-map_metadata"_s,
            u"2"_s,
            u"-c:v"_s,
            u"libx264"_s,
            u"-preset"_s,
            u"veryfast"_s,
            u"-x264-params"_s,
            u"keyint=125:scenecut=0:bframes=3"_s,
            u"-crf"_s,
            u"12"_s,
            at(u"film.mp4"_s)});
    for (const QString &name : {u"film.ts"_s, u"film.mkv"_s})
        ffmpeg({u"-i"_s, at(u"film.mp4"_s), u"-c"_s, u"copy"_s, at(name)});
    ffmpeg({u"-i"_s, at(u"film.mp4"_s), u"-c"_s, u"copy"_s, u"-metadata:s:v:0"_s, u"rotate=90"_s,
            at(u"turned.mp4"_s)});
    ffmpeg({u"-i"_s, at(u"film.mp4"_s), u"-c"_s, u"copy"_s, u"-aspect"_s, u"10:3"_s,
            at(u"wide.mp4"_s)});
}

void TestPlayer::init()
{
    setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>());
    setInterfaceLanguage(u"en"_s);
    // Eight pictures of a film of 12 seconds: 0.375, 1.5, 3, 4.5, 6, 7.5, 9, 10.5.
    prefWrite(Prefs::prefLimitAuto, 0);
    prefWrite(Prefs::prefLimitBig, 8);
}

void TestPlayer::onlyTheLastOfManySeeksIsMade()
{
    FakePlayer player;
    MoveQueue queue(player);
    QSignalSpy settled(&queue, &MoveQueue::settled);
    queue.open(u"/film"_s, 3);
    for (int second = 0; second < 100; ++second)
        queue.seek(second);
    queue.step(FrameStep::forward);
    queue.step(FrameStep::forward);
    QCOMPARE(player.endMove(3), (QStringList{u"open 3"_s, u"seek 99"_s}));
    QCOMPARE(queue.destination(), std::optional(99.0));
    player.endMove(99);
    player.endMove(99.04);
    QVERIFY(settled.isEmpty());
    player.endMove(99.08);
    QCOMPARE(settled, (QList<QVariantList>{{99.08}}));
    QVERIFY(!queue.isMoving() && !queue.destination());
}

void TestPlayer::everyKeyHasItsCommand_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QString>("calls");
    const auto add = [](const char *name, int key, const QString &calls,
                        Qt::KeyboardModifiers modifiers = {}) {
        QTest::newRow(name) << key << int(modifiers) << calls;
    };
    add("space", Qt::Key_Space, u"play"_s);
    add("left", Qt::Key_Left, u"seek 4"_s);
    add("right of the key pad", Qt::Key_Right, u"seek 6"_s, Qt::KeypadModifier);
    add("shift left", Qt::Key_Left, u"seek 0"_s, Qt::ShiftModifier);
    add("shift right", Qt::Key_Right, u"seek 12"_s, Qt::ShiftModifier);
    add("comma", Qt::Key_Comma, u"back"_s);
    add("period, shifted in France", Qt::Key_Period, u"forward"_s, Qt::ShiftModifier);
    add("page up", Qt::Key_PageUp, u"seek 2.5"_s);
    add("page down", Qt::Key_PageDown, u"seek 8"_s);
    add("up", Qt::Key_Up, u"seek 4.5"_s);
    add("down", Qt::Key_Down, u"seek 6"_s);
    add("home", Qt::Key_Home, u"seek 0"_s);
    add("end", Qt::Key_End, u"seek 12"_s);
    add("m", Qt::Key_M, u"mute"_s);
    add("another", Qt::Key_X, {});
}

void TestPlayer::everyKeyHasItsCommand()
{
    FakePlayer *player = nullptr;
    const auto batch = batchOf(at(u"film.mp4"_s));
    PreviewPlayer preview(*batch, [&player] {
        auto made = std::make_unique<FakePlayer>();
        player = made.get();
        return made;
    });
    preview.open(record(*batch));
    Q_EMIT player->infoChanged({.duration = 12, .chapters = {0, 2.5, 4.5, 8}, .hasAudio = true});
    player->endMove(5);
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QTest::keyClick(preview.window(), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
    QTEST(player->calls.join(u' '), "calls");
}

void TestPlayer::heldKeysLeaveNoTail()
{
    auto made = std::make_unique<FakePlayer>();
    FakePlayer &player = *made;
    PlayerWindow window([&made] { return std::move(made); });
    window.open(at(u"film.mp4"_s), {}, filmSeconds, {});
    player.endMove(0);
    const auto press = [&window](bool isRepeated) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_Period, Qt::NoModifier, u"."_s, isRepeated);
        QApplication::sendEvent(&window, &event);
    };
    press(false);
    for (int repeats = 0; repeats < 20; ++repeats)
        press(true);
    player.endMove(0.04);
    QVERIFY(player.calls.isEmpty());
    for (int taps = 0; taps < 3; ++taps)
        press(false);
    player.endMove(0.08);
    player.endMove(0.12);
    QCOMPARE(player.endMove(0.16), QStringList());
}

void TestPlayer::buttonsKeepTheirKeys()
{
    auto made = std::make_unique<FakePlayer>();
    FakePlayer &player = *made;
    PlayerWindow window([&made] { return std::move(made); });
    window.open(at(u"film.mp4"_s), {}, filmSeconds, {{1, 2}, {}});
    Q_EMIT player.infoChanged({.duration = 12, .hasAudio = true});
    player.endMove(1);
    const auto buttons = window.findChildren<QAbstractButton *>();
    QVERIFY(buttons.size() > 10);
    for (QAbstractButton *button : buttons) {
        QVERIFY2(!button->accessibleName().isEmpty(), qPrintable(button->text()));
        QVERIFY2(button->toolTip().contains(u'('), qPrintable(button->toolTip()));
    }
    // Without chapters there is none to go to.
    const auto named = [&buttons](const QString &name) -> QAbstractButton & {
        return **std::find_if(buttons.begin(), buttons.end(),
                              [&name](auto *each) { return each->accessibleName() == name; });
    };
    QVERIFY(!named(u"Next chapter"_s).isEnabled());
    QTest::keyClick(&named(u"Sound on or off"_s), Qt::Key_Space);
    QTest::keyClick(&named(u"Sound on or off"_s), Qt::Key_Return);
    QTest::keyClick(&named(u"Sound on or off"_s), Qt::Key_Right);
    QCOMPARE(player.endMove(2), (QStringList{u"mute"_s, u"sound"_s, u"seek 2"_s}));
    Q_EMIT player.failed();
    QVERIFY(!named(u"Sound on or off"_s).isEnabled());
}

void TestPlayer::usedPictureIsTheOneShown()
{
    auto made = std::make_unique<FakePlayer>();
    FakePlayer &player = *made;
    PlayerWindow window([&made] { return std::move(made); });
    QSignalSpy chosen(&window, &PlayerWindow::chosenChanged);
    window.open(at(u"film.mp4"_s), {}, filmSeconds, {{1, 5, 9}, {}});
    Q_EMIT player.infoChanged({.duration = 12});
    window.perform(PlayerCommand::use);
    QVERIFY(chosen.isEmpty());
    player.endMove(1.02);
    QCOMPARE(chosen.takeFirst().first().value<ChosenInstants>(), (ChosenInstants{{0, 1.02}}));

    // What plays is stopped, and looked at again where it was.
    window.perform(PlayerCommand::playPause);
    Q_EMIT player.positionChanged(6.5);
    window.perform(PlayerCommand::use);
    QVERIFY(chosen.isEmpty());
    QCOMPARE(player.endMove(6.52), (QStringList{u"play"_s, u"pause"_s, u"seek 6.5"_s}));
    QCOMPARE(chosen.takeFirst().first().value<ChosenInstants>(),
             (ChosenInstants{{0, 1.02}, {1, 6.52}}));
    window.perform(PlayerCommand::reset);
    QCOMPARE(chosen.takeFirst().first().value<ChosenInstants>(), (ChosenInstants{{0, 1.02}}));
}

void TestPlayer::timeRunsFromLeftToRight()
{
    QApplication::setLayoutDirection(Qt::RightToLeft);
    PlayerControls controls;
    QApplication::setLayoutDirection(Qt::LeftToRight);
    controls.setInfo({.duration = 100});
    controls.setPictures({{10, 50}, {{1, 60}}});
    controls.setPlayable(true);
    controls.resize(800, controls.sizeHint().height());
    controls.show();
    QSignalSpy wanted(&controls, &PlayerControls::seekWanted);
    auto *timeline = controls.findChild<Timeline *>();
    const auto click = [&](double share, int y) {
        const int length = timeline->width() - 14;
        QTest::mouseClick(timeline, Qt::LeftButton, {}, QPoint(7 + int(length * share), y));
        return wanted.takeFirst().first().toDouble();
    };
    const double late = click(0.75, 10);
    QVERIFY2(late > 74 && late < 76, qPrintable(QString::number(late)));
    // A click on a mark is exact, and a chosen one has moved.
    QCOMPARE(click(0.102, timeline->height() - 8), 10.0);
    QCOMPARE(click(0.602, timeline->height() - 8), 60.0);
    QVERIFY(click(0.502, timeline->height() - 8) != 50.0);
}

void TestPlayer::rowsThatGoCloseTheWindow()
{
    const auto batch = batchOf(at(u"film.mp4"_s));
    PreviewPlayer preview(*batch, [] { return std::make_unique<FakePlayer>(); });
    preview.open({{Keys::srcPathStr, u"/no row"_s}});
    QVERIFY(!preview.window());
    preview.open(record(*batch));
    QVERIFY(preview.window());
    batch->select(0);
    batch->encBatchRemove(false);
    QTRY_VERIFY(!preview.window());
}

void TestPlayer::everyPictureCanBeReached_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"film.mp4", "film.ts", "film.mkv"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestPlayer::everyPictureCanBeReached()
{
    QFETCH(QString, name);
    MpvPlayer player(Sound::none);
    QImage shown;
    QSignalSpy ends(&player, &MediaPlayer::moveEnded);
    MediaInfo info;
    connect(&player, &MediaPlayer::pictureShown, this, [&](const QImage &p) { shown = p; });
    connect(&player, &MediaPlayer::infoChanged, this, [&](const MediaInfo &i) { info = i; });
    player.setRoom({200, 200});
    MoveQueue queue(player);
    QSignalSpy settled(&queue, &MoveQueue::settled);
    const auto showsPicture = [&](int number) {
        const bool isSettled = settled.wait(5000);
        return isSettled && QTest::qWaitFor([&] { return numberOn(shown) == number; }, 2000);
    };
    // A little before a picture: the first one of a container may stand a little later than
    // its start.
    const auto placeOf = [](int number) { return number / 25.0 - 0.001; };

    queue.open(at(name), placeOf(88));
    QVERIFY2(showsPicture(88), qPrintable(QString::number(numberOn(shown))));
    for (const int number : {249, 3, 124, 125, 0, 299}) {
        queue.seek(number == 299 ? 100 : std::max(0.0, placeOf(number)));
        QVERIFY2(showsPicture(number), qPrintable(QString::number(numberOn(shown))));
    }
    queue.step(FrameStep::forward);
    QVERIFY(showsPicture(299));
    for (const int number : {298, 297}) {
        queue.step(FrameStep::back);
        QVERIFY2(showsPicture(number), qPrintable(QString::number(numberOn(shown))));
    }
    queue.step(FrameStep::forward);
    QVERIFY(showsPicture(298));
    queue.seek(0);
    QVERIFY(showsPicture(0));
    queue.step(FrameStep::back);
    QVERIFY(showsPicture(0));

    ends.clear();
    for (int number = 10; number <= 260; ++number)
        queue.seek(placeOf(number));
    QVERIFY(showsPicture(260));
    QCOMPARE(ends.size(), 2);
    QVERIFY(info.hasAudio && std::abs(info.duration - filmSeconds) < 0.2);
    if (!name.endsWith(u".ts"))
        QCOMPARE(info.chapters, (QList<double>{0, 4}));
}

void TestPlayer::playsToTheEndAndAgain()
{
    PlayerWindow window([] { return std::make_unique<MpvPlayer>(Sound::none); });
    window.resize(400, 400);
    window.show();
    QSignalSpy settled(&window, &PlayerWindow::settled);
    QSignalSpy chosen(&window, &PlayerWindow::chosenChanged);
    window.open(at(u"film.mp4"_s), {}, filmSeconds, {{filmSeconds - 0.5}, {}});
    QVERIFY(settled.wait(5000));
    auto *play = window.findChild<QAbstractButton *>(u"play"_s);
    window.perform(PlayerCommand::playPause);
    QCOMPARE(play->accessibleName(), u"Pause"_s);
    QTRY_COMPARE(play->accessibleName(), u"Play"_s);
    // The end of the sound is later than the last picture, which is what is used.
    window.perform(PlayerCommand::use);
    QTRY_COMPARE(chosen.size(), 1);
    QCOMPARE(chosen.first().first().value<ChosenInstants>().first(), 299 / 25.0);

    const auto *timeline = window.findChild<Timeline *>();
    window.perform(PlayerCommand::playPause);
    QTRY_VERIFY(timeline->value() > 0 && timeline->value() < 2000);
    QCOMPARE(play->accessibleName(), u"Pause"_s);
}

void TestPlayer::usedPictureComesOnTheSheet_data()
{
    everyPictureCanBeReached_data();
}

void TestPlayer::usedPictureComesOnTheSheet()
{
    QFETCH(QString, name);
    const auto batch = batchOf(at(name));
    PreviewPlayer preview(*batch, [] { return std::make_unique<MpvPlayer>(Sound::none); });
    preview.open(record(*batch));
    PlayerWindow &window = *preview.window();
    QSignalSpy settled(&window, &PlayerWindow::settled);
    QVERIFY(settled.wait(5000));
    // From 4.5 s to 5.5 s and three pictures back, which is closer to the picture at 6 s.
    for (int times = 0; times < 3; ++times)
        window.perform(PlayerCommand::pictureForward);
    window.perform(PlayerCommand::secondForward);
    QVERIFY(settled.wait(5000));
    for (int times = 0; times < 3; ++times)
        window.perform(PlayerCommand::frameBack);
    QVERIFY(settled.wait(5000));
    window.perform(PlayerCommand::use);

    const SheetPlan plan =
        planSheet(bigLayout, SheetDriver::planningInput(record(*batch), bigLayout), at(u"out"_s));
    QCOMPARE(plan.thumbnails.chosen, std::set<int>{4});
    QVERIFY(QDir().mkpath(at(u"out"_s)));
    const QStringList pass = plan.ffmpegPasses.value(u"4"_s).toStringList();
    QCOMPARE(QProcess::execute(pass.first(), pass.mid(1)), 0);
    const int expected = int(settled.takeLast().first().toDouble() * 25 + 0.01);
    QVERIFY2(std::abs(expected - 134) < 3, qPrintable(QString::number(expected)));
    QCOMPARE(numberOn(QImage(pass.last())), expected);
    QVERIFY(QFile::remove(pass.last()));

    window.perform(PlayerCommand::reset);
    QVERIFY(planThumbnails(bigLayout, SheetDriver::planningInput(record(*batch), bigLayout))
                .chosen.empty());
}

void TestPlayer::picturesStandUpright_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    QTest::newRow("turned") << u"turned.mp4"_s << QSize(120, 200);
    QTest::newRow("pixels not square") << u"wide.mp4"_s << QSize(200, 60);
}

void TestPlayer::picturesStandUpright()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    MpvPlayer player(Sound::none);
    player.setRoom({200, 200});
    QSignalSpy shown(&player, &MediaPlayer::pictureShown);
    player.open(at(name), 1.04);
    QVERIFY(shown.wait(5000));
    QTRY_COMPARE(shown.constLast().first().value<QImage>().size(), size);
    // Lying back on its side again, the picture reads from left to right.
    const double turn = size.height() > size.width() ? 90 : 0;
    QTRY_COMPARE(
        numberOn(shown.constLast().first().value<QImage>().transformed(QTransform().rotate(turn))),
        26);
}

void TestPlayer::listsOpenNothing_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("of the tool") << QByteArray("ffconcat version 1.0\nfile film.mp4\n");
    QTest::newRow("of a player") << QByteArray("#EXTM3U\n#EXTINF:10,\nfilm.mp4\n");
    QTest::newRow("of stretches") << QByteArray("# mpv EDL v0\nfilm.mp4,0,5\n");
    QTest::newRow("of a broadcaster")
        << QByteArray("#EXTM3U\n#EXT-X-TARGETDURATION:12\n#EXTINF:12,\nfilm.ts\n#EXT-X-ENDLIST\n");
}

void TestPlayer::listsOpenNothing()
{
    QFETCH(QByteArray, content);
    const QString path = at(u"list.mp4"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    MpvPlayer player(Sound::none);
    player.setRoom({200, 200});
    QSignalSpy failed(&player, &MediaPlayer::failed);
    QSignalSpy shown(&player, &MediaPlayer::pictureShown);
    player.open(path, 0);
    QVERIFY(failed.wait(5000));
    QVERIFY(shown.isEmpty());
}

void TestPlayer::closingReleasesTheFile()
{
    // A name that a careless player would take for a protocol, an option or a pattern.
    const QString path = at(u"edl:--x %d été #?.mp4"_s);
    QVERIFY(QFile::copy(at(u"film.mp4"_s), path));
    const auto batch = batchOf(path);
    PreviewPlayer preview(*batch, [] { return std::make_unique<MpvPlayer>(Sound::none); });
    for (int turns = 0; turns < 12; ++turns) {
        preview.open(record(*batch));
        for (int events = 0; events < turns; ++events)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        preview.close();
        QVERIFY(!isHeldOpen(path));
        QTRY_VERIFY(!preview.window());
    }
    preview.open(record(*batch));
    QSignalSpy settled(preview.window(), &PlayerWindow::settled);
    QVERIFY(settled.wait(5000));
    QVERIFY(isHeldOpen(path));
    preview.open(record(*batch));
    preview.close();
    QVERIFY(!isHeldOpen(path));
}

QTEST_MAIN(TestPlayer)
#include "test_player.moc"
