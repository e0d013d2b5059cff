#include "app/rowPictures.h"

namespace vignar
{

RowPictures::RowPictures(ExtractionFolder folder) : m_folder(std::move(folder))
{
    connect(&m_executor, &PassExecutor::landed, this, [this](int pictures) {
        m_landed = pictures;
        Q_EMIT landed(pictures);
    });
    connect(&m_executor, &PassExecutor::told, this, &RowPictures::setShownAt);
    connect(&m_executor, &PassExecutor::finished, this, [this] {
        m_isRunning = false;
        Q_EMIT finished();
    });
}

RowPictures::~RowPictures()
{
    // A process that still ran would write into the folder again.
    m_executor.terminate();
}

void RowPictures::start(const Dico &passes, const SourceDico &source, PassExecutor::Effort effort)
{
    if (m_isRunning)
        return;
    m_isRunning = true;
    m_passes = passes;
    m_landed = 0;
    PassMap numbered;
    for (auto pass = passes.cbegin(); pass != passes.cend(); ++pass)
        numbered.emplace(pass.key().toInt(), pass->toStringList());
    m_executor.start(numbered, source, effort);
}

Dico RowPictures::leftOut() const
{
    Dico passes;
    for (const auto &[number, pass] : m_executor.leftOut())
        passes.insert(QString::number(number), pass);
    return passes;
}

} // namespace vignar
