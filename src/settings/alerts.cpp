#include "settings/alerts.h"

#include "classShared/lineLog.h"
#include "settings/stringTables.h"

#include <QCoreApplication>
#include <QThread>

#include <array>

namespace vignar
{
using namespace Qt::StringLiterals;

namespace
{

std::unique_ptr<AlertPresenter> &presenterInUse()
{
    static std::unique_ptr<AlertPresenter> presenter;
    return presenter;
}

/// A notice may come from a worker thread, which does not wait until it is closed.
void showNotice(const QString &title, const QString &text, int seconds)
{
    const auto show = [=] { alertTimed(title, text, {}, {}, {}, AlertStyle::warning, seconds); };
    if (QCoreApplication *application = QCoreApplication::instance())
        QMetaObject::invokeMethod(application, show, Qt::AutoConnection);
}

AlertAnswer present(const AlertRequest &request)
{
    if (AlertPresenter *presenter = presenterInUse().get())
        return presenter->present(request);
    logLine(u"alert               :-/ %@ : %@", request.title, request.text);
    return {};
}

/// Buttons end at the first empty one, and a button there always is.
AlertRequest requestOf(const QString &title, const QString &text, const QStringList &buttons,
                       AlertStyle style, int seconds)
{
    QStringList shown = buttons.mid(0, buttons.indexOf(QString()));
    if (shown.isEmpty())
        shown.append(u"OK"_s);
    AlertRequest request;
    request.title = title.isNull() ? u""_s : title;
    request.text = text.isNull() ? u""_s : text;
    request.defaultButton = shown.value(0);
    request.alternateButton = shown.value(1);
    request.otherButton = shown.value(2);
    request.style = style;
    request.seconds = seconds;
    return request;
}

QString labelled(QStringView format, const QString &button)
{
    return button.isEmpty() ? u""_s : filled(format, button);
}

void logSuppressible(const AlertRequest &request, AlertButton button)
{
    logLine(u"FERMETURE USER      : CLIC=%ld", int(button));
    logLine(u"bt                  ? %@%@%@%@", u"button "_s + QString::number(int(button)),
            labelled(u" (btDefault=%@)", request.defaultButton),
            labelled(u" (btAlt=%@)", request.alternateButton),
            labelled(u" (btOther=%@)", request.otherButton));
}

} // namespace

QString utilsAlert::LocalisationString(const QString &key, const QString &localFichier,
                                       const QString &variable1, const QString &variable2,
                                       const QString &variable3, const QString &variable4,
                                       const QString &variable5)
{
    const QString table = localFichier.isEmpty() ? QString(localizedTable) : localFichier;
    const QString text = tableText(key, table);
    const QStringList all{variable1, variable2, variable3, variable4, variable5};
    const QStringList values = all.mid(0, all.indexOf(QString()));
    switch (values.size()) {
    case 0:
        return text;
    case 1:
        return filled(text, values[0]);
    case 2:
        return filled(text, values[0], values[1]);
    case 3:
        return filled(text, values[0], values[1], values[2]);
    case 4:
        return filled(text, values[0], values[1], values[2], values[3]);
    default:
        return filled(text, values[0], values[1], values[2], values[3], values[4]);
    }
}

std::unique_ptr<AlertPresenter> setAlertPresenter(std::unique_ptr<AlertPresenter> presenter)
{
    setNoticeHandler(presenter ? NoticeHandler(showNotice) : NoticeHandler());
    return std::exchange(presenterInUse(), std::move(presenter));
}

AlertButton alertTimed(const QString &title, const QString &text, const QString &defaultButton,
                       const QString &alternateButton, const QString &otherButton, AlertStyle style,
                       int seconds)
{
    static constexpr std::array labels{"ALERTE NORMALE"_L1, "OK"_L1, "Button 2"_L1, "Bouton 3"_L1};
    logDebug(u"giveUpAfterSeconds  : %ld", seconds);
    const AlertButton button =
        present(
            requestOf(title, text, {defaultButton, alternateButton, otherButton}, style, seconds))
            .button;
    if (seconds >= 1 && button == AlertButton::timeout)
        logLine(u"FERMETURE AUTO      : TIMEOUT");
    else if (seconds >= 1)
        logLine(u"FERMETURE USER      : CLIC");
    logDebug(u"bt                  ? %@", QString(labels.at(size_t(button))));
    return button;
}

AlertAnswer alertTimedSuppressible(const QString &title, const QString &text,
                                   const QString &defaultButton, const QString &alternateButton,
                                   const QString &otherButton, AlertStyle style, int seconds)
{
    logDebug(u"giveUpAfterSeconds  : %ld", seconds);
    AlertRequest request =
        requestOf(title, text, {defaultButton, alternateButton, otherButton}, style, seconds);
    request.isSuppressible = true;
    const AlertAnswer answer = present(request);
    if (answer.button == AlertButton::timeout)
        logLine(u"FERMETURE AUTO      : TIMEOUT");
    else
        logSuppressible(request, answer.button);
    return answer;
}

void alertUnexpected(const QString &detail)
{
    const bool isFrench = isLocalised(u"D_Langue"_s) && localised(u"D_Langue"_s) == "fra"_L1;
    const QString text =
        isFrench ? u"Vous n'auriez pas du voir cette alerte apparaître. Merci d'en faire une "
                   "capture (et de préparer -en plus- une capture de l'application…)"_s
                 : u"You would not have to see this alert. Thanks to make a screenshot of it (and "
                   "to prepare a screenshot of the application...)"_s;
    present(requestOf(u":-(\n"_s + text, detail, {}, AlertStyle::critical, 0));
}

} // namespace vignar
