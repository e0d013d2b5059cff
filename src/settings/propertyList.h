#pragma once

#include "classShared/keys.h"

namespace vignar
{

/// The dictionary at the root of an XML property list; nothing when the text is
/// malformed, nests deeper than 512 levels or has another root.
///
/// Kinds: dict QVariantMap, array QVariantList, string QString, integer qint64, real
/// double, true and false bool, date QDateTime (UTC), data QByteArray.
std::optional<Dico> parsePropertyList(const QByteArray &xml);

} // namespace vignar
