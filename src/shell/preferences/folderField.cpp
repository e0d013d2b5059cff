#include "shell/preferences/folderField.h"

#include "classShared/paths.h"
#include "settings/stringTables.h"
#include "shell/colours.h"

#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace vignar
{

using namespace Qt::StringLiterals;

FolderField::FolderField(const QString &label, QWidget *parent)
    : QWidget(parent), m_field(new QLineEdit), m_hint(new QLabel)
{
    auto *button = new QPushButton(localised(u"V_prefs_browse"_s));
    button->setAutoDefault(false);
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    grid->addWidget(m_field, 0, 0);
    grid->addWidget(button, 0, 1);
    grid->addWidget(m_hint, 1, 0, 1, 2);
    m_field->setAccessibleName(QString(label).remove(u'&'));
    m_field->setMinimumWidth(m_field->fontMetrics().averageCharWidth() * 28);
    m_hint->setWordWrap(true);
    m_hint->setTextFormat(Qt::PlainText);
    setFocusProxy(m_field);
    colourHint();

    connect(m_field, &QLineEdit::textEdited, this, &FolderField::updateHint);
    connect(m_field, &QLineEdit::editingFinished, this, &FolderField::finish);
    m_field->installEventFilter(this);
    connect(button, &QPushButton::clicked, this, &FolderField::browse);
}

QString FolderField::path() const
{
    return m_field->text();
}

void FolderField::setPath(const QString &path)
{
    if (m_field->text() != path) {
        m_field->setText(path);
        m_field->setCursorPosition(0);
    }
    m_field->setModified(false);
    updateHint();
}

void FolderField::finish()
{
    if (!m_field->isModified())
        return;
    m_field->setModified(false);
    Q_EMIT edited();
}

bool FolderField::eventFilter(QObject *watched, QEvent *event)
{
    // Going over to another window ends the typing too, which the field itself does not tell.
    if (event->type() == QEvent::FocusOut)
        finish();
    return QWidget::eventFilter(watched, event);
}

void FolderField::updateHint()
{
    const QString folder = expandTilde(path());
    const bool isMissing = !QFileInfo(folder).isDir();
    m_hint->setText(isMissing ? localised(u"V_prefs_noFolder"_s) : QString());
    m_hint->setVisible(isMissing);
}

void FolderField::colourHint()
{
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, warningColour(colours));
    m_hint->setPalette(colours);
}

void FolderField::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        colourHint();
}

void FolderField::browse()
{
    QString start = expandTilde(path());
    while (!QFileInfo(start).isDir() && QFileInfo(start).path() != start)
        start = QFileInfo(start).path();
    const QString chosen =
        QFileDialog::getExistingDirectory(window(), m_field->accessibleName(), start);
    if (chosen.isEmpty())
        return;
    setPath(chosen);
    Q_EMIT edited();
}

} // namespace vignar
