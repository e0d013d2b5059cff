#include "settings/preferenceFile.h"

#include "classShared/lineLog.h"
#include "settings/applicationPlaces.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QSaveFile>

namespace vignar
{
using namespace Qt::StringLiterals;

namespace
{

constexpr int lockWaitMs = 2000;
/// A change takes milliseconds: an older lock belongs to a process that hangs.
constexpr int staleLockMs = 10'000;

struct FileContent {
    enum { absent, held, broken, unreadable } state = absent;
    Dico values;
    QString reason;
};

/// JSON knows one kind of number. Whole ones become int where they fit, so that a value
/// reads the same before and after a restart.
QVariant withNumbersNarrowed(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        Dico narrowed = value.toMap();
        for (QVariant &entry : narrowed)
            entry = withNumbersNarrowed(entry);
        return narrowed;
    }
    case QMetaType::QVariantList: {
        QVariantList narrowed = value.toList();
        for (QVariant &entry : narrowed)
            entry = withNumbersNarrowed(entry);
        return narrowed;
    }
    case QMetaType::LongLong: {
        const qint64 number = value.toLongLong();
        const bool isInt = number == static_cast<int>(number);
        return isInt ? QVariant(static_cast<int>(number)) : value;
    }
    case QMetaType::Nullptr:
        return {};
    default:
        return value;
    }
}

/// The value as the file gives it back: lists of texts become lists, numbers narrow.
QVariant asStored(const QVariant &value)
{
    const QJsonObject boxed{{u"value"_s, QJsonValue::fromVariant(value)}};
    const QJsonDocument read = QJsonDocument::fromJson(QJsonDocument(boxed).toJson());
    return withNumbersNarrowed(read.object().value("value"_L1).toVariant());
}

FileContent parse(const QByteArray &bytes)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError)
        return {FileContent::broken, {}, error.errorString()};
    if (!document.isObject())
        return {FileContent::broken, {}, u"not a JSON object"_s};
    const QVariant values = withNumbersNarrowed(document.object().toVariantMap());
    return {FileContent::held, values.toMap(), {}};
}

FileContent load(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return {};
    // A pipe or a device would block or never end.
    if (!info.isFile())
        return {FileContent::unreadable, {}, u"not a regular file"_s};
    if (info.size() > preferenceFileLimit)
        return {FileContent::broken, {}, u"too large"_s};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {FileContent::unreadable, {}, file.errorString()};
    const QByteArray bytes = file.read(info.size());
    if (file.error() != QFileDevice::NoError)
        return {FileContent::unreadable, {}, file.errorString()};
    return parse(bytes);
}

bool moveAside(const QString &path)
{
    QString aside = path + u".broken"_s;
    for (int number = 2; QFileInfo::exists(aside); ++number)
        aside = path + u".broken-"_s + QString::number(number);
    // QFile::rename() never replaces a file.
    return QFile::rename(path, aside);
}

void logUnusable(const QString &path, const FileContent &content)
{
    logLine(u"preferences         :-( '%@' : %@", path, content.reason);
}

/// False when the file must not be replaced: what it holds would be lost.
bool isReplaceable(const QString &path, const FileContent &content)
{
    if (content.state == FileContent::broken) {
        logUnusable(path, content);
        return moveAside(path);
    }
    return content.state != FileContent::unreadable;
}

Result<void> save(const QString &path, const Dico &values)
{
    const QByteArray bytes = QJsonDocument(QJsonObject::fromVariantMap(values)).toJson();
    // The next start would take a larger file for a broken one.
    if (bytes.size() > preferenceFileLimit)
        return Failure{u"too large"_s};
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return Failure{file.errorString()};
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(bytes);
    // commit() alone overlooks a last buffer that could not be written.
    if (!file.flush() || !file.commit())
        return Failure{file.errorString()};
    return {};
}

void apply(const Dico &changes, Dico &values)
{
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        if (change->isValid())
            values.insert(change.key(), *change);
        else
            values.remove(change.key());
    }
}

QString lockPath(const QString &path)
{
    return path + u".lock"_s;
}

} // namespace

Dico readPreferenceFile(const QString &path, BrokenFile broken)
{
    const FileContent content = load(path);
    if (!content.reason.isEmpty())
        logUnusable(path, content);
    if (content.state == FileContent::broken && broken == BrokenFile::keepAside)
        moveAside(path);
    return content.values;
}

FilePreferenceStore::FilePreferenceStore(QString path) : m_path(std::move(path))
{
    // Without the lock another process may be repairing the file at this moment.
    QLockFile lock(lockPath(m_path));
    lock.setStaleLockTime(staleLockMs);
    const bool isLocked = QFileInfo::exists(m_path) && lock.tryLock(lockWaitMs);
    m_values = readPreferenceFile(m_path, isLocked ? BrokenFile::keepAside : BrokenFile::leave);
}

QVariant FilePreferenceStore::value(const QString &key) const
{
    const std::lock_guard lock(m_mutex);
    return m_values.value(key);
}

QStringList FilePreferenceStore::keys() const
{
    const std::lock_guard lock(m_mutex);
    return m_values.keys();
}

void FilePreferenceStore::setValue(const QString &key, const QVariant &value)
{
    change(key, asStored(value));
}

void FilePreferenceStore::removeValue(const QString &key)
{
    change(key, {});
}

void FilePreferenceStore::change(const QString &key, const QVariant &value)
{
    m_unapplied.insert(key, value);
    {
        const std::lock_guard lock(m_mutex);
        apply(m_unapplied, m_values);
    }
    const Result<void> applied = applyToFile();
    if (!applied && !m_isFailureTold)
        logLine(u"preferences         :-( '%@' kept in memory : %@", m_path, applied.reason());
    m_isFailureTold = !applied;
}

Result<void> FilePreferenceStore::applyToFile()
{
    if (!QDir().mkpath(QFileInfo(m_path).absolutePath()))
        return Failure{u"no folder"_s};
    QLockFile lock(lockPath(m_path));
    lock.setStaleLockTime(staleLockMs);
    // Having waited in vain once, the next change does not keep the user waiting again.
    if (!lock.tryLock(m_isFailureTold ? 0 : lockWaitMs))
        return Failure{u"locked or not writable"_s};
    FileContent content = load(m_path);
    if (!isReplaceable(m_path, content))
        return Failure{content.reason};
    apply(m_unapplied, content.values);
    const Result<void> saved = save(m_path, content.values);
    if (saved) {
        const std::lock_guard values(m_mutex);
        m_values = content.values;
        m_unapplied.clear();
    }
    return saved;
}

QString defaultPreferenceFilePath()
{
    return applicationPlaces().preferenceFolder() + u"/preferences.json"_s;
}

} // namespace vignar
