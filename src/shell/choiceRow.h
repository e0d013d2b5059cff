#pragma once

#include "shell/icons.h"

#include <QWidget>

class QButtonGroup;
class QHBoxLayout;
class QLabel;

namespace vignar
{

/// A row of pictures with words under them, one of which is chosen. Arrow keys move the
/// choice, each word's mnemonic chooses it.
class ChoiceRow : public QWidget
{
    Q_OBJECT

public:
    /// The title, which may hold a mnemonic, stands above the pictures.
    explicit ChoiceRow(const QString &title, QWidget *parent = nullptr);

    void add(int value, const QString &words, const QString &explanation, const QSize &pictureSize,
             const IconPainter &picture);

    /// The title for a place elsewhere, as in the first column of a form.
    QLabel *takeTitle();

    int chosen() const;
    /// Does not emit chosenByUser(); an unknown value leaves the choice.
    void choose(int value);

Q_SIGNALS:
    void chosenByUser(int value);

private:
    QString m_title;
    QLabel *m_titleLabel;
    QHBoxLayout *m_row;
    QButtonGroup *m_group;
};

/// The four layouts of a sheet (a Layout each).
ChoiceRow *makeLayoutChooser(QWidget *parent);
/// The two formats of a sheet: 1 JPEG, 0 PDF.
ChoiceRow *makeFormatChooser(QWidget *parent);

} // namespace vignar
