#include "sheet/pictureIndex.h"

#include "sheet/matroskaIndex.h"
#include "sheet/mp4Index.h"

namespace vignar
{

using namespace Qt::StringLiterals;

std::unique_ptr<PictureIndex> PictureIndex::of(const SourceDico &source)
{
    auto file = std::make_unique<QFile>(readStr(source, Keys::srcPathStr));
    // Small pieces far apart: a buffer would read more than is looked at.
    if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return nullptr;
    const QString container = readStr(source, Keys::wrapper);
    if (container.startsWith("mov,"_L1))
        return Mp4Index::read(std::move(file));
    if (container.startsWith("matroska,"_L1))
        return MatroskaIndex::read(std::move(file));
    return nullptr;
}

QByteArray PictureIndex::bytesAt(qint64 position, qint64 count)
{
    if (m_readsLeft == 0 || !m_file->seek(position))
        return {};
    --m_readsLeft;
    return m_file->read(count);
}

} // namespace vignar
