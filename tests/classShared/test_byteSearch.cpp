#include "classShared/byteSearch.h"

#include <QBuffer>
#include <QTest>

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

using namespace vignar;
using namespace Qt::StringLiterals;

class ByteSearchTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsHexadecimalText()
    {
        QCOMPARE(toDataFromHexString(u"0a1BFf"_s), QByteArray("\x0a\x1b\xff"));
        QCOMPARE(toDataFromHexString(u"0G"_s), QByteArray("\x10"));
    }

    void oddLengthEndsTheProcess()
    {
        const pid_t child = fork();
        if (child == 0) {
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
                _exit(text.contains(u"String length is odd !"_s) ? 7 : 1);
            });
            toDataFromHexString(u"0a1"_s);
            _exit(0);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 7);
    }

    void findsInMemory()
    {
        QCOMPARE(offsetOfData("aaab", "aab"), 1);
        QCOMPARE(offsetOfData("aab", "aab"), 0);
        QCOMPARE(offsetOfData("aab", "aabb"), dataNotFound);
        QCOMPARE(offsetOfData("aab", ""), dataNotFound);
    }

    void overwritesInPlace_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QByteArray>("replacement");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("result");
        const QByteArray data = "-abc-abc";
        QTest::newRow("shorter leaves the tail")
            << data << QByteArray("X") << 2 << QByteArray("-Xbc-Xbc");
        QTest::newRow("longer stops at the end")
            << data << QByteArray("WXYZZ") << 1 << QByteArray("-WXYZZbc");
        QTest::newRow("longer at the end")
            << QByteArray("--abc") << QByteArray("WXYZ") << 1 << QByteArray("--WXY");
        QTest::newRow("absent") << QByteArray("cba") << QByteArray("X") << 0 << QByteArray("cba");
    }
    void overwritesInPlace()
    {
        QFETCH(QByteArray, data);
        QFETCH(QByteArray, replacement);
        QTEST(replaceAllData(data, "abc", replacement), "count");
        QTEST(data, "result");
    }

    void endsWhenTheReplacementBringsThePatternBack()
    {
        QByteArray data = "-abc-";
        QVERIFY(replaceAllData(data, "abc", "") > 0);
        QCOMPARE(data, QByteArray("-abc-"));
    }

    void findsInFile_data()
    {
        QTest::addColumn<qint64>("offset");
        constexpr qint64 chunk = 2000003;
        for (const qint64 offset : {qint64(0), chunk - 4, chunk - 3, chunk - 2, chunk - 1, chunk,
                                    2 * chunk - 2, 2 * chunk - 1, 3 * chunk - 3})
            QTest::addRow("at %lld", offset) << offset;
    }
    void findsInFile()
    {
        QFETCH(qint64, offset);
        // Half matches before the match and a whole one behind it.
        QByteArray data(3 * 2000003, 'a');
        data.replace(offset, 3, "aab");
        data.append("aab");
        QBuffer file(&data);
        QVERIFY(file.open(QIODevice::ReadOnly) && file.seek(5));
        QCOMPARE(offsetOfData_NSFileHandle(file, "aab"), offset);
        QCOMPARE(file.pos(), 5);
    }

    void missesInFile()
    {
        QByteArray data(5000, 'a');
        QBuffer file(&data);
        QCOMPARE(offsetOfData_NSFileHandle(file, "a"), dataNotFound); // Not open.
        QVERIFY(file.open(QIODevice::ReadOnly) && file.seek(5));
        QCOMPARE(offsetOfData_NSFileHandle(file, "aab"), dataNotFound);
        QCOMPARE(offsetOfData_NSFileHandle(file, ""), dataNotFound);
        QCOMPARE(file.pos(), 5);
    }
};

QTEST_APPLESS_MAIN(ByteSearchTest)
#include "test_byteSearch.moc"
