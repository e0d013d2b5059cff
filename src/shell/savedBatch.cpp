#include "shell/savedBatch.h"

#include "classShared/lineLog.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Many times what the longest list takes; a larger file is not ours.
constexpr qint64 fileLimit = 64 * 1024 * 1024;
constexpr QLatin1String posterPattern{"poster-????????????????.jpg"};

QJsonObject toJson(const SessionState::Row &row)
{
    Dico record = read(row.entry, RowKeys::dico).value_or(Dico());
    // The poster in the work folder goes away with the run.
    remove(record, Keys::imgPathStr);
    return {{u"record"_s, QJsonObject::fromVariantMap(record)},
            {u"layout"_s, read(row.entry, Keys::out).value_or(mixLayout)},
            {u"format"_s, read(row.entry, Keys::dpi).value_or(1)},
            {u"result"_s, readStr(row.entry, RowKeys::resultat)},
            {u"reason"_s, row.fate.reason},
            {u"sheet"_s, row.fate.sheet}};
}

QJsonObject toJson(const SessionState &state)
{
    QJsonArray rows;
    for (const SessionState::Row &row : state.rows)
        rows.append(toJson(row));
    return {{u"version"_s, 1},
            {u"rows"_s, rows},
            {u"pending"_s, QJsonArray::fromStringList(state.pending)},
            {u"isMaking"_s, state.isMaking},
            {u"unfinished"_s, state.unfinished}};
}

/// A marker that says how the row ended, or that it waits.
QString restingMarker(const QString &marker)
{
    return marker == Puces::puceSuccess || marker == Puces::puceFailure ? marker
                                                                        : QString(Puces::puce);
}

QStringList texts(const QJsonArray &array)
{
    QStringList found;
    for (const QJsonValue &value : array) {
        if (value.isString() && !value.toString().isEmpty())
            found.append(value.toString());
    }
    return found;
}

} // namespace

SavedBatch::SavedBatch(const QString &folder, std::function<SessionState()> current,
                       QObject *parent)
    : QObject(parent), m_folder(folder), m_current(std::move(current))
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(saveDelay);
    connect(&m_timer, &QTimer::timeout, this, &SavedBatch::save);
}

QString SavedBatch::filePath() const
{
    return m_folder + u"/batch.json"_s;
}

QString SavedBatch::posterPath(const QString &source) const
{
    const QByteArray digest =
        QCryptographicHash::hash(source.toUtf8(), QCryptographicHash::Sha1).toHex();
    return m_folder + u"/poster-"_s + QString::fromLatin1(digest.left(16)) + u".jpg"_s;
}

SessionState SavedBatch::load() const
{
    QFile file(filePath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QJsonDocument document = QJsonDocument::fromJson(file.read(fileLimit));
    if (!document.isObject()) {
        const QString aside = filePath() + u".broken"_s;
        logLine(u"saved list          :-( '%@' kept as '%@'", filePath(), aside);
        QFile::remove(aside);
        file.rename(aside);
        return {};
    }
    const QJsonObject saved = document.object();
    SessionState state;
    state.pending = texts(saved.value("pending"_L1).toArray());
    state.isMaking = saved.value("isMaking"_L1).toBool();
    state.unfinished = saved.value("unfinished"_L1).toString();
    const QJsonArray rows = saved.value("rows"_L1).toArray();
    for (const QJsonValue &value : rows) {
        const QJsonObject row = value.toObject();
        Dico record = row.value("record"_L1).toObject().toVariantMap();
        const QString source = readStr(record, Keys::srcPathStr);
        if (source.isEmpty())
            continue;
        write(record, Keys::imgPathStr, posterPath(source));
        BatchEntry entry = makeBatchEntry(record, static_cast<int>(state.rows.size()) + 1,
                                          row.value("layout"_L1).toInt(mixLayout),
                                          row.value("format"_L1).toInt(1));
        write(entry, RowKeys::resultat, restingMarker(row.value("result"_L1).toString()));
        state.rows.append(
            {entry, {row.value("reason"_L1).toString(), row.value("sheet"_L1).toString()}});
    }
    return state;
}

void SavedBatch::changed()
{
    // Started once and left to run out: changes that keep coming must not put it off.
    if (!m_isFrozen && !m_timer.isActive())
        m_timer.start();
}

bool SavedBatch::save()
{
    m_timer.stop();
    if (m_isFrozen)
        return true;
    QElapsedTimer clock;
    clock.start();
    const SessionState state = m_current();
    QDir().mkpath(m_folder);
    keepPosters(state);
    QSaveFile file(filePath());
    const bool isSaved =
        file.open(QIODevice::WriteOnly) &&
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
        file.write(QJsonDocument(toJson(state)).toJson(QJsonDocument::Compact)) > 0 &&
        file.flush() && file.commit();
    if (!isSaved && !m_isFailureTold)
        logLine(u"saved list          :-( '%@' : %@", filePath(), file.errorString());
    m_isFailureTold = !isSaved;
    m_timer.setInterval(std::max(saveDelay, std::chrono::milliseconds(4 * clock.elapsed())));
    return isSaved;
}

void SavedBatch::freeze()
{
    save();
    m_isFrozen = true;
}

void SavedBatch::keepPosters(const SessionState &state) const
{
    QStringList unused = QDir(m_folder).entryList({posterPattern}, QDir::Files);
    for (const SessionState::Row &row : state.rows) {
        const Dico record = read(row.entry, RowKeys::dico).value_or(Dico());
        const QString path = posterPath(readStr(record, Keys::srcPathStr));
        const bool isThere = unused.removeOne(path.section(u'/', -1)) || QFile::exists(path);
        const QImage poster = read(row.entry, RowKeys::img).value_or(QImage());
        if (!isThere && !poster.isNull())
            poster.save(path, "JPG", 90);
    }
    for (const QString &name : std::as_const(unused))
        QFile::remove(m_folder + u'/' + name);
}

} // namespace vignar
