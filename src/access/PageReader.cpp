#include "access/PageReader.h"

#include "base/Error.h"
#include "base/FileSystem.h"
#include "base/Files.h"

#include <numeric>
#include <utility>

namespace mdb {

namespace {

constexpr int headerStart = 0x18; ///< from here page 0 is encoded with a fixed key
constexpr int headerLength = 126;
constexpr int codePageOffset = 0x3C;
constexpr int defaultCodePage = 1252; ///< of a file that states none
constexpr int keyOffset = 0x3E;
constexpr std::array<quint8, 4> headerKey = {0xC7, 0xDA, 0x39, 0x6B};

/// RC4, in place.
void applyKey(const std::array<quint8, 4> &key, char *bytes, int length)
{
    std::array<quint8, 256> state;
    std::iota(state.begin(), state.end(), quint8(0));
    quint8 j = 0;
    for (unsigned i = 0; i < 256; ++i) {
        j = static_cast<quint8>(j + state[i] + key[i % key.size()]);
        std::swap(state[i], state[j]);
    }
    quint8 i = 0;
    j = 0;
    for (int n = 0; n < length; ++n) {
        ++i;
        j = static_cast<quint8>(j + state[i]);
        std::swap(state[i], state[j]);
        const quint8 mask = state[static_cast<quint8>(state[i] + state[j])];
        bytes[n] = static_cast<char>(static_cast<quint8>(bytes[n]) ^ mask);
    }
}

} // namespace

PageReader::PageReader(const QString &path)
    : m_path(path)
    , m_file(nativePath(path))
{
    if (const QString fault = platform::nameFault(path); !fault.isEmpty())
        throw Error(BadFileName, u'\'' + path + QLatin1String("': ") + fault);
    if (!m_file.exists())
        throw Error(FileNotFound, u'\'' + path + QStringLiteral("': the file does not exist"));
    QString reason;
    if (!platform::openToRead(m_file, reason))
        throw Error(PermissionDenied, u'\'' + path + QLatin1String("': ") + reason);
    readHeader();
    checkSize();
}

void PageReader::readHeader()
{
    const QString quoted = u'\'' + m_path + u'\'';
    QByteArray header = m_file.read(headerStart + headerLength);
    const QByteArray engine = header.mid(4, 15);
    if (engine != "Standard Jet DB" && engine != "Standard ACE DB")
        throw Error(UnrecognizedFormat, quoted + QStringLiteral(" is not an Access database"));
    const int version = header.size() > 0x14 ? header.at(0x14) : -1;
    if (version < 0 || version > 6) {
        throw Error(UnrecognizedFormat,
                    quoted + QStringLiteral(" is an Access database of an unknown version"));
    }
    const Location where{m_path, {}, 0};
    if (header.size() < headerStart + headerLength)
        where.fail(QStringLiteral("the file ends within its header"));
    m_format = version == 0 ? &jet3Format : &jet4Format;
    applyKey(headerKey, header.data() + headerStart, headerLength);
    m_codePage = load<quint16>(header.constData() + codePageOffset);
    if (m_codePage == 0)
        m_codePage = defaultCodePage;
    m_key = load<quint32>(header.constData() + keyOffset);
    if (version > 1 && m_key != 0)
        throw Error(PermissionDenied, quoted + QStringLiteral(" is encrypted with a password"));
}

void PageReader::requirePage(quint32 page, const Location &where)
{
    if (page < m_pages)
        return;
    m_pages = std::max(m_pages, pageCount());
    if (page < m_pages)
        return;
    where.fail(QStringLiteral("the page does not exist, the file has %1 pages").arg(m_pages));
}

void PageReader::readBlock(quint32 first, quint32 count, char *out, const Location &where)
{
    const qint64 pageSize = m_format->pageSize;
    requirePage(first + count - 1, where);
    const qint64 wanted = count * pageSize;
    qint64 got = 0;
    if (!m_file.seek(first * pageSize))
        throw Error(DeviceIO, where.message(m_file.errorString()));
    while (got < wanted) {
        const qint64 read = m_file.read(out + got, wanted - got);
        if (read < 0)
            throw Error(DeviceIO, where.message(m_file.errorString()));
        if (read == 0)
            where.fail(QStringLiteral("the file has become shorter while it was read"));
        got += read;
    }
    if (m_key == 0)
        return;
    for (quint32 i = 0; i < count; ++i)
        decode(first + i, out + i * pageSize);
}

void PageReader::decode(quint32 page, char *bytes) const
{
    if (page == 0)
        return;
    const quint32 key = m_key ^ page;
    applyKey({static_cast<quint8>(key), static_cast<quint8>(key >> 8),
              static_cast<quint8>(key >> 16), static_cast<quint8>(key >> 24)},
             bytes, m_format->pageSize);
}

QByteArrayView PageReader::page(quint32 page, const Location &where)
{
    for (const CachedPage &cached : m_cache) {
        if (cached.page == page)
            return cached.bytes;
    }
    CachedPage &slot = m_cache[m_oldest];
    m_oldest = (m_oldest + 1) % m_cache.size();
    slot.page = -1;
    slot.bytes.resize(m_format->pageSize);
    readBlock(page, 1, slot.bytes.data(), {where.file, where.table, page});
    slot.page = page;
    return slot.bytes;
}

QByteArrayView PageReader::page(quint32 page, PageType type, const Location &where)
{
    const QByteArrayView bytes = this->page(page, where);
    if (bytes[0] != type) {
        const Location here{where.file, where.table, page};
        here.fail(QStringLiteral("the page is of type %1, not %2")
                      .arg(static_cast<quint8>(bytes[0]))
                      .arg(static_cast<int>(type)));
    }
    return bytes;
}

void PageReader::forget()
{
    for (CachedPage &cached : m_cache)
        cached.page = -1;
}

void PageReader::checkSize()
{
    const qint64 pages = pageCount();
    const Location end{m_path, {}, pages};
    if (pages < m_pages)
        end.fail(QStringLiteral("the file has become shorter, it had %1 pages").arg(m_pages));
    m_pages = pages;
    if (m_file.size() % m_format->pageSize != 0)
        end.fail(QStringLiteral("the file ends within this page"));
}

} // namespace mdb
