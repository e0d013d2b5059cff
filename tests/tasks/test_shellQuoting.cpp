#include "tasks/shellQuoting.h"

#include "tasks/testPlaces.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace vignar;

class TestShellQuoting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void safeIsWhatTheShellPassesOnUnchanged()
    {
        for (const char *argument :
             {"",    "plain", "a b",  "a\\ b", "a\\b",     "a\\'b", "a#b", "\\#a",   "a~b", "\\~",
              "no!", "a$",    "a$ b", "$.",    "\\$HOME",  "\\*",   "a[b", "a]b",    "[]",  "{a,b}",
              "a=b", "-x",    "-",    "a -n",  "--help a", "2",     "été", "a\\\tb", "a\r"})
            QVERIFY2(isStringSafe4Task(QString::fromUtf8(argument)), argument);
        for (const char *argument :
             {"a  b",      " a",      "a\tb",     "a\\\\b", "end\\",    "it's",      "'abc'",
              "'a b'",     "\"a b\"", "'",        "\"\"",   "a''b",     "\"a\\$b\"", "\"a\\q\"",
              "a #b",      "#a",      "~",        "-n",     "-neE x",   "\\-n",      "--help",
              "--version", "2>&1",    "a\n",      "a\\\nb", "(a)",      "a;",        "\"a\nb\"",
              "$(id)",     "`id`",    "\"`id`\"", "$HOME",  "\"${x}\"", "a;id",      "a&",
              "a|id",      ">x",      "<x",       "*",      "a?",       "[ab]",      "[!]]",
              "~root",     "a\nid",   "'a"})
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
