#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;

namespace vignar
{

/// A folder's path to type or choose, with a word about it where it does not exist.
class FolderField : public QWidget
{
    Q_OBJECT

public:
    /// The label, which may hold a mnemonic, names the folder to assistive programs.
    explicit FolderField(const QString &label, QWidget *parent = nullptr);

    /// As typed.
    QString path() const;
    /// Does not emit edited().
    void setPath(const QString &path);

Q_SIGNALS:
    /// The user has typed a path to its end, or chosen one.
    void edited();

protected:
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void browse();
    void finish();
    void updateHint();
    void colourHint();

    QLineEdit *m_field;
    QLabel *m_hint;
};

} // namespace vignar
