#include "shell/destinationRow.h"

#include "settings/stringTables.h"
#include "shell/icons.h"
#include "shell/openPanel.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>
#include <QVBoxLayout>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

QToolButton *makeButton(const QString &icon, const QString &words)
{
    auto *button = new QToolButton;
    button->setIcon(themedIcon(icon));
    button->setToolTip(words);
    button->setAccessibleName(words);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

} // namespace

DestinationRow::DestinationRow(QWidget *parent) : QWidget(parent), m_field(new QLineEdit)
{
    auto *label = new QLabel(localised(u"V_destination"_s));
    label->setBuddy(m_field);
    m_field->setAccessibleName(label->text().remove(u'&'));
    auto *browseButton = makeButton(u"folder-open"_s, localised(u"V_destination_choose"_s));
    auto *openButton = makeButton(u"folder-visit"_s, localised(u"V_destination_open"_s));

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(label);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_field);
    row->addWidget(browseButton);
    row->addWidget(openButton);
    column->addLayout(row);
    const int side = m_field->sizeHint().height();
    browseButton->setFixedSize(side + 8, side);
    openButton->setFixedSize(side + 8, side);

    connect(m_field, &QLineEdit::editingFinished, this, [this] {
        if (m_field->isModified()) {
            m_field->setModified(false);
            Q_EMIT edited(path());
        }
    });
    connect(browseButton, &QToolButton::clicked, this, &DestinationRow::browse);
    connect(openButton, &QToolButton::clicked, this, &DestinationRow::openFolderRequested);
}

QString DestinationRow::path() const
{
    return m_field->text();
}

void DestinationRow::setPath(const QString &path)
{
    m_field->setText(path);
    m_field->setCursorPosition(0);
    m_field->setModified(false);
}

QString DestinationRow::choose(const QString &title, const QString &start)
{
    const QString chosen =
        QFileDialog::getExistingDirectory(window(), title, existingFolder(start));
    return chosen.isEmpty() ? QString() : chosen;
}

void DestinationRow::browse()
{
    const QString chosen = choose(localised(u"V_destination_choose"_s), path());
    if (chosen.isNull())
        return;
    setPath(chosen);
    Q_EMIT edited(chosen);
}

} // namespace vignar
