#include "app/sourceQueue.h"

#include "settings/preferences.h"

#include <QThreadPool>

namespace vignar
{

namespace
{

/// The part of a long queue that is taken between two printed forms.
constexpr qsizetype printedParts = 8;

Dico dicoOf(const QStringList &paths)
{
    Dico dico;
    for (qsizetype number = 0; number < paths.size(); ++number)
        dico.insert(QString::number(number), paths[number]);
    return dico;
}

} // namespace

void SourceQueue::append(const QStringList &sources, const QSet<QString> &sourceSet)
{
    m_paths = m_paths.isEmpty() ? sources : m_paths + sources;
    m_set = m_set.isEmpty() ? sourceSet : m_set.unite(sourceSet);
    m_printed = -1;
    print();
}

QString SourceQueue::takeFirst()
{
    const QString path = m_paths.takeFirst();
    m_set.remove(path);
    print();
    return path;
}

void SourceQueue::clear()
{
    m_paths.clear();
    m_set.clear();
    print();
}

void SourceQueue::print()
{
    if (m_paths.isEmpty()) {
        m_printed = 0;
        prefDelete(RunKeys::analysisSrcPathesDico);
    } else if (m_paths.size() <= shortQueue) {
        m_printed = m_paths.size();
        prefWriteDico(RunKeys::analysisSrcPathesDico, dicoOf(m_paths));
    } else if (m_printed < 0 || m_printed - m_paths.size() > m_printed / printedParts) {
        printAside();
    }
}

void SourceQueue::printAside()
{
    if (m_printing.isRunning())
        return;
    m_printed = m_paths.size();
    m_printing.start(
        this, [paths = m_paths] { return dicoOf(paths); },
        [this](const Dico &dico) {
            // Short queues have been printed meanwhile, and newcomers are still missing.
            if (m_paths.size() <= shortQueue || m_printed < 0)
                return print();
            QVariant old = prefRead(RunKeys::analysisSrcPathesDico);
            prefWriteDico(RunKeys::analysisSrcPathesDico, dico);
            // Taking a dictionary of this size to pieces would be felt in the window.
            QThreadPool::globalInstance()->start([old = std::move(old)]() mutable { old.clear(); });
            print();
        });
}

} // namespace vignar
