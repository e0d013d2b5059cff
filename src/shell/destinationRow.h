#pragma once

#include <QWidget>

class QLineEdit;
class QToolButton;

namespace vignar
{

/// Where the sheets go: a path to type, a folder chooser, and a way to open the folder.
class DestinationRow : public QWidget
{
    Q_OBJECT

public:
    explicit DestinationRow(QWidget *parent = nullptr);

    /// As typed.
    QString path() const;
    /// Does not emit edited().
    void setPath(const QString &path);

    /// Lets the user choose a folder; null when declined. start need not exist.
    QString choose(const QString &title, const QString &start);

Q_SIGNALS:
    /// The user has typed or chosen another path.
    void edited(const QString &path);
    void openFolderRequested();

private:
    void browse();

    QLineEdit *m_field;
};

} // namespace vignar
