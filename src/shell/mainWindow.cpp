#include "shell/mainWindow.h"

#include "settings/stringTables.h"
#include "shell/batchDrawer.h"
#include "shell/choiceRow.h"
#include "shell/destinationRow.h"
#include "shell/dropArea.h"
#include "shell/icons.h"
#include "shell/mainMenu.h"
#include "shell/noticeBar.h"
#include "shell/progressPanel.h"
#include "shell/roomyButton.h"

#include <QAction>
#include <QCloseEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int margin = 16;
constexpr int spacing = 16;
constexpr int usualDrawerWidth = 360;

} // namespace

MainWindow::MainWindow(BatchModel &model)
    : m_dropArea(new DropArea),
      m_layouts(makeLayoutChooser(nullptr)),
      m_formats(makeFormatChooser(nullptr)),
      m_destination(new DestinationRow),
      m_progress(new ProgressPanel),
      m_drawer(new BatchDrawer(model)),
      m_notices(new NoticeBar),
      m_menu(new MainMenu(*menuBar())),
      m_splitter(new QSplitter),
      m_choiceHint(new QWidget),
      m_choiceHintText(new QLabel),
      m_choiceHintButton(new RoomyButton(localised(u"V_choices_apply"_s)))
{
    setWindowTitle(QGuiApplication::applicationDisplayName());
    setAcceptDrops(true);
    auto *drawerMargins = new QWidget;
    auto *drawerColumn = new QVBoxLayout(drawerMargins);
    drawerColumn->setContentsMargins(margin / 2, margin, margin, margin);
    drawerColumn->addWidget(m_drawer);
    m_splitter->addWidget(makeControls());
    m_splitter->addWidget(drawerMargins);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 1);
    drawerMargins->hide();

    auto *centre = new QWidget;
    auto *column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto *noticeMargins = new QVBoxLayout;
    noticeMargins->setContentsMargins(margin, 0, margin, 0);
    noticeMargins->addWidget(m_notices);
    column->addLayout(noticeMargins);
    column->addWidget(m_splitter, 1);
    setCentralWidget(centre);

    m_drawer->setRowActions(m_menu->rowActions());
    connect(m_dropArea, &DropArea::dropped, this, &MainWindow::dropped);
    connect(m_menu->showList, &QAction::toggled, this, &MainWindow::setDrawerOpen);
    connect(m_choiceHintButton, &QPushButton::clicked, this, &MainWindow::choiceHintPressed);
}

QWidget *MainWindow::makeControls()
{
    auto *choosers = new QHBoxLayout;
    choosers->setSpacing(spacing + spacing / 2);
    choosers->addWidget(m_layouts);
    choosers->addWidget(m_formats);
    choosers->addStretch();

    auto *hintRow = new QHBoxLayout(m_choiceHint);
    hintRow->setContentsMargins(0, 0, 0, 0);
    hintRow->setSpacing(8);
    m_choiceHintText->setWordWrap(true);
    hintRow->addWidget(m_choiceHintText, 1);
    hintRow->addWidget(m_choiceHintButton);
    m_choiceHint->hide();

    auto *controls = new QWidget;
    auto *column = new QVBoxLayout(controls);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(spacing);
    column->addWidget(m_dropArea, 1);
    column->addLayout(choosers);
    column->addWidget(m_choiceHint);
    column->addWidget(m_destination);
    column->addWidget(m_progress);
    return controls;
}

bool MainWindow::isDrawerOpen() const
{
    return !m_splitter->widget(1)->isHidden();
}

int MainWindow::drawerWidth() const
{
    return m_splitter->widget(1)->width();
}

void MainWindow::setDrawerWidth(int width)
{
    const int all = this->width() - m_splitter->handleWidth();
    m_splitter->setSizes({all - width, width});
}

void MainWindow::setDrawerOpen(bool isOpen)
{
    m_menu->showList->setChecked(isOpen);
    if (isOpen == isDrawerOpen())
        return;
    QWidget *holder = m_splitter->widget(1);
    const bool canResize = !isMaximized() && !isFullScreen();
    const int controlsWidth = m_splitter->widget(0)->width();
    const int added = isOpen ? usualDrawerWidth : holder->width();
    holder->setVisible(isOpen);
    if (canResize)
        resize(width() + (isOpen ? added : -added), height());
    if (isOpen && canResize)
        m_splitter->setSizes({controlsWidth, usualDrawerWidth});
}

void MainWindow::setChoiceHint(const QString &text)
{
    m_choiceHintText->setText(text);
    m_choiceHint->setVisible(!text.isEmpty());
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (localPaths(*event->mimeData()).isEmpty())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    m_dropArea->setDropWelcome(true);
}

void MainWindow::dragLeaveEvent(QDragLeaveEvent *)
{
    m_dropArea->setDropWelcome(false);
}

void MainWindow::dropEvent(QDropEvent *event)
{
    m_dropArea->setDropWelcome(false);
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (const QStringList paths = localPaths(*event->mimeData()); !paths.isEmpty())
        Q_EMIT dropped(paths);
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        Q_EMIT activated();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (m_mayClose && !m_mayClose()) {
        event->ignore();
        return;
    }
    event->accept();
    Q_EMIT closed();
}

} // namespace vignar
