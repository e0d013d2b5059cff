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

    /// Other words for a value that was added.
    void rename(int value, const QString &words, const QString &explanation);

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
/// The two formats of a sheet: 1 a picture, 0 PDF.
ChoiceRow *makeFormatChooser(QWidget *parent);
/// Names the picture as the preferences now have it: JPEG, PNG or WebP.
void namePictureFormat(ChoiceRow &formats);

struct FormatWords {
    /// May hold a mnemonic.
    QString name;
    QString explanation;
};
/// Of one of the two formats, with the preferences as they are.
FormatWords formatWords(int format);

} // namespace vignar
