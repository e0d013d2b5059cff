#pragma once

#include <QMainWindow>

#include <functional>

class QLabel;
class QPushButton;
class QSplitter;

namespace vignar
{

class BatchDrawer;
class BatchModel;
class ChoiceRow;
class DestinationRow;
class DropArea;
class MainMenu;
class NoticeBar;
class ProgressPanel;

/// The main window: it lays its parts out and hands them to whoever gives them work. It
/// decides nothing itself.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(BatchModel &model);

    DropArea &dropArea() const { return *m_dropArea; }
    ChoiceRow &layoutChooser() const { return *m_layouts; }
    ChoiceRow &formatChooser() const { return *m_formats; }
    DestinationRow &destination() const { return *m_destination; }
    ProgressPanel &progress() const { return *m_progress; }
    BatchDrawer &drawer() const { return *m_drawer; }
    NoticeBar &notices() const { return *m_notices; }
    MainMenu &menu() const { return *m_menu; }

    /// The window grows and shrinks with its drawer where it can.
    void setDrawerOpen(bool isOpen);
    bool isDrawerOpen() const;
    /// In pixels; what is set holds while the drawer is open.
    int drawerWidth() const;
    void setDrawerWidth(int width);

    /// Under the choosers: that the list was filled with other choices; empty hides it.
    void setChoiceHint(const QString &text);

    /// Asked before the window closes; false keeps it open.
    void setCloseQuestion(std::function<bool()> mayClose) { m_mayClose = std::move(mayClose); }

Q_SIGNALS:
    /// Anywhere on the window.
    void dropped(const QStringList &paths);
    void choiceHintPressed();
    /// The window became the active one.
    void activated();
    /// The window has closed.
    void closed();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    QWidget *makeControls();

    DropArea *m_dropArea;
    ChoiceRow *m_layouts;
    ChoiceRow *m_formats;
    DestinationRow *m_destination;
    ProgressPanel *m_progress;
    BatchDrawer *m_drawer;
    NoticeBar *m_notices;
    MainMenu *m_menu;
    QSplitter *m_splitter;
    QWidget *m_choiceHint;
    QLabel *m_choiceHintText;
    QPushButton *m_choiceHintButton;
    std::function<bool()> m_mayClose;
};

} // namespace vignar
