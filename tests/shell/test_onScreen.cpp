// The program itself on a real screen: pointer, keys and assistive technologies from outside.
#include "accessible.h"
#include "settings/stringTables.h"
#include "support/folderListing.h"
#include "support/makeClip.h"

#include <QApplication>
#include <QClipboard>
#include <QDrag>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <QWidget>

#include <csignal>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

constexpr int patience = 60000;

void drive(const QStringList &command)
{
    QProcess::execute(u"xdotool"_s, command);
}

QString words(const QString &key)
{
    return localised(key).remove(u'&');
}

QMimeData *fileList(const QString &path)
{
    auto *data = new QMimeData;
    data->setUrls({QUrl::fromLocalFile(path)});
    return data;
}

/// Like a file manager: what is dragged out of it is a file.
class FileSource : public QWidget
{
public:
    explicit FileSource(const QString &path) : m_path(path) { setGeometry(1100, 900, 120, 60); }

    /// Lets go only where the drop is welcome.
    void dragTo(const QPoint &place)
    {
        const QPoint start = mapToGlobal(rect().center());
        drive({u"mousemove"_s, number(start.x()), number(start.y()), u"mousedown"_s, u"1"_s});
        // Goes on inside the drag's own event loop; the other program looks at a pointer
        // that moves.
        m_move.callOnTimeout([place, this] {
            m_isOdd = !m_isOdd;
            drive({u"mousemove"_s, number(place.x() + m_isOdd), number(place.y())});
        });
        m_move.start(20);
    }
    bool isDropped() const { return m_taken == Qt::CopyAction; }

protected:
    void mouseMoveEvent(QMouseEvent *) override
    {
        if (m_drag)
            return;
        m_drag = new QDrag(this);
        m_drag->setMimeData(fileList(m_path));
        connect(m_drag, &QDrag::actionChanged, this, [this](Qt::DropAction action) {
            if (action == Qt::CopyAction) {
                m_move.stop();
                drive({u"mouseup"_s, u"1"_s});
            }
        });
        m_taken = m_drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction);
    }

private:
    static QString number(int value) { return QString::number(value); }

    QString m_path;
    QTimer m_move;
    bool m_isOdd = false;
    QDrag *m_drag = nullptr;
    Qt::DropAction m_taken = Qt::IgnoreAction;
};

bool isAnyProcessAbout(const QString &path)
{
    for (const QString &process : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        QFile line(u"/proc/"_s + process + u"/cmdline"_s);
        if (process != QString::number(QCoreApplication::applicationPid()) &&
            line.open(QIODevice::ReadOnly) && line.readAll().contains(path.toUtf8()))
            return true;
    }
    return false;
}

/// What can be pressed or typed into has a name, and a role that says what it is.
QStringList unnamedControls()
{
    QStringList unnamed;
    for (const Accessible &program : Accessible::programs()) {
        program.visit([&](const Accessible &control) {
            const QString role = control.role();
            const bool isVague = role.isEmpty() || role == u"unknown" || role == u"invalid";
            if (isVague || (control.is(Accessible::focusable) && control.name().isEmpty()))
                unnamed.append(role + u' ' + control.name());
        });
    }
    return unnamed;
}

} // namespace

class TestOnScreen : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void draggedFileBecomesRow();
    void everyControlIsNamed();
    void keyboardAloneMakesSheet();
    void killedProgramLosesNothing();

private:
    QString clip(const QString &name) const { return m_clips.filePath(name); }
    QString sheets() const { return m_home->filePath(u"sheets"_s); }
    void start(const QStringList &paths = {});
    QJsonObject saved() const;
    bool isListed(const QString &name) const;
    static void type(const QString &key) { drive({u"key"_s, u"--clearmodifiers"_s, key}); }
    static bool isFocused(const QString &name);
    void tabTo(const QString &name);
    /// What the program had others open last.
    QString opened() const;

    QTemporaryDir m_clips;
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QProcess> m_program;
};

void TestOnScreen::initTestCase()
{
    QVERIFY(makeClip(clip(u"one.mp4"_s), u"testsrc2=s=320x180:r=10:d=90"_s, {u"-g"_s, u"10"_s}));
    QVERIFY(QFile::copy(clip(u"one.mp4"_s), clip(u"two.mp4"_s)));
}

void TestOnScreen::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    for (const QString &folder : {u"sheets"_s, u"run"_s, u"bin"_s, u"config/Vignar"_s})
        QVERIFY(QDir(m_home->path()).mkpath(folder));
    QVERIFY(QFile::setPermissions(m_home->filePath(u"run"_s), QFile::Permissions(0x7000)));
    const QJsonObject preferences{{u"prefDefautDstPathStr"_s, sheets()},
                                  {u"prefMultimediaHd"_s, 0},
                                  {u"prefSuffix"_s, u"-index"_s}};
    QFile file(m_home->filePath(u"config/Vignar/preferences.json"_s));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(preferences).toJson()) > 0);
    // What the program opens with others is written down.
    QFile opener(m_home->filePath(u"bin/xdg-open"_s));
    QVERIFY(opener.open(QIODevice::WriteOnly) &&
            opener.write("#!/bin/sh\necho \"$1\" >>\"$0.opened\"\n") > 0 &&
            opener.setPermissions(QFile::Permissions(0x7000)));
}

void TestOnScreen::cleanup()
{
    if (m_program) {
        m_program->terminate();
        QVERIFY(m_program->waitForFinished(patience));
    }
    m_program.reset();
}

void TestOnScreen::start(const QStringList &paths)
{
    m_program = std::make_unique<QProcess>();
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"PATH"_s, m_home->filePath(u"bin"_s) + u':' + environment.value(u"PATH"_s));
    environment.insert(u"XDG_RUNTIME_DIR"_s, m_home->filePath(u"run"_s));
    environment.insert(u"XDG_CONFIG_HOME"_s, m_home->filePath(u"config"_s));
    environment.insert(u"XDG_STATE_HOME"_s, m_home->filePath(u"state"_s));
    // For the program alone: to ask this process would be to wait for oneself.
    environment.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
    m_program->setProcessEnvironment(environment);
    m_program->setProcessChannelMode(QProcess::ForwardedChannels);
    m_program->start(QStringLiteral(VIGNAR_PROGRAM), paths);
    QTRY_VERIFY_WITH_TIMEOUT(Accessible::named(words(u"dndCaptionFolderFiles"_s)), patience);
}

QJsonObject TestOnScreen::saved() const
{
    QFile file(m_home->filePath(u"state/Vignar/batch/batch.json"_s));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                          : QJsonObject();
}

bool TestOnScreen::isListed(const QString &name) const
{
    const QJsonArray rows = saved().value("rows"_L1).toArray();
    return std::any_of(rows.begin(), rows.end(), [&](const QJsonValue &row) {
        return row["record"_L1]["srcPathStr"_L1].toString() == clip(name);
    });
}

bool TestOnScreen::isFocused(const QString &name)
{
    return Accessible::find([&](const Accessible &control) {
               return control.is(Accessible::focused) && control.name().startsWith(name);
           })
        .has_value();
}

void TestOnScreen::tabTo(const QString &name)
{
    const auto focus = [] {
        const auto control =
            Accessible::find([](const Accessible &each) { return each.is(Accessible::focused); });
        return control ? control->role() + control->name() : QString();
    };
    for (int tabs = 0; tabs < 30 && !isFocused(name); ++tabs) {
        const QString before = focus();
        type(u"Tab"_s);
        QTRY_VERIFY_WITH_TIMEOUT(focus() != before, patience);
    }
    QVERIFY2(isFocused(name), qPrintable(name));
}

QString TestOnScreen::opened() const
{
    QFile file(m_home->filePath(u"bin/xdg-open.opened"_s));
    return file.open(QIODevice::ReadOnly)
               ? QUrl(QString::fromUtf8(file.readAll().trimmed().split('\n').last())).toLocalFile()
               : QString();
}

void TestOnScreen::draggedFileBecomesRow()
{
    start();
    FileSource source(clip(u"one.mp4"_s));
    source.show();
    QVERIFY(QTest::qWaitForWindowActive(&source, patience));
    const auto area = Accessible::named(words(u"dndCaptionFolderFiles"_s));
    QVERIFY(area);
    const QPoint target = area->place().center();
    QVERIFY(!source.frameGeometry().contains(target));
    source.dragTo(target);
    QTRY_VERIFY_WITH_TIMEOUT(source.isDropped(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(isListed(u"one.mp4"_s), patience);
    QVERIFY(QFile::exists(clip(u"one.mp4"_s)));
}

void TestOnScreen::everyControlIsNamed()
{
    start({clip(u"one.mp4"_s)});
    QTRY_VERIFY_WITH_TIMEOUT(isListed(u"one.mp4"_s), patience);
    QCOMPARE(unnamedControls().join(u'|'), QString());
    type(u"ctrl+comma"_s);
    QTRY_VERIFY_WITH_TIMEOUT(Accessible::named(words(u"V_prefs_close"_s)), patience);
    for (int pane = 0; pane < 4; ++pane) {
        QCOMPARE(unnamedControls().join(u'|'), QString());
        type(u"ctrl+Tab"_s);
    }
}

void TestOnScreen::keyboardAloneMakesSheet()
{
    start();
    type(u"ctrl+o"_s);
    QTRY_VERIFY_WITH_TIMEOUT(
        Accessible::find([](const Accessible &each) { return each.role() == u"dialog"; }),
        patience);
    drive({u"type"_s, u"--delay"_s, u"1"_s, clip(u"one.mp4"_s)});
    type(u"Return"_s);
    QTRY_VERIFY_WITH_TIMEOUT(isListed(u"one.mp4"_s), patience);
    QGuiApplication::clipboard()->setMimeData(fileList(clip(u"two.mp4"_s)));
    type(u"ctrl+v"_s);
    QTRY_VERIFY_WITH_TIMEOUT(isListed(u"two.mp4"_s), patience);

    tabTo(words(u"V_layout"_s));
    type(u"Left"_s);
    QTRY_VERIFY_WITH_TIMEOUT(isFocused(words(u"V_layout"_s) + u": "_s + words(u"V_layout_min"_s)),
                             patience);
    tabTo(words(u"V_format"_s));
    type(u"Right"_s);
    tabTo(words(u"V_go"_s));
    type(u"space"_s);
    const QStringList made{u"one-index.jpg"_s, u"two-index.jpg"_s};
    QTRY_COMPARE_WITH_TIMEOUT(filesUnder(sheets()), made, patience);

    tabTo(words(u"V_list_title"_s));
    QTRY_VERIFY_WITH_TIMEOUT(isFocused(u"1, one.mp4"_s), patience);
    type(u"Menu"_s);
    const QString shown = localised(u"V_preview_made"_s).section(u'%', 0, 0);
    QTRY_VERIFY_WITH_TIMEOUT(Accessible::find([&](const Accessible &control) {
                                 return control.description().startsWith(shown);
                             }),
                             patience);
    // Open Sheet.
    type(u"s"_s);
    QTRY_COMPARE_WITH_TIMEOUT(opened(), sheets() + u"/one-index.jpg"_s, patience);
}

void TestOnScreen::killedProgramLosesNothing()
{
    start({clip(u"one.mp4"_s), clip(u"two.mp4"_s)});
    QTRY_VERIFY_WITH_TIMEOUT(isListed(u"two.mp4"_s), patience);
    const auto go = Accessible::named(words(u"V_go"_s));
    QVERIFY(go);
    QTRY_VERIFY_WITH_TIMEOUT(go->is(Accessible::sensitive), patience);
    QVERIFY(go->press());
    const auto pause = Accessible::named(words(u"V_pause"_s));
    QVERIFY(pause);
    QTRY_VERIFY_WITH_TIMEOUT(pause->is(Accessible::sensitive), patience);
    QVERIFY(pause->press());
    QTRY_VERIFY_WITH_TIMEOUT(pause->is(Accessible::checked), patience);
    QTRY_VERIFY_WITH_TIMEOUT(saved().value("isMaking"_L1).toBool(), patience);
    ::kill(static_cast<pid_t>(m_program->processId()), SIGKILL);
    QVERIFY(m_program->waitForFinished(patience));
    QTRY_VERIFY_WITH_TIMEOUT(!isAnyProcessAbout(clip(u"one.mp4"_s)), patience);
    QCOMPARE(filesUnder(sheets()).join(u'|'), QString());

    start();
    QTRY_VERIFY_WITH_TIMEOUT(Accessible::named(localised(u"V_crash_title"_s)), patience);
    QVERIFY(isListed(u"one.mp4"_s) && isListed(u"two.mp4"_s));
    QCOMPARE(filesUnder(sheets()).join(u'|'), QString());
    Accessible::named(words(u"V_crash_goOn"_s))->press();
    const QStringList made{u"one-index.jpg"_s, u"two-index.jpg"_s};
    QTRY_COMPARE_WITH_TIMEOUT(filesUnder(sheets()), made, patience);
}

QTEST_MAIN(TestOnScreen)
#include "test_onScreen.moc"
