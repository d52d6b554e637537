#pragma once

#include "data/access/Bytes.h"
#include "data/access/Format.h"

#include <QFile>

#include <array>
#include <vector>

namespace mdb {

/// The pages of one file, read in blocks and decoded where the file is encoded (the simple page
/// encoding of Jet). One thread.
class PageReader
{
public:
    /// Opens a file and looks at its header. Throws Error: FileNotFound, PermissionDenied (also for
    /// an encrypted file), UnrecognizedFormat, InvalidFileFormat.
    explicit PageReader(const QString &path);

    const QString &path() const { return m_path; }
    const Format &format() const { return *m_format; }
    int codePage() const { return m_codePage; } ///< of the texts of a Jet 3 file

    /// Bytes and whole pages that the file has now.
    qint64 fileSize() const { return m_file.size(); }
    qint64 pageCount() const { return fileSize() / m_format->pageSize; }

    /// Fails at `place` when the file does not hold the page; looks at the file again before, as it
    /// may have grown.
    void requirePage(quint32 page, const Place &place);

    /// Reads pages `first` to `first + count - 1` in one go. `out` has room for them.
    void readBlock(quint32 first, quint32 count, char *out, const Place &place);

    /// One page through a small cache. The view holds until the next call.
    QByteArrayView page(quint32 page, const Place &place);

    /// The same, and fails when the page is of another type.
    QByteArrayView page(quint32 page, PageType type, const Place &place);

    /// Drops what is cached, so that the file is read afresh.
    void forget();

    /// See AccessFile::checkSize.
    void checkSize();

private:
    struct CachedPage
    {
        qint64 page = -1;
        QByteArray bytes;
    };

    void readHeader();
    void decode(quint32 page, char *bytes) const;

    QString m_path;
    QFile m_file;
    const Format *m_format = nullptr;
    qint64 m_pages = 0;
    quint32 m_key = 0; ///< 0: pages are not encoded
    int m_codePage = 1252;
    std::array<CachedPage, 8> m_cache;
    size_t m_oldest = 0;
};

} // namespace mdb
