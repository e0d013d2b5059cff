#include "tasks/shellQuoting.h"

#include "tasks/testPlaces.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace vignar;

namespace
{

/// What the shell really shows, compared as the rule says; for harmless arguments only.
bool isSafeByEcho(const QString &argument)
{
    QProcess shell;
    shell.setProcessChannelMode(QProcess::MergedChannels);
    shell.start(u"/bin/sh"_s, {u"-c"_s, u"/bin/echo "_s + argument + u" 2>&1"_s});
    shell.waitForFinished();
    QString echo = QString::fromUtf8(shell.readAll());
    if (echo.endsWith(u'\n'))
        echo.chop(1);
    for (const QChar quote : {u'\'', u'"'}) {
        if (argument.startsWith(quote) && argument.endsWith(quote))
            echo = echo.size() < 2 ? QString() : echo.mid(1, echo.size() - 2);
    }
    return echo == argument || echo == QString(argument).remove(u'\\');
}

} // namespace

class TestShellQuoting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithTheShell_data()
    {
        QTest::addColumn<QString>("argument");
        for (const char *argument :
             {"",        "plain",  "a b",    "a  b",     " a",        "a\tb",     "a\\ b",
              "a\\b",    "a\\\\b", "end\\",  "a\\'b",    "it's",      "'abc'",    "'a b'",
              "\"a b\"", "'",      "\"\"",   "a''b",     "\"a\\$b\"", "\"a\\q\"", "a#b",
              "a #b",    "#a",     "\\#a",   "a~b",      "~",         "\\~",      "no!",
              "a$",      "a$ b",   "$.",     "\\$HOME",  "\\*",       "a[b",      "a]b",
              "[]",      "{a,b}",  "a=b",    "-n",       "-neE x",    "-x",       "-",
              "\\-n",    "a -n",   "--help", "--help a", "--version", "2>&1",     "2",
              "été",     "a\\\tb", "a\r",    "a\n",      "a\\\nb",    "(a)",      "a;",
              "\"a\nb\""})
            QTest::newRow(QByteArray(argument).toPercentEncoding()) << QString::fromUtf8(argument);
    }
    void agreesWithTheShell()
    {
        QFETCH(QString, argument);
        QCOMPARE(isStringSafe4Task(argument), isSafeByEcho(argument));
    }

    void whatTheShellWouldActOnIsUnsafe()
    {
        for (const char *argument :
             {"$(id)", "`id`", "\"`id`\"", "$HOME", "\"${x}\"", "a;id", "a&", "a|id", ">x", "<x",
              "*", "a?", "[ab]", "[!]]", "~root", "a\nid", "'a"})
            QVERIFY2(!isStringSafe4Task(QString::fromUtf8(argument)), argument);
        QVERIFY(!isStringSafe4Task({}) && !isStringSafe4Task(QChar(QChar::Null)));
    }

    void commandLine()
    {
        const TestPlaces places;
        const QString links = places.folder.path() + u"/links"_s;
        const QString file = places.file(u"a  film"_s);
        const QStringList items{u"tool"_s,   u"it's"_s, u"a\"b  c"_s, file,
                                u"'a  b'"_s, u"2>&1"_s, u"|"_s,       u"&"_s};
        QCOMPARE(shellCommand({u"a  b"_s}, links), u"'a  b'"_s);
        QVERIFY(!QFileInfo::exists(links));
        QCOMPARE(shellCommand(items, links),
                 u"tool 'it'\\''s' \"a\"b  c\" %1/arg3 'a  b' 2>&1 | &"_s.arg(links));
        QCOMPARE(QFile::symLinkTarget(links + u"/arg3"_s), file);
    }
};

QTEST_GUILESS_MAIN(TestShellQuoting)
#include "test_shellQuoting.moc"
