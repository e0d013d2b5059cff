#pragma once

#include <QFrame>

#include <functional>

class QHBoxLayout;
class QLabel;
class QToolButton;

namespace vignar
{

/// What a notice tells of; decides its icon and colour.
enum class NoticeKind { information, success, warning, failure };

/// One notice attached to the window.
struct Notice {
    NoticeKind kind = NoticeKind::information;
    QString title;
    /// Plain text, any number of lines.
    QString text;

    /// A button of the notice; pressing it closes the notice as well.
    struct Button {
        QString words;
        std::function<void()> act;
    };
    QList<Button> buttons;
};

/// A bar at the top of the window that shows notices one after another, without holding
/// anything up. Each stays until it is closed.
class NoticeBar : public QFrame
{
    Q_OBJECT

public:
    explicit NoticeBar(QWidget *parent = nullptr);

    /// Shows the notice in front of those that wait; one of the same title is replaced.
    void show(const Notice &notice);
    /// Closes the notice of that title, if it is there.
    void withdraw(const QString &title);
    /// The notice that shows, if any.
    const Notice *shown() const { return m_notices.isEmpty() ? nullptr : &m_notices.first(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void close();
    void showFirst();
    QColor accent() const;

    QList<Notice> m_notices;
    QLabel *m_title;
    QLabel *m_text;
    QHBoxLayout *m_buttons;
    QToolButton *m_close;
};

} // namespace vignar
