#pragma once

#include <QLabel>
#include <QPainter>
#include <QStyle>

namespace vignar
{

/// One line of plain text, its middle left out where the room is too small.
class ElidedLabel : public QLabel
{
public:
    explicit ElidedLabel(QWidget *parent = nullptr) : QLabel(parent)
    {
        setTextFormat(Qt::PlainText);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    }

    QSize minimumSizeHint() const override { return {0, fontMetrics().height()}; }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setPen(palette().color(foregroundRole()));
        // A name is read in the direction of its own letters.
        painter.setLayoutDirection(Qt::LayoutDirectionAuto);
        painter.drawText(
            contentsRect(),
            int(QStyle::visualAlignment(layoutDirection(), alignment()) | Qt::AlignAbsolute),
            fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width()));
    }
};

} // namespace vignar
