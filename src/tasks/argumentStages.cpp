#include "tasks/argumentStages.h"

#include "classShared/paths.h"

using namespace Qt::StringLiterals;

namespace vignar
{

std::optional<QList<QStringList>> splitStages(const QStringList &arguments)
{
    QList<QStringList> stages{{}};
    for (const QString &item : arguments) {
        if (item != "|"_L1)
            stages.last() << (item.contains("://"_L1) ? item : expandTilde(item));
        else if (stages.constLast().isEmpty())
            return std::nullopt;
        else
            stages << QStringList();
    }
    return stages;
}

} // namespace vignar
