#include "accessible.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// The bus of the assistive technologies, which the session bus knows.
const QDBusConnection &bus()
{
    static const QDBusConnection connection = [] {
        const QDBusMessage question = QDBusMessage::createMethodCall(
            u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s);
        const QDBusReply<QString> address = QDBusConnection::sessionBus().call(question);
        return QDBusConnection::connectToBus(address.value(), u"accessibility"_s);
    }();
    return connection;
}

} // namespace

Accessible::Accessible(QString service, QDBusObjectPath path)
    : m_service(std::move(service)), m_path(std::move(path))
{
}

QVariant Accessible::call(const QString &interface, const QString &method,
                          const QVariantList &arguments) const
{
    QDBusMessage question =
        QDBusMessage::createMethodCall(m_service, m_path.path(), interface, method);
    question.setArguments(arguments);
    return bus().call(question, QDBus::Block, 5000).arguments().value(0);
}

QVariant Accessible::property(const QString &name) const
{
    return call(u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                {u"org.a11y.atspi.Accessible"_s, name})
        .value<QDBusVariant>()
        .variant();
}

QList<Accessible> Accessible::programs()
{
    const Accessible registry(u"org.a11y.atspi.Registry"_s,
                              QDBusObjectPath(u"/org/a11y/atspi/accessible/root"_s));
    return registry.children();
}

std::optional<Accessible> Accessible::find(const std::function<bool(const Accessible &)> &fits)
{
    std::optional<Accessible> found;
    for (const Accessible &program : programs()) {
        program.visit([&](const Accessible &control) {
            if (!found && fits(control))
                found = control;
        });
    }
    return found;
}

std::optional<Accessible> Accessible::named(const QString &name)
{
    return find([&name](const Accessible &control) { return control.name() == name; });
}

QString Accessible::name() const
{
    return property(u"Name"_s).toString();
}

QString Accessible::description() const
{
    return property(u"Description"_s).toString();
}

QString Accessible::role() const
{
    return call(u"org.a11y.atspi.Accessible"_s, u"GetRoleName"_s).toString();
}

bool Accessible::is(State state) const
{
    const QVariant states = call(u"org.a11y.atspi.Accessible"_s, u"GetState"_s);
    const auto words = qdbus_cast<QList<uint>>(states);
    return (words.value(0) & (1U << state)) != 0;
}

QList<Accessible> Accessible::children() const
{
    const QVariant answer = call(u"org.a11y.atspi.Accessible"_s, u"GetChildren"_s);
    if (!answer.canConvert<QDBusArgument>())
        return {};
    const auto list = answer.value<QDBusArgument>();
    QList<Accessible> children;
    list.beginArray();
    while (!list.atEnd()) {
        Accessible child;
        list.beginStructure();
        list >> child.m_service >> child.m_path;
        list.endStructure();
        children.append(child);
    }
    list.endArray();
    return children;
}

QRect Accessible::place() const
{
    constexpr uint onScreen = 0;
    const QVariant answer = call(u"org.a11y.atspi.Component"_s, u"GetExtents"_s, {onScreen});
    return answer.canConvert<QDBusArgument>() ? qdbus_cast<QRect>(answer) : QRect();
}

bool Accessible::press() const
{
    return call(u"org.a11y.atspi.Action"_s, u"DoAction"_s, {0}).toBool();
}

void Accessible::visit(const std::function<void(const Accessible &)> &visitor) const
{
    for (const Accessible &child : children()) {
        if (!child.is(showing))
            continue;
        visitor(child);
        child.visit(visitor);
    }
}

} // namespace vignar
