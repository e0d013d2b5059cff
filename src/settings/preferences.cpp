#include "settings/preferences.h"

#include "classShared/lineLog.h"
#include "classShared/numbers.h"
#include "classShared/paths.h"
#include "settings/preferenceStore.h"
#include "settings/propertyList.h"

#include <QFile>

namespace vignar
{
using namespace Qt::StringLiterals;

namespace
{

/// Bytes of the largest property list that is read.
constexpr qint64 propertyListLimit = 16 * 1024 * 1024;

/// A null text is no object, as an absent value is.
bool isNull(const QVariant &object)
{
    return !object.isValid() ||
           (object.typeId() == QMetaType::QString && object.toString().isNull());
}

QVariant stored(const QString &key)
{
    return key.isNull() ? QVariant() : sharedPreferenceStore().value(key);
}

std::optional<Dico> storedDico(const QString &key)
{
    const QVariant value = stored(key);
    if (value.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return value.toMap();
}

/// What multiplies into the default limits of the layouts.
int limitBase(int selection)
{
    switch (selection) {
    case 0:
        return 2;
    case 1:
        return 3;
    default:
        return 6;
    }
}

void writeLimits(Dico &defaults)
{
    const int base = limitBase(0);
    write(defaults, Prefs::prefLimitBig, base * 4);
    write(defaults, Prefs::prefLimitMed, base * 5);
    write(defaults, Prefs::prefLimitMin, base * 7);
    write(defaults, Prefs::prefLimitMix, base * 5);
    write(defaults, Prefs::prefLimitAuto, 1);
}

void writePageLines(Dico &defaults)
{
    write(defaults, Prefs::pageName, 1);
    write(defaults, Prefs::pageLocation, 0);
    write(defaults, Prefs::pageDate, 0);
    write(defaults, Prefs::pageDuration, 1);
    write(defaults, Prefs::pageVIdentity, 1);
    write(defaults, Prefs::pagePoids, 1);
    write(defaults, Prefs::pageEssence, 1);
    write(defaults, Prefs::pageComment, 0);
    write(defaults, Prefs::pageCommentText, u""_s);
}

void writeRating(Dico &defaults)
{
    const double version = str2Float(QStringLiteral(VIGNAR_VERSION));
    write(defaults, Prefs::rateDeclined, prefStored(Prefs::rateDeclined).value_or(0));
    write(defaults, Prefs::ratedVersion, prefStored(Prefs::ratedVersion).value_or(0));
    write(defaults, Prefs::rateVersion, prefStored(Prefs::rateVersion).value_or(version));
}

bool isNumber(const QVariant &value)
{
    return value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::Double;
}

} // namespace

QVariant prefRead(const QString &key)
{
    const QVariant value = stored(key);
    logDebug(u"prefRead            : %@", value);
    return value;
}

QString prefReadStr(const QString &key)
{
    const QVariant value = stored(key);
    return value.isValid() ? describe(value) : u""_s;
}

int prefWriteBool(const QString &key, bool flag)
{
    if (key.isNull())
        return 0;
    const QVariant old = stored(key);
    logDebug(u"prefWrite           - old ? %d", old.isValid() ? int(old.toBool()) : -1);
    sharedPreferenceStore().setValue(key, flag);
    logDebug(u"prefWrite           - def : %d", int(stored(key).toBool()));
    return 1;
}

int prefWrite(const QString &key, const QVariant &object)
{
    if (key.isNull() || isNull(object))
        return 0;
    const QVariant old = stored(key);
    logDebug(u"prefWrite           - old ? %@", old.isValid() ? old : QVariant(u"nil"_s));
    sharedPreferenceStore().setValue(key, object);
    logDebug(u"prefWrite           - def : %@", stored(key));
    return 1;
}

int prefDelete(const QString &key)
{
    if (stored(key).isValid())
        sharedPreferenceStore().removeValue(key);
    if (sharedPreferenceStore().hasUnappliedChanges())
        logLine(u"hasUnappliedChanges :-(");
    return 1;
}

int prefWriteDico(const QString &key, const QVariant &object)
{
    if (key.isNull() || isNull(object))
        return 0;
    const QVariant old = stored(key);
    if (old.isValid())
        logDebug(u"prefWriteDico       - old exists : %@", old);
    // One write replaces the value, so that no crash can leave the key without any.
    sharedPreferenceStore().setValue(key, object);
    if (old.isValid())
        logDebug(u"prefWriteDico       - old does not exist anymore :-)");
    else
        logDebug(u"prefWriteDico       - does not exist ;-)");
    logDebug(u"prefWriteDico       - exists : %@", stored(key));
    return 1;
}

int prefWriteChildDico(const QString &key, const QString &childKey, const QVariant &value)
{
    if (key.isNull() || childKey.isNull() || isNull(value))
        return 0;
    logDebug(u"prefWriteChildDico  : new key=%@, new value=%@", childKey, value);
    const std::optional<Dico> old = storedDico(key);
    if (old)
        logDebug(u"prefWriteChildDico  : new key=%@, old dico: %@", childKey, QVariant(*old));
    Dico dico = old.value_or(Dico());
    dico.insert(childKey, value);
    logDebug(u"prefWriteChildDico  : new key=%@, new tmp dico:%@", childKey, QVariant(dico));
    sharedPreferenceStore().setValue(key, dico);
    logDebug(u"prefWriteChildDico  : new key=%@, new final value='%@'", childKey, stored(key));
    return 1;
}

int prefDeleteChildDico0(const QString &key, const QString &childKey)
{
    std::optional<Dico> dico = storedDico(key);
    if (!dico || !dico->contains(childKey))
        return 1;
    logDebug(u"prefDeleteChildDico0: key=%@ : %@", key, QVariant(*dico));
    logDebug(u"key to delete       : key=%@, value=%@", childKey, dico->value(childKey));
    dico->remove(childKey);
    logDebug(u"newMDico 1          : key=%@ : %@", key, QVariant(*dico));
    sharedPreferenceStore().setValue(key, *dico);
    return 1;
}

Dico prefDefaults()
{
    Dico defaults;
    write(defaults, Prefs::prefDefautDstPathStr, expandTilde(u"~/Movies/"_s));
    write(defaults, Prefs::prefSuffix, u"index"_s);
    write(defaults, Prefs::prefNameTemplate, u""_s);
    write(defaults, Prefs::prefColor, -1);
    write(defaults, Prefs::prefCheckMatrix, 3);
    write(defaults, Prefs::prefAlertEnd, 1);
    write(defaults, Prefs::prefDpi, 1);
    write(defaults, Prefs::prefSheetFormat, u""_s);
    write(defaults, Prefs::prefComputerWidthAuto, 1);
    write(defaults, Prefs::prefComputerWidth, 1280);
    write(defaults, Prefs::pageBkgColor, u"ffffff"_s);
    write(defaults, Prefs::prefBorderColor, u"b3b3b3"_s);
    write(defaults, Prefs::prefBorderSize, 1.0);
    writeLimits(defaults);
    write(defaults, Prefs::prefDerush, 0);
    write(defaults, Prefs::prefDerushInterval, 20);
    write(defaults, Prefs::prefTimecode, 1);
    write(defaults, Prefs::prefAvoidBlank, 0);
    write(defaults, Prefs::prefTrueTimecode, 0);
    writePageLines(defaults);
    write(defaults, Prefs::prefMultimediaHd, 1);
    write(defaults, Prefs::prefDerushNoMultimediaHd, 1);
    write(defaults, Prefs::prefWebVtt, 0);
    write(defaults, Prefs::update, 1);
    writeRating(defaults);
    return defaults;
}

std::optional<Dico> readPlist(const QString &path)
{
    QFile file(expandTilde(path));
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    std::optional<Dico> list = parsePropertyList(file.read(propertyListLimit));
    if (!list)
        return std::nullopt;
    for (auto entry = list->begin(); entry != list->end(); ++entry) {
        logDebug(u"readPlist key       : %@", entry.key());
        logDebug(u"readPlist class     : %@", QString::fromLatin1(entry->typeName()));
        if (!isNumber(*entry))
            continue;
        logDebug(u"readPlist class nb  : %@", *entry);
        if (entry.key() == "Birthdate"_L1)
            *entry = 1564.0;
    }
    return list;
}

} // namespace vignar
