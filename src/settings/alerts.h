#pragma once

#include <QString>

#include <memory>

namespace vignar
{

/// The system's alert with values filled in, and its end.
class utilsAlert
{
public:
    /// The text of a key in a table ("" means "Localized"), filled with the values in
    /// order; the first empty value ends the list. "" when the key is missing.
    static QString LocalisationString(const QString &key, const QString &localFichier,
                                      const QString &variable1, const QString &variable2,
                                      const QString &variable3, const QString &variable4,
                                      const QString &variable5);
};

enum class AlertButton { timeout = 0, first = 1, second = 2, third = 3 };
enum class AlertStyle { warning = 0, informational = 1, critical = 2 };

/// One question or notice. Texts are shown as they are, never used as formats.
struct AlertRequest {
    QString title;
    QString text;
    /// Shown in this order up to the first empty one; none: "OK".
    QString defaultButton;
    QString alternateButton;
    QString otherButton;
    AlertStyle style = AlertStyle::warning;
    /// Below 1: waits for an answer.
    int seconds = 0;
    /// Offers a check box that suppresses the alert.
    bool isSuppressible = false;
};

struct AlertAnswer {
    AlertButton button = AlertButton::timeout;
    bool isSuppressed = false;
};

/// Shows alerts. Main thread only.
class AlertPresenter
{
public:
    virtual ~AlertPresenter() = default;
    virtual AlertAnswer present(const AlertRequest &request) = 0;
};

/// Sets the presenter and returns the one before. Without one every alert is logged
/// and answered as timed out. A presenter shows the notices of lineLog.h too, those of
/// other threads once the event loop runs.
std::unique_ptr<AlertPresenter> setAlertPresenter(std::unique_ptr<AlertPresenter> presenter);

/// Shows an alert that closes itself after the seconds; a null title or text is empty.
AlertButton alertTimed(const QString &title, const QString &text, const QString &defaultButton,
                       const QString &alternateButton, const QString &otherButton, AlertStyle style,
                       int seconds);
/// The same with a check box that suppresses the alert from then on.
AlertAnswer alertTimedSuppressible(const QString &title, const QString &text,
                                   const QString &defaultButton, const QString &alternateButton,
                                   const QString &otherButton, AlertStyle style, int seconds);
/// Asks the user for a picture of a state that should not occur.
void alertUnexpected(const QString &detail);

} // namespace vignar
