#include "app/storedRecord.h"

#include "settings/stringTables.h"

#include <QStringList>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

template <class Function>
SourceDico withFields(SourceDico record, Function changed)
{
    for (auto entry = record.begin(); entry != record.end(); ++entry) {
        if (entry.key().startsWith(u'v') && entry.key().endsWith(u"_fields"))
            *entry = changed(entry->toString());
    }
    return record;
}

} // namespace

SourceDico storedRecord(const SourceDico &record)
{
    return withFields(record, [](const QString &text) { return keyOfText(text, fieldsTable); });
}

SourceDico restoredRecord(const SourceDico &stored)
{
    return withFields(stored, [](const QString &text) {
        return localised(keyOfText(text, fieldsTable), fieldsTable);
    });
}

} // namespace vignar
