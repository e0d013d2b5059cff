#pragma once

#include <QStringList>

#include <optional>

namespace vignar
{

/// The stages of a pipeline, each a tool and its arguments. A leading "~" is expanded
/// in every item that holds no "://".
///
/// Nothing when a "|" closes an empty stage. A list that ends with "|" makes an empty
/// last stage.
std::optional<QList<QStringList>> splitStages(const QStringList &arguments);

} // namespace vignar
