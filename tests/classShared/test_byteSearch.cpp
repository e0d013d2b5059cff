#include "classShared/byteSearch.h"

#include <QBuffer>
#include <QTest>

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

    void findsInMemory()
    {
        QCOMPARE(offsetOfData("aaab", "aab"), 1);
        QCOMPARE(offsetOfData("aab", "aabb"), dataNotFound);
        QCOMPARE(offsetOfData("aab", ""), dataNotFound);
    }

    void overwritesInPlace()
    {
        const auto overwritten = [](QByteArray data, const QByteArray &replacement) {
            const int count = replaceAllData(data, "abc", replacement);
            return data + " by " + QByteArray::number(count);
        };
        QCOMPARE(overwritten("-abc-abc", "X"), "-Xbc-Xbc by 2");
        QCOMPARE(overwritten("-abc-abc", "WXYZZ"), "-WXYZZbc by 1");
        QCOMPARE(overwritten("--abc", "WXYZ"), "--WXY by 1");
        // A replacement that brings the pattern back ends all the same.
        QCOMPARE(overwritten("-abc-", ""), "-abc- by 5");
    }

    void findsInFile()
    {
        constexpr qint64 chunk = 2000003;
        for (const qint64 offset : {qint64(0), chunk - 4, chunk - 3, chunk - 2, chunk - 1, chunk,
                                    2 * chunk - 2, 2 * chunk - 1, 3 * chunk - 3}) {
            // Half matches before the match and a whole one behind it.
            QByteArray data(3 * chunk, 'a');
            data.replace(offset, 3, "aab");
            data.append("aab");
            QBuffer file(&data);
            QVERIFY(file.open(QIODevice::ReadOnly) && file.seek(5));
            QCOMPARE(offsetOfData_NSFileHandle(file, "aab"), offset);
            QCOMPARE(file.pos(), 5);
        }
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
