#include "settings/preferencePanel.h"
#include "settings/preferences.h"

#include <QDir>
#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

class FakePanel : public PreferencePanel
{
public:
    void setControl(const QString &key, const QVariant &value) override { controls[key] = value; }
    QVariant control(const QString &key) const override { return controls.value(key); }
    int segmentCount(const QString &) const override { return 4; }
    void perform(Action action) override { actions.append(action); }

    Dico controls;
    QList<Action> actions;
};

} // namespace

class PreferencePanelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storedValuesAreValidated_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QVariant>("shown");
        const auto row = [](const char *name, const QString &key, const QVariant &stored,
                            const QVariant &shown) {
            QTest::newRow(name) << key << stored << shown;
        };
        const QString home = QDir::homePath();
        const QString movies = home + u"/Movies/"_s;
        row("colour segment beyond the last", u"prefColor"_s, 7, 1);
        row("colour segment absent", u"prefColor"_s, {}, 1);
        row("layout not found", u"prefCheckMatrix"_s, 2147483647, 3);
        row("interval of zero", u"prefDerushInterval"_s, 0, 20);
        row("end alert absent", u"prefAlertEnd"_s, {}, 0);
        row("updates absent", u"update"_s, {}, 1);
        row("negative interval mode", u"prefDerush"_s, -1, 0);
        row("colour", u"pageBkgColor"_s, u"0A0b0c"_s, u"0a0b0c"_s);
        row("no colour", u"prefBorderColor"_s, u"red wine"_s, u"b3b3b3"_s);
        row("destination", u"prefDefautDstPathStr"_s, home, home);
        row("destination gone", u"prefDefautDstPathStr"_s, home + u"/gone"_s, movies);
        row("own folder to be made", u"prefDefautDstPathStr"_s, home + u"/Vignar/"_s,
            home + u"/Vignar/"_s);
        row("own folder whose parent is gone", u"prefDefautDstPathStr"_s, home + u"/gone/Vignar"_s,
            movies);
    }

    void storedValuesAreValidated()
    {
        QFETCH(QString, key);
        QFETCH(QVariant, stored);
        QFETCH(QVariant, shown);
        FakePanel panel;
        QVERIFY(!prefs2GuiApp(panel, stored.isValid() ? Dico{{key, stored}} : Dico()));
        QCOMPARE(panel.controls.value(key), shown);
    }

    void actionsFollowTheirControls()
    {
        using Action = PreferencePanel::Action;
        FakePanel panel;
        prefs2GuiApp(panel, Dico());
        const QList<Action> expected{Action::prepareDestination,    Action::setColor,
                                     Action::showUpdateControls,    Action::prefDpi,
                                     Action::prefComputerWidthAuto, Action::prefComputerWidth,
                                     Action::thLimitAuto,           Action::thLimitAuto,
                                     Action::multimediaHDBt};
        QCOMPARE(panel.actions, expected);
    }

    void thePanelReadsBackWhatItShows()
    {
        FakePanel panel;
        prefs2GuiApp(panel, prefDefaults());
        Dico expected = prefDefaults();
        for (const auto *key : {"rateDeclined", "ratedVersion", "rateVersion"})
            expected.remove(QString::fromLatin1(key));
        expected[Prefs::prefColor] = 1;
        QCOMPARE(*prefs2GuiApp(panel, std::nullopt), expected);
    }

    void mixedCheckBoxesAreOnUnlessTheyPlanThumbnails()
    {
        FakePanel panel;
        for (const QString &key : {u"prefLimitAuto"_s, u"prefDerush"_s, u"pageName"_s})
            panel.setControl(key, -1);
        panel.setControl(Prefs::prefDerushInterval, -5);
        const Dico values = *prefs2GuiApp(panel, std::nullopt);
        QCOMPARE(values.value(u"prefLimitAuto"_s), 0);
        QCOMPARE(values.value(u"prefDerush"_s), 0);
        QCOMPARE(values.value(u"pageName"_s), 1);
        QCOMPARE(values.value(u"prefDerushInterval"_s), 20);
    }
};

QTEST_GUILESS_MAIN(PreferencePanelTest)
#include "test_preferencePanel.moc"
