#include "shell/alertBoxes.h"

#include "classShared/format.h"
#include "settings/stringTables.h"
#include "shell/icons.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr std::chrono::milliseconds tick{200};
constexpr int smallestWidth = 320;
constexpr int iconSize = 48;

QString iconName(const AlertRequest &request)
{
    if (request.style == AlertStyle::critical)
        return u"dialog-error"_s;
    if (request.style == AlertStyle::informational)
        return u"dialog-information"_s;
    return request.alternateButton.isEmpty() ? u"dialog-warning"_s : u"dialog-question"_s;
}

/// A message box that Escape and its close button close without choosing a button.
class AlertBox : public QMessageBox
{
public:
    AlertBox(const AlertRequest &request, QWidget *window)
        : QMessageBox(window), m_text(request.text), m_isTimed(request.seconds >= 1)
    {
        setWindowTitle(QGuiApplication::applicationDisplayName());
        setWindowModality(window ? Qt::WindowModal : Qt::ApplicationModal);
        setTextFormat(Qt::PlainText);
        setText(request.title);
        setIconPixmap(themedIcon(iconName(request)).pixmap(iconSize));
        embolden();
        addButtons(request);
        if (m_isTimed) {
            m_end.setRemainingTime(std::chrono::seconds(request.seconds));
            m_ticks.callOnTimeout(this, [this] { showRemaining(); });
            m_ticks.start(tick);
        }
        showRemaining();
    }

    AlertAnswer answer() const
    {
        const bool isSuppressed = checkBox() && checkBox()->isChecked();
        const auto index = m_buttons.indexOf(clickedButton());
        return {static_cast<AlertButton>(index + 1), isSuppressed};
    }

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() == Qt::Key_Escape)
            done(0);
        else
            QMessageBox::keyPressEvent(event);
    }
    void closeEvent(QCloseEvent *event) override
    {
        event->accept();
        done(0);
    }

private:
    void embolden()
    {
        auto *label = findChild<QLabel *>(u"qt_msgbox_label"_s);
        if (!label)
            return;
        QFont strong = label->font();
        strong.setWeight(QFont::DemiBold);
        label->setFont(strong);
        // Room for a sentence or two, so that no narrow column results.
        label->setMinimumWidth(smallestWidth);
    }

    void addButtons(const AlertRequest &request)
    {
        // Where the alert can be suppressed, the last text is the check box's.
        const QString third = request.isSuppressible ? QString() : request.otherButton;
        for (const QString &words : {request.defaultButton, request.alternateButton, third}) {
            if (words.isEmpty())
                break;
            m_buttons.append(addButton(words, QMessageBox::ActionRole));
        }
        setDefaultButton(static_cast<QPushButton *>(m_buttons.first()));
        if (!request.isSuppressible)
            return;
        const QString words = request.otherButton;
        setCheckBox(new QCheckBox(words.isEmpty() ? localised(u"V_alert_suppress"_s) : words));
    }

    void showRemaining()
    {
        if (m_isTimed && m_end.hasExpired()) {
            done(0);
            return;
        }
        QStringList parts;
        if (!m_text.isEmpty())
            parts.append(m_text);
        if (m_isTimed) {
            const auto left = std::chrono::ceil<std::chrono::seconds>(
                std::chrono::nanoseconds(m_end.remainingTimeNSecs()));
            parts.append(filled(localised(u"V_alert_countdown"_s), static_cast<int>(left.count())));
        }
        if (const QString text = parts.join(u"\n\n"_s); text != informativeText())
            showText(text);
    }

    void showText(const QString &text)
    {
        setInformativeText(text);
        // A path in it may look like markup, which the label would obey.
        if (auto *label = findChild<QLabel *>(u"qt_msgbox_informativelabel"_s))
            label->setTextFormat(Qt::PlainText);
    }

    const QString m_text;
    const bool m_isTimed;
    QList<QAbstractButton *> m_buttons;
    QDeadlineTimer m_end;
    QTimer m_ticks;
};

} // namespace

AlertAnswer AlertBoxes::present(const AlertRequest &request)
{
    QWidget *window = m_window && m_window->isVisible() ? m_window.data() : nullptr;
    AlertBox box(request, window);
    box.exec();
    return box.answer();
}

} // namespace vignar
