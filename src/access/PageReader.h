#pragma once

#include "access/Bytes.h"
#include "access/Format.h"

#include <QFile>

#include <array>
#include <vector>

namespace mdb {

/// The pages of one file, read in blocks and decoded if the file uses Jet's simple page encoding.
/// One thread.
class PageReader
{
public:
    /// Opens a file and reads its header. Throws Error: FileNotFound, PermissionDenied (also for
    /// an encrypted file), UnrecognizedFormat, InvalidFileFormat.
    explicit PageReader(const QString &path);

    const QString &path() const { return m_path; }
    const Format &format() const { return *m_format; }
    int codePage() const { return m_codePage; } ///< of the texts of a Jet 3 file

    /// The file's current size in bytes.
    qint64 fileSize() const { return m_file.size(); }
    /// The whole pages in it.
    qint64 pageCount() const { return fileSize() / m_format->pageSize; }

    /// Throws when the file does not have the page, even though it may have grown by now.
    void requirePage(quint32 page, const Location &where);

    /// Reads `count` pages from `first` at once. `out` has room for them.
    void readBlock(quint32 first, quint32 count, char *out, const Location &where);

    /// One page through a small cache. The view is valid until the next call.
    QByteArrayView page(quint32 page, const Location &where);

    /// The same; throws when the page is of another type.
    QByteArrayView page(quint32 page, PageType type, const Location &where);

    /// Empties the cache, so that pages are read from the file again.
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
    qint64 m_pages = 0; ///< that the file had when it was last looked at
    quint32 m_key = 0;  ///< 0: pages are not encoded
    int m_codePage = 0;
    std::array<CachedPage, 8> m_cache;
    size_t m_oldest = 0;
};

} // namespace mdb
