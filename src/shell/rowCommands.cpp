#include "shell/rowCommands.h"

#include "settings/stringTables.h"
#include "shell/batchDrawer.h"
#include "shell/desktopSession.h"
#include "shell/mainMenu.h"
#include "shell/sourceLog.h"

#include <QAction>
#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

RowCommands::RowCommands(DesktopSession &session, QObject *parent)
    : QObject(parent), m_session(session)
{
    MainMenu &menu = session.window().menu();
    BatchDrawer &drawer = session.window().drawer();
    connect(menu.preview, &QAction::triggered, this, &RowCommands::preview);
    connect(menu.openSheet, &QAction::triggered, this, &RowCommands::openSheet);
    connect(menu.showInFileManager, &QAction::triggered, this, &RowCommands::show);
    connect(menu.showLog, &QAction::triggered, this, &RowCommands::showLog);
    connect(menu.makeAgain, &QAction::triggered, this, [this] { m_session.makeAgain(rows()); });
    // What can be started at all can be started for some rows.
    connect(menu.go, &QAction::enabledChanged, this, &RowCommands::update);
    connect(menu.useChoices, &QAction::triggered, this, [this] { m_session.applyChoices(rows()); });
    connect(menu.remove, &QAction::triggered, this, &RowCommands::remove);
    connect(menu.removeAll, &QAction::triggered, this, &RowCommands::removeAll);
    connect(&drawer, &BatchDrawer::removeRequested, this, &RowCommands::remove);
    connect(&drawer, &BatchDrawer::removeAllRequested, this, &RowCommands::removeAll);
    connect(&drawer, &BatchDrawer::rowActivated, this, &RowCommands::activate);
    connect(&drawer, &BatchDrawer::selectionChanged, this, &RowCommands::update);
    connect(&session.model(), &BatchModel::dataChanged, this, &RowCommands::update);
    update();
}

QList<int> RowCommands::rows() const
{
    return m_session.window().drawer().selectedRows();
}

QString RowCommands::value(int role) const
{
    const QList<int> selected = rows();
    return selected.isEmpty() ? QString()
                              : m_session.model().index(selected.first()).data(role).toString();
}

bool RowCommands::isAnyWaiting() const
{
    const QList<int> selected = rows();
    return std::any_of(selected.begin(), selected.end(), [this](int row) {
        return m_session.model().index(row).data(BatchModel::markerRole) == Puces::puce;
    });
}

void RowCommands::update()
{
    MainMenu &menu = m_session.window().menu();
    const bool isAny = !rows().isEmpty();
    for (QAction *action :
         {menu.preview, menu.showInFileManager, menu.showLog, menu.useChoices, menu.remove})
        action->setEnabled(isAny);
    menu.makeAgain->setEnabled(isAny && menu.go->isEnabled());
    menu.makeAgain->setText(
        localised(isAnyWaiting() ? u"V_menu_makeSelected"_s : u"V_menu_makeAgain"_s));
    menu.openSheet->setEnabled(!value(BatchModel::sheetRole).isEmpty());
}

void RowCommands::preview()
{
    const QList<int> selected = rows();
    if (selected.isEmpty())
        return;
    const BatchEntry &row = m_session.application().whichArrayController().row(selected.first());
    Q_EMIT m_session.previewRequested(read(row, RowKeys::dico).value_or(SourceDico()));
}

void RowCommands::openSheet()
{
    m_session.openSheet(value(BatchModel::sheetRole));
}

void RowCommands::show()
{
    const QString sheet = value(BatchModel::sheetRole);
    m_session.showFile(QFileInfo::exists(sheet) ? sheet : value(BatchModel::pathRole));
}

void RowCommands::showLog()
{
    const QString source = value(BatchModel::pathRole);
    QStringList others = m_session.model().sources();
    others.removeAll(source);
    showSourceLog(source, others, &m_session.window());
}

void RowCommands::remove()
{
    BatchList &batch = m_session.application().whichArrayController();
    const QList<int> selected = rows();
    // From the end, so that the rows that follow keep their numbers.
    for (auto row = selected.crbegin(); row != selected.crend(); ++row) {
        batch.select(*row);
        batch.encBatchRemove(true);
    }
}

void RowCommands::removeAll()
{
    m_session.application().whichArrayController().encBatchRemoveAll(true);
}

void RowCommands::activate(int row)
{
    m_session.window().drawer().selectRows({row});
    if (m_session.window().menu().preview->isVisible())
        preview();
    else if (QFileInfo::exists(value(BatchModel::sheetRole)))
        openSheet();
}

} // namespace vignar
