#include "shell/batchFile.h"

#include "app/storedRecord.h"
#include "classShared/lineLog.h"
#include "settings/stringTables.h"

#include <QCryptographicHash>
#include <QDir>
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

QString sourceOf(const SessionState::Row &row)
{
    return readStr(read(row.entry, RowKeys::dico).value_or(Dico()), Keys::srcPathStr);
}

/// A reason by the key of its text where it has one. A text that names something is stored as
/// it was shown.
QString storedReason(const QString &reason)
{
    const QString key = keyOfText(reason, localizedTable);
    return key.startsWith(u"V_reason_") ? key : reason;
}

QJsonValue toJson(const std::optional<RowChoice> &choice)
{
    if (!choice)
        return QJsonValue();
    return QJsonObject{{u"layout"_s, choice->layout},
                       {u"format"_s, choice->format},
                       {u"pictures"_s, QJsonObject::fromVariantMap(choice->pictures)}};
}

std::optional<RowChoice> choiceFrom(const QJsonValue &value)
{
    if (!value.isObject())
        return std::nullopt;
    return RowChoice{value["layout"_L1].toInt(mixLayout), value["format"_L1].toInt(1),
                     value["pictures"_L1].toObject().toVariantMap()};
}

QByteArray toJson(const SessionState::Row &row)
{
    Dico record = read(row.entry, RowKeys::dico).value_or(Dico());
    // The poster in the work folder goes away with the run.
    remove(record, Keys::imgPathStr);
    const QJsonObject object{{u"record"_s, QJsonObject::fromVariantMap(storedRecord(record))},
                             {u"layout"_s, read(row.entry, Keys::out).value_or(mixLayout)},
                             {u"format"_s, read(row.entry, Keys::dpi).value_or(1)},
                             {u"result"_s, readStr(row.entry, RowKeys::resultat)},
                             {u"reason"_s, storedReason(row.fate.reason)},
                             {u"sheet"_s, row.fate.sheet},
                             {u"madeWith"_s, toJson(row.fate.choice)}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
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

/// The state but its rows, open at its end.
QByteArray opening(const SessionState &state)
{
    QByteArray json =
        QJsonDocument(QJsonObject{{u"version"_s, 1},
                                  {u"pending"_s, QJsonArray::fromStringList(state.pending)},
                                  {u"isMaking"_s, state.isMaking}})
            .toJson(QJsonDocument::Compact);
    json.chop(1);
    return json;
}

} // namespace

QString BatchFile::path() const
{
    return m_folder + u"/batch.json"_s;
}

QString BatchFile::posterName(const QString &source) const
{
    const QByteArray digest =
        QCryptographicHash::hash(source.toUtf8(), QCryptographicHash::Sha1).toHex();
    return u"poster-"_s + QString::fromLatin1(digest.left(16)) + u".jpg"_s;
}

SessionState BatchFile::read() const
{
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QJsonDocument document = QJsonDocument::fromJson(file.read(fileLimit));
    if (!document.isObject()) {
        const QString aside = path() + u".broken"_s;
        logLine(u"saved list          :-( '%@' kept as '%@'", path(), aside);
        QFile::remove(aside);
        file.rename(aside);
        return {};
    }
    const QJsonObject saved = document.object();
    SessionState state;
    state.pending = texts(saved.value("pending"_L1).toArray());
    state.isMaking = saved.value("isMaking"_L1).toBool();
    const QJsonArray rows = saved.value("rows"_L1).toArray();
    for (const QJsonValue &value : rows) {
        const QJsonObject row = value.toObject();
        Dico record = restoredRecord(row.value("record"_L1).toObject().toVariantMap());
        const QString source = readStr(record, Keys::srcPathStr);
        if (source.isEmpty())
            continue;
        vignar::write(record, Keys::imgPathStr, m_folder + u'/' + posterName(source));
        BatchEntry entry = makeBatchEntry(record, static_cast<int>(state.rows.size()) + 1,
                                          row.value("layout"_L1).toInt(mixLayout),
                                          row.value("format"_L1).toInt(1));
        vignar::write(entry, RowKeys::resultat, restingMarker(row.value("result"_L1).toString()));
        state.rows.append(
            {entry,
             {localised(row.value("reason"_L1).toString()), row.value("sheet"_L1).toString(),
              choiceFrom(row.value("madeWith"_L1))}});
    }
    return state;
}

BatchFile::Written &BatchFile::writtenRow(const SessionState::Row &row)
{
    const QString source = sourceOf(row);
    Written &written = m_written[source];
    const bool isSame =
        !written.json.isEmpty() && written.row.entry == row.entry && written.row.fate == row.fate;
    if (!isSame)
        written = {row, toJson(row), posterName(source)};
    return written;
}

void BatchFile::keepPoster(const Written &written, QSet<QString> &unused) const
{
    const QImage poster = vignar::read(written.row.entry, RowKeys::img).value_or(QImage());
    if (unused.remove(written.poster) || poster.isNull())
        return;
    QSaveFile file(m_folder + u'/' + written.poster);
    if (file.open(QIODevice::WriteOnly) && poster.save(&file, "JPG", 90))
        file.commit();
}

bool BatchFile::write(const SessionState &state)
{
    QDir().mkpath(m_folder);
    const QStringList posters = QDir(m_folder).entryList({posterPattern}, QDir::Files);
    QSet<QString> unused(posters.begin(), posters.end());
    QByteArray json = opening(state) + ",\"rows\":[";
    QHash<QString, Written> kept;
    for (const SessionState::Row &row : state.rows) {
        const Written &written = writtenRow(row);
        json += (kept.isEmpty() ? "" : ",") + written.json;
        keepPoster(written, unused);
        kept.insert(sourceOf(row), written);
    }
    m_written = std::move(kept);
    for (const QString &name : std::as_const(unused))
        QFile::remove(m_folder + u'/' + name);

    QSaveFile file(path());
    const bool isWritten = file.open(QIODevice::WriteOnly) &&
                           file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
                           file.write(json + "]}") > 0 && file.commit();
    if (!isWritten && !m_isFailureTold)
        logLine(u"saved list          :-( '%@' : %@", path(), file.errorString());
    m_isFailureTold = !isWritten;
    return isWritten;
}

} // namespace vignar
