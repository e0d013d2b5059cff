#include "app/passExecutor.h"

#include "sheet/extractionPasses.h"

#include <QFile>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace vignar;

/// What becomes of passes whose tool is a script: limits, budget, and what is said of them.
class TestPassExecutor : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    /// Passes of so many pictures with the script as their tool, which finds the path of its
    /// picture in "$1" and a whole one in "$picture".
    PassMap passes(const QString &script, int count) const
    {
        QFile tool(m_folder.filePath(u"tool"_s));
        if (!tool.open(QIODevice::WriteOnly) ||
            !tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
            return {};
        tool.write(u"#!/bin/bash\npicture='%1'; set -- \"${@: -1}\"; %2\n"_s
                       .arg(m_folder.filePath(u"whole.jpg"_s), script)
                       .toUtf8());
        PassMap planned;
        for (int number = 0; number < count; ++number) {
            QStringList pass =
                ffmpegPass({{Keys::srcPathStr, u"/nowhere"_s}}, 10 * number, u"scale=64:48"_s,
                           m_folder.filePath(u"img%1.jpg"_s.arg(number)));
            pass.first() = tool.fileName();
            planned.emplace(number, pass);
        }
        return planned;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QImage picture(64, 48, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QVERIFY(picture.save(m_folder.filePath(u"whole.jpg"_s)));
    }

    void cleanup()
    {
        for (int number = 0; number < 4; ++number)
            QFile::remove(m_folder.filePath(u"img%1.jpg"_s.arg(number)));
    }

    void whatBecomesOfARow_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<int>("landed");
        QTest::addColumn<RunFault>("fault");
        const QString refuse = u"{ echo 'x: Cannot allocate memory' >&2; exit 1; }"_s;
        const QString take = u"cp \"$picture\" \"$1\""_s;
        QTest::newRow("all there") << take << 3 << RunFault::none;
        QTest::newRow("without a reason") << u"exit 1"_s << 0 << RunFault::none;
        QTest::newRow("never enough memory") << refuse << 0 << RunFault::neededMemory;
        QTest::newRow("killed") << u"kill -KILL $$"_s << 0 << RunFault::killed;
#ifndef __SANITIZE_ADDRESS__
        // 2 GB for each of two, 4 GB for one that runs by itself.
        QTest::newRow("enough memory without the others")
            << u"[ $(ulimit -d) -gt 3000000 ] || "_s + refuse + u"; "_s + take << 3
            << RunFault::none;
        const QString lone = m_folder.filePath(u"lone"_s);
        QTest::newRow("really without the others")
            << u"[ ! -e '%1' ] || touch '%1.beside'; [ $(ulimit -d) -gt 3000000 ] || "_s.arg(lone) +
                   refuse +
                   u"; mkdir '%1' || touch '%1.beside'; sleep 0.05; rmdir '%1'; "_s.arg(lone) + take
            << 3 << RunFault::none;
#endif
    }

    void whatBecomesOfARow()
    {
        QFETCH(QString, script);
        PassExecutor executor;
        executor.setProcesses(2);
        QSignalSpy landed(&executor, &PassExecutor::landed);
        QSignalSpy finished(&executor, &PassExecutor::finished);
        executor.start(passes(script, 3), {});
        QVERIFY(finished.wait(60000));
        QTEST(landed.isEmpty() ? 0 : landed.constLast().constFirst().toInt(), "landed");
        QTEST(executor.fault(), "fault");
        QVERIFY(!executor.isLate());
        QVERIFY(!QFile::exists(m_folder.filePath(u"lone.beside"_s)));
    }

    void rowPastItsBudgetIsGivenUp()
    {
        PassExecutor executor;
        executor.setProcesses(1);
        executor.setBudget(std::chrono::milliseconds(150));
        QSignalSpy finished(&executor, &PassExecutor::finished);
        executor.start(passes(u"exec sleep 1000"_s, 3), {});
        // A pause is no work on the source.
        executor.suspend();
        QVERIFY(!finished.wait(400) && !executor.isLate());
        executor.resume();
        QVERIFY(finished.wait(60000));
        QVERIFY(executor.isLate() && !executor.isRunning());
    }
};

QTEST_GUILESS_MAIN(TestPassExecutor)
#include "test_passExecutor.moc"
