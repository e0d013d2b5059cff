// A program that is started again and again: says which part in the play it got, and what
// others hand to it. Its arguments: the patience in milliseconds, then paths.

#include "shell/platform/singleInstance.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

using namespace vignar;
using namespace Qt::StringLiterals;

namespace
{

void say(const QString &text)
{
    std::puts(text.toUtf8().constData());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    SingleInstance instance(u"startedTwice"_s);
    QObject::connect(&instance, &SingleInstance::handedOver, [](const Handover &handover) {
        say(u"got "_s + QString::fromUtf8(handover.startupToken));
        for (const QString &path : handover.paths)
            say(QString::fromLatin1(path.toUtf8().toHex()));
    });
    const auto role = instance.claim({arguments.mid(2), "token"},
                                     std::chrono::milliseconds(arguments[1].toInt()));
    say(QString::number(int(role)));
    return role == SingleInstance::Role::first ? QCoreApplication::exec() : 0;
}
