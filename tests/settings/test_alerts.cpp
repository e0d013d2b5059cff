#include "capturedLog.h"

#include "settings/alerts.h"

#include <QTest>
#include <QThread>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

QList<AlertRequest> shown;
AlertAnswer nextAnswer;

class Recorder : public AlertPresenter
{
public:
    AlertAnswer present(const AlertRequest &request) override
    {
        shown.append(request);
        return nextAnswer;
    }
};

AlertButton timed(const QString &text, const QStringList &buttons, int seconds)
{
    return alertTimed(u"100%"_s, text, buttons.value(0), buttons.value(1), buttons.value(2),
                      AlertStyle::critical, seconds);
}

} // namespace

class AlertsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        shown.clear();
        nextAnswer = {};
        setAlertPresenter(std::make_unique<Recorder>());
    }

    void textsAreShownAsTheyAre()
    {
        timed(u"50% %@"_s, {u"Keep"_s, u""_s, u"All"_s}, 10);
        timed({}, {u""_s, u"Replace"_s}, 10);
        QCOMPARE(shown.at(0).title, u"100%"_s);
        QCOMPARE(shown.at(0).text, u"50% %@"_s);
        QCOMPARE(shown.at(0).defaultButton, u"Keep"_s);
        QVERIFY(shown.at(0).otherButton.isEmpty());
        QVERIFY(!shown.at(1).text.isNull());
        QCOMPARE(shown.at(1).defaultButton, u"OK"_s);
        QVERIFY(shown.at(1).alternateButton.isEmpty());
    }

    void theEndIsLogged_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<AlertButton>("button");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("time-out") << 60 << AlertButton::timeout
                                  << QStringList{u"FERMETURE AUTO      : TIMEOUT"_s};
        QTest::newRow("click") << 60 << AlertButton::third
                               << QStringList{u"FERMETURE USER      : CLIC"_s};
        QTest::newRow("without limit") << 0 << AlertButton::first << QStringList{};
    }

    void theEndIsLogged()
    {
        QFETCH(int, seconds);
        QFETCH(AlertButton, button);
        QFETCH(QStringList, lines);
        nextAnswer.button = button;
        CapturedLog log;
        QCOMPARE(timed(u"text"_s, {}, seconds), button);
        QCOMPARE(log.lines, lines);
    }

    void suppressionIsAnswered()
    {
        nextAnswer = {AlertButton::second, true};
        CapturedLog log;
        const AlertAnswer answer =
            alertTimedSuppressible(u"a"_s, u"b"_s, u"Yes"_s, u"No"_s, {}, AlertStyle::warning, 60);
        QCOMPARE(answer.button, AlertButton::second);
        QVERIFY(answer.isSuppressed);
        QVERIFY(shown.at(0).isSuppressible);
        QCOMPARE(log.lines,
                 (QStringList{u"FERMETURE USER      : CLIC=2"_s,
                              u"bt                  ? button 2 (btDefault=Yes) (btAlt=No)"_s}));
    }

    void noticesOfAnyThreadAreShownOnTheMainOne()
    {
        const std::unique_ptr<QThread> worker(
            QThread::create([] { notice(u"title"_s, u"text"_s, 30); }));
        worker->start();
        QVERIFY(worker->wait());
        QVERIFY(shown.isEmpty());
        QTRY_COMPARE(shown.size(), 1);
        QCOMPARE(shown.at(0).seconds, 30);
    }
};

QTEST_GUILESS_MAIN(AlertsTest)
#include "test_alerts.moc"
