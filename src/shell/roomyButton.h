#pragma once

#include <QPushButton>

namespace vignar
{

/// A push button whose words keep a distance from its frame, and whose icon stands beside
/// them on the side where one begins to read.
class RoomyButton : public QPushButton
{
    Q_OBJECT

public:
    using QPushButton::QPushButton;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace vignar
