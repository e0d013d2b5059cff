#include "shell/batchModel.h"

#include "app/batchList.h"
#include "classShared/standIns.h"
#include "settings/stringTables.h"
#include "shell/choiceRow.h"

#include <QFileInfo>
#include <QTextDocument>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

constexpr std::chrono::milliseconds lookDelay{200};

QString withoutMnemonic(QString words)
{
    return words.remove(u'&');
}

QString layoutText(int layout)
{
    switch (layout) {
    case bigLayout:
        return localised(u"V_layout_big"_s);
    case medLayout:
        return localised(u"V_layout_med"_s);
    case minLayout:
        return localised(u"V_layout_min"_s);
    default:
        return localised(u"V_layout_mix"_s);
    }
}

QString folderOf(const QString &source)
{
    return QFileInfo(source).path();
}

} // namespace

QString choiceText(int layout, int format)
{
    return withoutMnemonic(layoutText(layout) + u" · "_s + formatWords(format).name);
}

RowChoice choiceOf(const BatchEntry &row)
{
    RowChoice choice{
        read(row, Keys::out).value_or(mixLayout), read(row, Keys::dpi).value_or(1), {}};
    const Dico record = read(row, RowKeys::dico).value_or(Dico());
    const Dico plans = read(record, Keys::chosenInstants).value_or(Dico());
    for (auto plan = plans.cbegin(); plan != plans.cend(); ++plan) {
        if (!plan->toMap().isEmpty())
            choice.pictures.insert(plan.key(), *plan);
    }
    return choice;
}

BatchModel::BatchModel(BatchList &batch, QObject *parent)
    : QAbstractListModel(parent), m_batch(batch), m_count(batch.count())
{
    connect(&batch, &BatchList::rowAdded, this, &BatchModel::rowAdded);
    connect(&batch, &BatchList::rowChanged, this, &BatchModel::rowChanged);
    connect(&batch, &BatchList::rowRemoved, this, &BatchModel::rowRemoved);
    // A folder that sheets are written to changes many times in a row.
    m_look.setSingleShot(true);
    m_look.setInterval(lookDelay);
    connect(&m_look, &QTimer::timeout, this, &BatchModel::lookForSources);
    connect(&m_folders, &QFileSystemWatcher::directoryChanged, this, [this] { m_look.start(); });
}

int BatchModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_count;
}

void BatchModel::rowAdded(int index)
{
    beginInsertRows({}, index, index);
    ++m_count;
    endInsertRows();
    const QString source = m_batch.sourcePath(index);
    if (!QFileInfo::exists(source))
        m_missing.insert(source);
    if (const QString folder = folderOf(source); QFileInfo(folder).isDir())
        m_folders.addPath(folder);
}

QStringList BatchModel::sources() const
{
    QStringList sources;
    for (int row = 0; row < m_count; ++row)
        sources.append(m_batch.sourcePath(row));
    return sources;
}

void BatchModel::rowChanged(int index)
{
    noteBegin(index);
    Q_EMIT dataChanged(this->index(index), this->index(index));
}

void BatchModel::noteBegin(int index)
{
    // What the user chooses while the sheet is being made is for the next one.
    const QString source = m_batch.sourcePath(index);
    if (m_batch.resultat(index) != Puces::puceCurrent || source == m_begunSource)
        return;
    m_begunSource = source;
    m_begunChoice = choiceOf(m_batch.row(index));
}

std::optional<RowChoice> BatchModel::choiceBegunWith(const QString &source) const
{
    return source == m_begunSource ? std::optional(m_begunChoice) : std::nullopt;
}

bool BatchModel::isOutdated(int row) const
{
    const std::optional<RowChoice> made = fate(m_batch.sourcePath(row)).choice;
    return m_batch.resultat(row) == Puces::puceSuccess && made &&
           *made != choiceOf(m_batch.row(row));
}

void BatchModel::rowRemoved(int index)
{
    beginRemoveRows({}, index, index);
    --m_count;
    endRemoveRows();
    // The rows below have another number now.
    if (index < m_count)
        Q_EMIT dataChanged(this->index(index), this->index(m_count - 1));
}

void BatchModel::setFate(const QString &source, const RowFate &fate)
{
    m_fates.insert(source, fate);
    if (source == m_begunSource)
        m_begunSource.clear();
    // Cheaper than to look for the row: views draw again only what they show.
    choicesChanged();
}

void BatchModel::choicesChanged()
{
    if (m_count > 0)
        Q_EMIT dataChanged(index(0), index(m_count - 1));
}

void BatchModel::lookForSources()
{
    for (int row = 0; row < m_count; ++row) {
        const QString source = m_batch.sourcePath(row);
        const bool isMissing = !QFileInfo::exists(source);
        if (isMissing == m_missing.contains(source))
            continue;
        if (isMissing)
            m_missing.insert(source);
        else
            m_missing.remove(source);
        rowChanged(row);
    }
}

QString BatchModel::statusText(int row) const
{
    const QString source = m_batch.sourcePath(row);
    const QString marker = m_batch.resultat(row);
    const RowFate fate = m_fates.value(source);
    if (marker == Puces::puceCurrent)
        return localised(u"V_row_current"_s);
    if (m_missing.contains(source))
        return localised(u"V_row_missing"_s);
    if (marker == Puces::puceSuccess)
        return localised(isOutdated(row) ? u"V_row_outdated"_s : u"V_row_success"_s);
    if (marker == Puces::puce)
        return localised(u"V_row_waiting"_s);
    return fate.sheet.isEmpty() ? localised(u"V_row_failure"_s) : localised(u"V_row_kept"_s);
}

QString BatchModel::accessibleText(const QModelIndex &index) const
{
    return QStringList{index.data(orderRole).toString(), index.data(Qt::DisplayRole).toString(),
                       index.data(statusRole).toString(), index.data(captionRole).toString()}
        .join(u", "_s);
}

QVariant BatchModel::data(const QModelIndex &index, int role) const
{
    const int row = index.row();
    if (!index.isValid() || row >= m_batch.count())
        return {};
    const QString source = m_batch.sourcePath(row);
    const BatchEntry &entry = m_batch.row(row);
    switch (role) {
    case Qt::DisplayRole:
        return QFileInfo(source).fileName();
    case Qt::DecorationRole:
        return entry.value(RowKeys::img);
    case Qt::ToolTipRole: {
        QStringList lines{shownPath(source), fate(source).reason};
        if (isOutdated(row))
            lines << localised(u"V_row_outdated_reason"_s);
        lines.removeAll(QString());
        // Escaped: a path may look like markup.
        return Qt::convertFromPlainText(lines.join(u'\n'));
    }
    case Qt::AccessibleTextRole:
        return accessibleText(index);
    case captionRole: {
        // What went wrong matters more than the size of the picture.
        const bool isFailed = m_batch.resultat(row) == Puces::puceFailure;
        if (const QString reason = fate(source).reason; isFailed && !reason.isEmpty())
            return reason.left(1).toUpper() + reason.mid(1);
        // The last two lines: the name before them may hold line breaks of its own.
        return readStr(entry, RowKeys::src).section(u'\n', -2).replace(u'\n', u" · "_s);
    }
    case markerRole:
        return m_batch.resultat(row);
    case statusRole:
        return statusText(row);
    case choiceRole:
        return choiceText(read(entry, Keys::out).value_or(mixLayout),
                          read(entry, Keys::dpi).value_or(1));
    case missingRole:
        return isMissing(source);
    case outdatedRole:
        return isOutdated(row);
    case orderRole:
        return entry.value(RowKeys::order);
    case pathRole:
        return source;
    case sheetRole:
        return fate(source).sheet;
    default:
        return {};
    }
}

} // namespace vignar
