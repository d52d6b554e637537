#include "access/Properties.h"

#include "access/Bytes.h"
#include "access/Values.h"

#include <QStringList>

namespace mdb {

namespace {

constexpr char jet4Mark[] = "MR2";
constexpr quint16 namesBlock = 0x80;
constexpr quint16 columnBlock = 0x01;

/// Properties, read from start to end.
class PropertyReader
{
public:
    PropertyReader(QByteArrayView bytes, const Location &where)
        : m_bytes(bytes)
        , m_where(where)
    {}

    bool atEnd() const { return m_bytes.isEmpty(); }

    QByteArrayView take(qsizetype size)
    {
        if (size < 0 || size > m_bytes.size())
            m_where.fail(QStringLiteral("the properties of its columns are broken"));
        const QByteArrayView taken = m_bytes.first(size);
        m_bytes = m_bytes.sliced(size);
        return taken;
    }

    template <typename Number>
    Number number()
    {
        return load<Number>(take(sizeof(Number)).data());
    }

    /// A part that begins with its own size, which counts itself.
    template <typename Size>
    PropertyReader part()
    {
        const qsizetype size = number<Size>();
        return {take(size - static_cast<qsizetype>(sizeof(Size))), m_where};
    }

    QString name() { return unicodeText(take(number<quint16>())); }

private:
    QByteArrayView m_bytes;
    const Location &m_where;
};

/// One column's properties: its name, then values, each with flags, type, the index of its name,
/// and bytes.
void readColumnBlock(PropertyReader block, const QStringList &names, QHash<QString, quint8> &types)
{
    PropertyReader head = block.part<quint32>();
    const QString column = head.atEnd() ? QString() : head.name();
    while (!block.atEnd()) {
        PropertyReader property = block.part<quint16>();
        property.take(2);
        const auto number = property.number<quint16>();
        const QByteArrayView value = property.take(property.number<quint16>());
        if (names.value(number) == QLatin1String("ResultType") && !value.isEmpty())
            types.insert(column.toCaseFolded(), static_cast<quint8>(value[0]));
    }
}

} // namespace

QHash<QString, quint8> resultTypes(QByteArrayView properties, const Location &where)
{
    QHash<QString, quint8> types;
    if (properties.isEmpty())
        return types;
    PropertyReader reader(properties, where);
    if (reader.take(sizeof jet4Mark) != QByteArrayView(jet4Mark, sizeof jet4Mark))
        where.fail(QStringLiteral("the properties of its columns are of an unknown form"));
    QStringList names;
    while (!reader.atEnd()) {
        PropertyReader block = reader.part<quint32>();
        const auto kind = block.number<quint16>();
        if (kind == namesBlock) {
            while (!block.atEnd())
                names.append(block.name());
        } else if (kind == columnBlock && !block.atEnd()) {
            readColumnBlock(block, names, types);
        }
    }
    return types;
}

} // namespace mdb
