#pragma once

#include <QByteArrayView>

namespace vignar
{

/// Reads the bits of some bytes, the highest of each first. Behind the end they are ones,
/// which end any number.
class BitReader
{
public:
    explicit BitReader(QByteArrayView bytes) : m_bytes(bytes) {}

    /// A number of at most 32 bits.
    quint32 bits(int count)
    {
        quint32 value = 0;
        for (; count > 0; --count)
            value = value << 1 | quint32(bit());
        return value;
    }

    bool flag() { return bit() == 1; }

    /// An Exp-Golomb number, ue(v) of ITU-T H.264, 9.1.
    quint32 golomb()
    {
        int zeros = 0;
        while (bit() == 0 && zeros < 32)
            ++zeros;
        const quint64 value = quint64(1) << zeros | bits(zeros);
        return quint32(value - 1);
    }

    /// True when more was read than there is.
    bool isOver() const { return m_isOver; }

private:
    int bit()
    {
        const qsizetype byte = m_place / 8;
        m_isOver = m_isOver || byte >= m_bytes.size();
        const int value = m_isOver ? 1 : uchar(m_bytes[byte]) >> (7 - m_place % 8) & 1;
        ++m_place;
        return value;
    }

    QByteArrayView m_bytes;
    qsizetype m_place = 0;
    bool m_isOver = false;
};

} // namespace vignar
