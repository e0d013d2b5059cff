#pragma once

#include <QStyledItemDelegate>

namespace vignar
{

/// Draws a row of the batch list: order, poster, name, picture and duration, choice, and
/// the result marker with its words.
class RowDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace vignar
