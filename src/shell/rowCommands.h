#pragma once

#include <QObject>

namespace vignar
{

class DesktopSession;

/// Carries out the commands for the rows that are selected in the drawer.
class RowCommands : public QObject
{
    Q_OBJECT

public:
    RowCommands(DesktopSession &session, QObject *parent);

private:
    QList<int> rows() const;
    /// Of the first selected row.
    QString value(int role) const;
    bool isAnyWaiting() const;

    void update();
    void preview();
    void openSheet();
    void show();
    void showLog();
    void remove();
    void removeAll();
    void activate(int row);

    DesktopSession &m_session;
};

} // namespace vignar
