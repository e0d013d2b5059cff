#include "shell/sourceLog.h"

#include "classShared/format.h"
#include "classShared/printable.h"
#include "settings/logFiles.h"
#include "settings/stringTables.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QSet>
#include <QVBoxLayout>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// What is read of a long log, from its end: the last hours of a detailed one.
constexpr qint64 readLimit = 8 * 1024 * 1024;

QString endOfLog()
{
    QFile file(detailedLogPath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    file.seek(std::max<qint64>(0, file.size() - readLimit));
    return QString::fromUtf8(file.read(readLimit));
}

/// "/v/clip.mp4" is no name in "/v/clip.mp4.mov".
bool names(const QString &line, const QString &path)
{
    for (qsizetype at = line.indexOf(path); at >= 0; at = line.indexOf(path, at + 1)) {
        const qsizetype end = at + path.size();
        if (end == line.size() || !(line[end].isLetterOrNumber() || line[end] == u'.'))
            return true;
    }
    return false;
}

} // namespace

QStringList linesOfSource(const QString &log, const QString &source, const QStringList &others)
{
    // Few folders hold many sources: most lines need not be held against each of them.
    QSet<QString> folders;
    for (const QString &other : others)
        folders.insert(QFileInfo(other).path());
    const auto namesAnother = [&](const QString &line) {
        return std::any_of(folders.begin(), folders.end(),
                           [&](const QString &folder) { return line.contains(folder); }) &&
               std::any_of(others.begin(), others.end(),
                           [&](const QString &other) { return names(line, other); });
    };
    QStringList found;
    bool isOurs = false;
    for (const QStringView each : QStringView(log).split(u'\n')) {
        const QString line = each.toString();
        if (names(line, source))
            isOurs = true;
        else if (isOurs && namesAnother(line))
            isOurs = false;
        if (isOurs && !line.isEmpty())
            found.append(line);
    }
    return found;
}

void showSourceLog(const QString &source, const QStringList &others, QWidget *parent)
{
    QStringList otherNames;
    for (const QString &other : others)
        otherNames.append(printableLines(other));
    const QStringList lines = linesOfSource(endOfLog(), printableLines(source), otherNames);
    auto *window = new QDialog(parent);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowTitle(filled(localised(u"V_log_title"_s), QFileInfo(source).fileName()));
    auto *text = new QPlainTextEdit;
    text->setReadOnly(true);
    text->setLineWrapMode(QPlainTextEdit::NoWrap);
    // The lines begin at the left in every language.
    text->setLayoutDirection(Qt::LeftToRight);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text->setPlainText(lines.isEmpty() ? localised(u"V_log_none"_s) : lines.join(u'\n'));
    text->setAccessibleName(window->windowTitle());
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QObject::connect(buttons, &QDialogButtonBox::rejected, window, &QDialog::reject);
    auto *column = new QVBoxLayout(window);
    column->addWidget(text);
    column->addWidget(buttons);
    window->resize(720, 480);
    window->show();
}

} // namespace vignar
