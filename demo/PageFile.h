#pragma once

#include <QFile>
#include <QString>

#include <array>
#include <cstdint>

namespace demo {

inline constexpr int pageSize = 4096;
using Page = std::array<std::uint8_t, pageSize>;

/// A file of 4096-byte pages under construction. Pages are numbered in the order of allocation and
/// may be written, and written again, in any order. The bytes go to a temporary file, which
/// `commit` renames to the target; without `commit` it is removed.
///
/// Written page by page and not through saveFile(), as a database of ten million samples does not
/// fit into memory. It is not synced either, as a demonstration file can be made again. All
/// functions throw Error that names the file.
class PageFile
{
public:
    explicit PageFile(const QString &path);
    ~PageFile();
    PageFile(const PageFile &) = delete;
    PageFile &operator=(const PageFile &) = delete;

    int allocate() { return m_pages++; }
    int pageCount() const { return m_pages; }

    void write(int page, const Page &bytes);
    /// Reads a page that has been written.
    void read(int page, Page &bytes);

    void commit();

private:
    [[noreturn]] void fail(const QString &what) const;

    QString m_path;
    QFile m_file;
    int m_pages = 0;
};

} // namespace demo
