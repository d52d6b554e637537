#pragma once

#include "data/access/Place.h"

#include <QByteArrayView>
#include <QtEndian>

namespace mdb {

/// A little-endian number at an address that is known to lie inside its buffer.
template <typename Number>
inline Number load(const void *at)
{
    return qFromLittleEndian<Number>(at);
}

/// Foreign bytes, read at offsets that are checked each time. Refers to its buffer and its place;
/// both have to outlive it.
class Bytes
{
public:
    Bytes(QByteArrayView bytes, const Place &place)
        : m_bytes(bytes)
        , m_place(&place)
    {}

    qsizetype size() const { return m_bytes.size(); }

    template <typename Number>
    Number at(qsizetype offset) const
    {
        return load<Number>(part(offset, sizeof(Number)).data());
    }
    quint8 byte(qsizetype offset) const { return at<quint8>(offset); }
    quint16 word(qsizetype offset) const { return at<quint16>(offset); }
    quint32 number(qsizetype offset) const { return at<quint32>(offset); }

    /// A stretch of the bytes. Fails at the place when it does not lie inside.
    QByteArrayView part(qsizetype offset, qsizetype length) const
    {
        if (offset < 0 || length < 0 || length > size() || offset > size() - length)
            m_place->fail(QStringLiteral("a value reaches past the end of its page"));
        return m_bytes.sliced(offset, length);
    }

private:
    QByteArrayView m_bytes;
    const Place *m_place;
};

/// A pointer to a row: one byte row number, three bytes page number.
struct RowPointer
{
    int row = 0;
    quint32 page = 0;

    static RowPointer from(quint32 bytes) { return {static_cast<int>(bytes & 0xFF), bytes >> 8}; }
};

} // namespace mdb
