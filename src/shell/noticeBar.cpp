#include "shell/noticeBar.h"

#include "settings/stringTables.h"
#include "shell/colours.h"
#include "shell/icons.h"
#include "shell/roomyButton.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int iconSize = 24;
constexpr int padding = 12;
/// Between the frame and what stands above the bar.
constexpr int outerGap = 12;

QString iconName(NoticeKind kind)
{
    switch (kind) {
    case NoticeKind::success:
        return u"puceSuccess"_s;
    case NoticeKind::warning:
        return u"dialog-warning"_s;
    case NoticeKind::failure:
        return u"puceFailure"_s;
    case NoticeKind::information:
        break;
    }
    return u"dialog-information"_s;
}

QLabel *makeLabel()
{
    auto *label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

NoticeBar::NoticeBar(QWidget *parent)
    : QFrame(parent),
      m_title(makeLabel()),
      m_text(makeLabel()),
      m_buttons(new QHBoxLayout),
      m_close(new QToolButton)
{
    QFont strong = m_title->font();
    strong.setWeight(QFont::DemiBold);
    m_title->setFont(strong);
    m_close->setIcon(themedIcon(u"window-close"_s));
    m_close->setAutoRaise(true);
    m_close->setFocusPolicy(Qt::StrongFocus);
    m_close->setToolTip(localised(u"V_notice_close"_s));
    m_close->setAccessibleName(localised(u"V_notice_close"_s));
    connect(m_close, &QToolButton::clicked, this, &NoticeBar::close);

    auto *words = new QVBoxLayout;
    words->setSpacing(4);
    words->addWidget(m_title);
    words->addWidget(m_text);
    words->addLayout(m_buttons);
    m_buttons->setSpacing(8);
    m_buttons->addStretch();
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(padding, outerGap + padding, padding, padding);
    row->setSpacing(padding);
    // Room for the icon, on whichever side one begins to read.
    auto *iconRoom = new QWidget;
    iconRoom->setFixedWidth(iconSize);
    row->addWidget(iconRoom);
    row->addLayout(words, 1);
    row->addWidget(m_close, 0, Qt::AlignTop);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    hide();
}

void NoticeBar::show(const Notice &notice)
{
    withdraw(notice.title);
    m_notices.prepend(notice);
    showFirst();
}

void NoticeBar::withdraw(const QString &title)
{
    m_notices.removeIf([&title](const Notice &notice) { return notice.title == title; });
    showFirst();
}

void NoticeBar::close()
{
    if (!m_notices.isEmpty())
        m_notices.removeFirst();
    showFirst();
}

void NoticeBar::showFirst()
{
    const auto old = findChildren<QPushButton *>();
    for (QPushButton *button : old) {
        m_buttons->removeWidget(button);
        button->hide();
        // One of them may be the one being pressed.
        button->setParent(nullptr);
        button->deleteLater();
    }
    if (m_notices.isEmpty()) {
        hide();
        return;
    }
    const Notice notice = m_notices.first();
    m_title->setText(notice.title);
    m_text->setText(notice.text);
    m_text->setVisible(!notice.text.isEmpty());
    for (const Notice::Button &button : notice.buttons) {
        auto *push = new RoomyButton(button.words);
        m_buttons->insertWidget(m_buttons->count() - 1, push);
        QWidget::setTabOrder(m_close->previousInFocusChain(), push);
        connect(push, &QPushButton::clicked, this, [this, title = notice.title, act = button.act] {
            withdraw(title);
            act();
        });
    }
    setAccessibleName(notice.title);
    setAccessibleDescription(notice.text);
    setVisible(true);
    update();
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

QColor NoticeBar::accent() const
{
    switch (m_notices.isEmpty() ? NoticeKind::information : m_notices.first().kind) {
    case NoticeKind::success:
        return successColour(palette());
    case NoticeKind::warning:
        return warningColour(palette());
    case NoticeKind::failure:
        return failureColour(palette());
    case NoticeKind::information:
        break;
    }
    return palette().color(QPalette::Highlight);
}

void NoticeBar::paintEvent(QPaintEvent *)
{
    if (m_notices.isEmpty())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor window = palette().color(QPalette::Window);
    painter.setPen(mixed(window, accent(), 0.55));
    painter.setBrush(mixed(window, accent(), 0.12));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, outerGap + 0.5, -0.5, -0.5), 6, 6);
    const QRect icon(padding, outerGap + padding, iconSize, iconSize);
    drawOwnIcon(painter, QStyle::visualRect(layoutDirection(), rect(), icon),
                iconName(m_notices.first().kind), accent());
}

} // namespace vignar
