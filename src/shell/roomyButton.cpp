#include "shell/roomyButton.h"

#include <QStyleOptionButton>
#include <QStylePainter>

namespace vignar
{

namespace
{

/// Beyond the little that styles leave on both sides.
constexpr int room = 12;
constexpr int iconGap = 6;

} // namespace

QSize RoomyButton::sizeHint() const
{
    return QPushButton::sizeHint() + QSize(room, 0);
}

void RoomyButton::paintEvent(QPaintEvent *event)
{
    if (!isRightToLeft() || icon().isNull()) {
        QPushButton::paintEvent(event);
        return;
    }
    // The toolkit's own styles tear icon and words apart where one reads from right to left.
    QStyleOptionButton option;
    initStyleOption(&option);
    option.icon = {};
    option.text.clear();
    QStylePainter painter(this);
    painter.drawControl(QStyle::CE_PushButton, option);

    const int flags = Qt::AlignVCenter | Qt::TextShowMnemonic;
    const int wordsWidth = fontMetrics().size(Qt::TextShowMnemonic, text()).width();
    const int right = (width() + iconSize().width() + iconGap + wordsWidth) / 2;
    const QRect picture(QPoint(right - iconSize().width(), (height() - iconSize().height()) / 2),
                        iconSize());
    icon().paint(&painter, picture, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
    const QRect words(picture.left() - iconGap - wordsWidth, 0, wordsWidth, height());
    painter.drawItemText(words, flags | Qt::AlignRight, palette(), isEnabled(), text(),
                         QPalette::ButtonText);
}

} // namespace vignar
