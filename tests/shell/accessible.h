#pragma once

#include <QDBusObjectPath>
#include <QList>
#include <QRect>
#include <QString>

#include <functional>
#include <optional>

namespace vignar
{

/// A control of a running program as assistive technologies meet it on their bus (AT-SPI).
/// What has gone in the meantime has no name, no role and no children.
class Accessible
{
public:
    /// Bits of the states that are looked at here.
    enum State { checked = 4, focusable = 11, focused = 12, sensitive = 24, showing = 25 };

    Accessible() = default;
    Accessible(QString service, QDBusObjectPath path);

    /// The programs on the bus.
    static QList<Accessible> programs();
    /// The first that fits, the control itself included, of all that are shown.
    static std::optional<Accessible> find(const std::function<bool(const Accessible &)> &fits);
    static std::optional<Accessible> named(const QString &name);

    QString name() const;
    QString description() const;
    QString role() const;
    bool is(State state) const;
    QList<Accessible> children() const;
    /// In pixels of the screen.
    QRect place() const;
    /// Performs its first action, as a press of a button.
    bool press() const;

    /// Each control below that is shown, and what is below it.
    void visit(const std::function<void(const Accessible &)> &visitor) const;

private:
    QVariant call(const QString &interface, const QString &method,
                  const QVariantList &arguments = {}) const;
    QVariant property(const QString &name) const;

    QString m_service;
    QDBusObjectPath m_path;
};

} // namespace vignar
