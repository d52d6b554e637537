#pragma once

#include "access/Location.h"

#include <QByteArrayView>
#include <QtEndian>

namespace mdb {

/// A little-endian number at an address that is known to be inside its buffer.
template <typename Number>
inline Number load(const void *at)
{
    return qFromLittleEndian<Number>(at);
}

/// Untrusted bytes, read at offsets that are checked each time. Refers to its buffer and its
/// location; both have to outlive it.
class Bytes
{
public:
    Bytes(QByteArrayView bytes, const Location &where)
        : m_bytes(bytes)
        , m_where(&where)
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

    /// `length` bytes from `offset`. Throws when they are not all inside the buffer.
    QByteArrayView part(qsizetype offset, qsizetype length) const
    {
        if (offset < 0 || length < 0 || length > size() || offset > size() - length)
            m_where->fail(QStringLiteral("a value reaches past the end of its page"));
        return m_bytes.sliced(offset, length);
    }

private:
    QByteArrayView m_bytes;
    const Location *m_where;
};

/// A pointer to a row: one byte row number, three bytes page number.
struct RowPointer
{
    int row = 0;
    quint32 page = 0;

    static RowPointer from(quint32 bytes) { return {static_cast<int>(bytes & 0xFF), bytes >> 8}; }
};

} // namespace mdb
