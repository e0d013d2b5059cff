#pragma once

#include <QWidget>

class QAction;
class QLabel;
class QListView;
class QPushButton;

namespace vignar
{

class BatchModel;

/// The side drawer with the list of videos.
class BatchDrawer : public QWidget
{
    Q_OBJECT

public:
    explicit BatchDrawer(BatchModel &model, QWidget *parent = nullptr);

    /// Rows that the user has selected, ascending.
    QList<int> selectedRows() const;
    void selectRows(const QList<int> &rows);
    /// The actions of the context menu, in this order; a null one is a separator.
    void setRowActions(const QList<QAction *> &actions);
    void scrollTo(int row);
    /// What stands under the list, which hands it a third of its height while it shows.
    void setFooter(QWidget *footer);

Q_SIGNALS:
    void removeRequested();
    void removeAllRequested();
    /// A double click, or Enter.
    void rowActivated(int row);
    void selectionChanged();

private:
    void showContextMenu(const QPoint &place);
    void countChanged();

    BatchModel &m_model;
    QLabel *m_title;
    QListView *m_view;
    QPushButton *m_remove;
    QPushButton *m_removeAll;
    QList<QAction *> m_actions;
};

} // namespace vignar
