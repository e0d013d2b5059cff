#include "shell/rowDelegate.h"

#include "app/batchEntry.h"
#include "shell/batchModel.h"
#include "shell/colours.h"
#include "shell/icons.h"

#include <QApplication>
#include <QPainter>
#include <QPainterPath>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int padding = 8;
constexpr int gap = 8;
constexpr int markerSize = 16;
constexpr QSize posterSize(96, 54);

/// Where everything of a row goes, from left to right; mirrored where one reads the other
/// way.
struct RowPlaces {
    QRect order;
    QRect poster;
    QRect name;
    QRect caption;
    QRect marker;
    QRect status;
    QRect choice;
};

RowPlaces placesIn(const QStyleOptionViewItem &option, const QString &choice)
{
    const QRect row = option.rect.adjusted(padding, padding, -padding, -padding);
    const int lineHeight = option.fontMetrics.height();
    const int orderWidth = option.fontMetrics.horizontalAdvance(u"000"_s);
    const int choiceWidth = option.fontMetrics.horizontalAdvance(choice);
    RowPlaces places;
    places.order = QRect(row.left(), row.top(), orderWidth, row.height());
    places.poster = QRect(QPoint(places.order.right() + 1 + gap,
                                 row.top() + (row.height() - posterSize.height()) / 2),
                          posterSize);
    const int left = places.poster.right() + 1 + gap + gap / 2;
    const int width = row.right() + 1 - left;
    const int leading = (row.height() - 3 * lineHeight) / 2;
    const auto line = [&](int number) {
        return QRect(left, row.top() + number * (lineHeight + leading), width, lineHeight);
    };
    places.name = line(0);
    places.caption = line(1);
    places.marker = QRect(QPoint(left, line(2).center().y() - markerSize / 2 + 1),
                          QSize(markerSize, markerSize));
    places.status = line(2).adjusted(markerSize + gap / 2, 0, -choiceWidth - gap, 0);
    places.choice = line(2);
    places.choice.setLeft(row.right() + 1 - choiceWidth);
    for (QRect *place : {&places.order, &places.poster, &places.name, &places.caption,
                         &places.marker, &places.status, &places.choice})
        *place = QStyle::visualRect(option.direction, option.rect, *place);
    return places;
}

QColor markerColour(const QModelIndex &row, const QPalette &palette)
{
    const QString marker = row.data(BatchModel::markerRole).toString();
    // An older sheet that was kept, and one that is out of date, are neither good nor bad.
    const bool isOld = marker == Puces::puceFailure
                           ? !row.data(BatchModel::sheetRole).toString().isEmpty()
                           : row.data(BatchModel::outdatedRole).toBool();
    if (isOld)
        return warningColour(palette);
    if (marker == Puces::puceSuccess)
        return successColour(palette);
    if (marker == Puces::puceFailure)
        return failureColour(palette);
    if (marker == Puces::puceCurrent)
        return mixed(palette.color(QPalette::Highlight), palette.color(QPalette::Text), 0.2);
    return secondaryText(palette);
}

QString markerName(const QModelIndex &index)
{
    if (index.data(BatchModel::missingRole).toBool())
        return u"puceMissing"_s;
    if (index.data(BatchModel::outdatedRole).toBool())
        return u"puceOutdated"_s;
    return index.data(BatchModel::markerRole).toString();
}

class RowPainter
{
public:
    RowPainter(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index)
        : m_painter(painter),
          m_option(option),
          m_index(index),
          m_isMissing(index.data(BatchModel::missingRole).toBool()),
          m_isSelected(option.state.testFlag(QStyle::State_Selected)),
          m_places(placesIn(option, text(BatchModel::choiceRole)))
    {
    }

    void paint()
    {
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setRenderHint(QPainter::SmoothPixmapTransform);
        // A name is read in the direction of its own letters.
        m_painter.setLayoutDirection(Qt::LayoutDirectionAuto);
        drawPoster();
        draw(m_places.order, text(BatchModel::orderRole), faintColour(), Qt::AlignHCenter);
        QFont strong = m_option.font;
        strong.setWeight(QFont::DemiBold);
        m_painter.setFont(strong);
        draw(m_places.name, text(Qt::DisplayRole), m_isMissing ? faintColour() : textColour());
        m_painter.setFont(m_option.font);
        draw(m_places.caption, text(BatchModel::captionRole), faintColour());
        draw(m_places.choice, text(BatchModel::choiceRole), faintColour());
        drawStatus();
    }

private:
    /// On one line, whatever a file name holds.
    QString text(int role) const
    {
        return m_index.data(role).toString().replace(u'\n', u' ').replace(u'\r', u' ');
    }

    QColor textColour() const
    {
        return m_option.palette.color(m_isSelected ? QPalette::HighlightedText : QPalette::Text);
    }
    QColor faintColour() const
    {
        return m_isSelected ? textColour() : secondaryText(m_option.palette);
    }

    void draw(const QRect &place, const QString &words, const QColor &colour,
              Qt::Alignment alignment = Qt::AlignLeft)
    {
        m_painter.setPen(colour);
        const auto mode = place == m_places.name ? Qt::ElideMiddle : Qt::ElideRight;
        m_painter.drawText(place,
                           int(QStyle::visualAlignment(m_option.direction, alignment) |
                               Qt::AlignVCenter | Qt::AlignAbsolute),
                           QFontMetrics(m_painter.font()).elidedText(words, mode, place.width()));
    }

    void drawPoster()
    {
        m_painter.save();
        QPainterPath clip;
        clip.addRoundedRect(m_places.poster, 4, 4);
        m_painter.setClipPath(clip);
        m_painter.fillRect(m_places.poster, QColor(0x18, 0x18, 0x1a));
        const QImage poster = m_index.data(Qt::DecorationRole).value<QImage>();
        const QSize size = poster.size().scaled(posterSize, Qt::KeepAspectRatio);
        QRect place(QPoint(), size);
        place.moveCenter(m_places.poster.center());
        m_painter.setOpacity(m_isMissing ? 0.35 : 1);
        m_painter.drawImage(place, poster);
        m_painter.restore();
    }

    void drawStatus()
    {
        const QColor colour = m_isSelected ? textColour() : markerColour(m_index, m_option.palette);
        drawOwnIcon(m_painter, m_places.marker, markerName(m_index), colour);
        draw(m_places.status, text(BatchModel::statusRole), colour);
    }

    QPainter &m_painter;
    const QStyleOptionViewItem &m_option;
    const QModelIndex &m_index;
    const bool m_isMissing;
    const bool m_isSelected;
    const RowPlaces m_places;
};

} // namespace

void RowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                        const QModelIndex &index) const
{
    painter->save();
    // The style draws selection, hover and focus; the words and pictures are ours.
    QStyleOptionViewItem bare = option;
    const QStyle *style = option.widget ? option.widget->style() : QApplication::style();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &bare, painter, option.widget);
    RowPainter(*painter, option, index).paint();
    painter->restore();
}

QSize RowDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    const int words = 3 * option.fontMetrics.height() + 8;
    return {280, std::max(posterSize.height(), words) + 2 * padding};
}

} // namespace vignar
