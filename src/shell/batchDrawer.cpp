#include "shell/batchDrawer.h"

#include "classShared/format.h"
#include "settings/stringTables.h"
#include "shell/batchModel.h"
#include "shell/colours.h"
#include "shell/icons.h"
#include "shell/roomyButton.h"
#include "shell/rowDelegate.h"

#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Says so where there is nothing to list; the menu key opens the menu at the current row.
class RowView : public QListView
{
protected:
    void contextMenuEvent(QContextMenuEvent *event) override
    {
        const bool isByMouse = event->reason() == QContextMenuEvent::Mouse;
        // The commands are for what is selected, and Tab alone selects nothing.
        if (!isByMouse && !selectionModel()->isSelected(currentIndex()))
            selectionModel()->select(currentIndex(), QItemSelectionModel::ClearAndSelect);
        Q_EMIT customContextMenuRequested(isByMouse ? event->pos()
                                                    : visualRect(currentIndex()).center());
    }
    void paintEvent(QPaintEvent *event) override
    {
        QListView::paintEvent(event);
        if (model()->rowCount() > 0)
            return;
        QPainter painter(viewport());
        painter.setPen(secondaryText(palette()));
        painter.drawText(viewport()->rect().adjusted(16, 16, -16, -16),
                         Qt::AlignCenter | Qt::TextWordWrap, localised(u"V_list_empty"_s));
    }
};

} // namespace

BatchDrawer::BatchDrawer(BatchModel &model, QWidget *parent)
    : QWidget(parent),
      m_model(model),
      m_title(new QLabel),
      m_view(new RowView),
      m_remove(new RoomyButton(themedIcon(u"list-remove"_s), localised(u"V_list_remove"_s))),
      m_removeAll(
          new RoomyButton(themedIcon(u"edit-clear-all"_s), localised(u"V_list_removeAll"_s)))
{
    m_title->setBuddy(m_view);
    m_view->setModel(&model);
    m_view->setItemDelegate(new RowDelegate(m_view));
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_view->setUniformItemSizes(true);
    m_view->setMouseTracking(true);
    m_view->setAccessibleName(localised(u"V_list_title"_s));
    setMinimumWidth(304);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    column->addWidget(m_title);
    column->addWidget(m_view);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_remove);
    row->addWidget(m_removeAll);
    row->addStretch();
    column->addLayout(row);

    connect(m_view, &QListView::customContextMenuRequested, this, &BatchDrawer::showContextMenu);
    connect(m_view, &QListView::activated, this,
            [this](const QModelIndex &index) { Q_EMIT rowActivated(index.row()); });
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        m_remove->setEnabled(!selectedRows().isEmpty());
        Q_EMIT selectionChanged();
    });
    connect(m_remove, &QPushButton::clicked, this, &BatchDrawer::removeRequested);
    connect(m_removeAll, &QPushButton::clicked, this, &BatchDrawer::removeAllRequested);
    connect(&model, &BatchModel::rowsInserted, this, &BatchDrawer::countChanged);
    connect(&model, &BatchModel::rowsRemoved, this, &BatchDrawer::countChanged);
    countChanged();
}

void BatchDrawer::countChanged()
{
    const int count = m_model.rowCount();
    m_title->setText(localised(u"V_list_title"_s) +
                     (count > 0 ? filled(u" (%ld)", count) : QString()));
    m_remove->setEnabled(!selectedRows().isEmpty());
    m_removeAll->setEnabled(count > 0);
    m_view->viewport()->update();
}

QList<int> BatchDrawer::selectedRows() const
{
    QList<int> rows;
    const QModelIndexList selected = m_view->selectionModel()->selectedRows();
    for (const QModelIndex &index : selected)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void BatchDrawer::selectRows(const QList<int> &rows)
{
    QItemSelection selection;
    for (const int row : rows)
        selection.select(m_model.index(row), m_model.index(row));
    m_view->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void BatchDrawer::setRowActions(const QList<QAction *> &actions)
{
    m_actions = actions;
    for (QAction *action : actions) {
        if (action)
            addAction(action);
    }
}

void BatchDrawer::setFooter(QWidget *footer)
{
    auto *column = static_cast<QVBoxLayout *>(layout());
    const int below = column->indexOf(m_view) + 1;
    column->insertWidget(below, footer);
    column->setStretch(below - 1, 2);
    column->setStretch(below, 1);
}

void BatchDrawer::scrollTo(int row)
{
    m_view->scrollTo(m_model.index(row));
}

void BatchDrawer::showContextMenu(const QPoint &place)
{
    if (!m_view->indexAt(place).isValid())
        return;
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (QAction *action : m_actions) {
        if (action)
            menu->addAction(action);
        else
            menu->addSeparator();
    }
    menu->popup(m_view->viewport()->mapToGlobal(place));
}

} // namespace vignar
