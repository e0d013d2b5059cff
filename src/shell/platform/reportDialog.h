#pragma once

#include <QDialog>

class QLabel;
class QPlainTextEdit;

namespace vignar
{

/// Shows the letter of a problem report, which the user reads, completes and thins out
/// before it goes to his mail program; nothing is sent by us.
class ReportDialog : public QDialog
{
    Q_OBJECT

public:
    /// versions: one line for each thing whose version matters.
    explicit ReportDialog(const QStringList &versions, QWidget *parent = nullptr);

private:
    void send();
    void copy();

    QLabel *m_words;
    QPlainTextEdit *m_letter;
};

} // namespace vignar
