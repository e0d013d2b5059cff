#pragma once

#include <QLatin1String>
#include <QString>
#include <QVariant>

#include <optional>

namespace vignar
{

/// A dictionary as the system iterates, merges and stores it.
using Dico = QVariantMap;

/// The typed name of one entry of a dictionary.
template <class T>
struct Key {
    QLatin1String text;

    constexpr explicit Key(const char *name) : text(name) {}
    operator QString() const { return QString(text); }
};

/// The typed name of one property of the numbered streams of one type:
/// StreamKey<int>{'v', "width"}(1) is the key "v1_width".
template <class T>
struct StreamKey {
    char type;
    QLatin1String property;

    constexpr StreamKey(char streamType, const char *name) : type(streamType), property(name) {}

    struct Name {
        QString text;
        operator QString() const { return text; }
    };
    Name operator()(int number) const
    {
        return {QLatin1Char(type) + QString::number(number) + QLatin1Char('_') + property};
    }
};

/// The entry converted to its type; nothing when absent or not convertible.
template <class T>
std::optional<T> readText(const Dico &dico, const QString &key)
{
    const auto found = dico.constFind(key);
    if (found == dico.cend() || !found->isValid())
        return std::nullopt;
    if constexpr (std::is_same_v<T, QVariant>) {
        return *found;
    } else {
        QVariant value = *found;
        if (!value.convert(QMetaType::fromType<T>()))
            return std::nullopt;
        return value.value<T>();
    }
}

template <class T>
std::optional<T> read(const Dico &dico, const Key<T> &key)
{
    return readText<T>(dico, key);
}

template <class T>
std::optional<T> read(const Dico &dico, const StreamKey<T> &key, int number)
{
    return readText<T>(dico, key(number));
}

/// The text of an entry, or a null text when absent.
inline QString readStr(const Dico &dico, const Key<QString> &key)
{
    return read(dico, key).value_or(QString());
}

template <class T>
bool contains(const Dico &dico, const Key<T> &key)
{
    return dico.contains(key);
}

template <class T>
void write(Dico &dico, const Key<T> &key, const std::type_identity_t<T> &value)
{
    dico.insert(key, QVariant::fromValue(value));
}

template <class T>
void write(Dico &dico, const StreamKey<T> &key, int number, const std::type_identity_t<T> &value)
{
    dico.insert(key(number), QVariant::fromValue(value));
}

template <class T>
void remove(Dico &dico, const Key<T> &key)
{
    dico.remove(key);
}

} // namespace vignar
