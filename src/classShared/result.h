#pragma once

#include <QString>

#include <optional>
#include <utility>

namespace vignar
{

/// Why something failed, as one sentence for the user.
struct Failure {
    QString reason;
};

/// A value, or the reason why there is none.
template <class T>
class [[nodiscard]] Result
{
public:
    Result(T value) : m_value(std::move(value)) {}
    Result(Failure failure) : m_reason(std::move(failure.reason)) {}

    explicit operator bool() const { return m_value.has_value(); }
    const T &operator*() const { return *m_value; }
    T &operator*() { return *m_value; }
    const T *operator->() const { return &*m_value; }
    T *operator->() { return &*m_value; }

    /// Empty for a value.
    const QString &reason() const { return m_reason; }

private:
    std::optional<T> m_value;
    QString m_reason;
};

/// Success, or the reason of the failure.
template <>
class [[nodiscard]] Result<void>
{
public:
    Result() = default;
    Result(Failure failure) : m_reason(std::move(failure.reason)), m_isFailure(true) {}

    explicit operator bool() const { return !m_isFailure; }
    const QString &reason() const { return m_reason; }

private:
    QString m_reason;
    bool m_isFailure = false;
};

} // namespace vignar
