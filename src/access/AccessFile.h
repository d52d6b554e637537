#pragma once

#include <QStringList>
#include <QtEndian>

#include <cstdint>
#include <memory>
#include <vector>

/// Read-only access to Jet 3, Jet 4 and ACE files (.mdb, .accdb). The file is opened for reading
/// and shared; nothing is written, no lock file is made, no page is mapped: pages are read in
/// blocks, so that a file that shrinks or changes while it is read causes an error, not a crash.
///
/// Every count, offset and page number in the file is checked before it is used. A file that breaks
/// the format throws Error(InvalidFileFormat) that names the file, the table and the page. The one
/// thing that files get wrong in practice is a table's row count: where fewer rows are found, those
/// are read and AccessFile::warnings reports it. Objects of one file belong to one thread.
namespace mdb {

enum class ColumnType : std::uint8_t {
    Boolean = 1,
    Byte = 2,
    Integer = 3, ///< 16 bits
    Long = 4,    ///< 32 bits
    Currency = 5,
    Single = 6,
    Double = 7,
    DateTime = 8,
    Binary = 9,
    Text = 10,
    Ole = 11,
    Memo = 12,
    Guid = 15,
    Numeric = 16,
    Complex = 18,
    BigInt = 19,
    DateTimeExtended = 20,
};

struct Column
{
    QString name;
    ColumnType type = ColumnType::Long; ///< of the values; of a calculated column: of its results
    int scale = 0;                      ///< decimals of a Numeric
    // Where a row holds the value.
    bool isFixed = false;
    int number = 0;            ///< of the bit in the null mask
    int fixedOffset = 0;       ///< from the start of the fixed values
    int variableIndex = 0;     ///< in the table of variable values
    int size = 0;              ///< bytes; the maximum for types of variable size
    bool isCalculated = false; ///< the value is wrapped in an envelope; never a fixed column
};

class RowCursor;

/// A table's definition.
struct Table
{
    QString name;
    int definitionPage = 0;
    qint64 statedRows = 0;       ///< the count in the definition: a cross-check, not the truth
    std::vector<Column> columns; ///< in the order in which Access shows them

    // For checking rows.
    int maxColumns = 0;      ///< that a row can have, deleted ones included
    int variableColumns = 0; ///< how many of those are variable

    /// Index of a column, without regard to case; -1 when there is none.
    int column(const QString &columnName) const;
};

class AccessFile
{
public:
    /// Opens a file and reads its catalog. Throws Error: FileNotFound, PermissionDenied,
    /// UnrecognizedFormat, InvalidFileFormat.
    explicit AccessFile(const QString &path);
    ~AccessFile();
    AccessFile(const AccessFile &) = delete;
    AccessFile &operator=(const AccessFile &) = delete;

    QString path() const;

    /// Names of the user tables, linked ones included, in catalog order.
    std::vector<QString> tableNames() const;

    /// Where the rows of a linked table are: "'TABLE' in 'DATABASE'", without passwords. Empty for
    /// a table of this file. Throws Error(ItemNotFound).
    QString linkTarget(const QString &name) const;

    /// A table by its name, without regard to case. Throws Error(ItemNotFound); also for a linked
    /// table, whose target it names.
    const Table &table(const QString &name);

    /// A message that names file, table and page for each table in which a cursor found fewer rows
    /// than the definition states.
    QStringList warnings() const;

    /// Checks that no page is missing: throws Error(InvalidFileFormat) when the file is shorter
    /// than when it was opened or not a whole number of pages long.
    void checkSize() const;

private:
    friend class RowCursor;
    class Private;
    std::unique_ptr<Private> d;
};

/// Walks the live rows of a table in storage order. Fixed-size values are decoded straight from the
/// page; no allocation per row. The table and the file have to outlive the cursor.
///
/// Throws Error(InvalidFileFormat) when a page, a row or a value is broken, and when a value takes
/// more memory than there is. At the end of the table, missing rows are added to
/// AccessFile::warnings.
class RowCursor
{
public:
    RowCursor(AccessFile &file, const Table &table);
    ~RowCursor();
    RowCursor(RowCursor &&) noexcept;

    /// Moves to the next row, initially to the first one; false after the last.
    bool next();

    // Values of the current row by column index. NULL reads as 0 or empty.
    bool isNull(int column) const;    ///< a Boolean is never NULL, unless calculated
    qint64 integer(int column) const; ///< Boolean (0, 1) and the integer types; others rounded
    double number(int column) const;  ///< any numeric type; DateTime as days since 1899-12-30
    qint64 instant(int column) const; ///< DateTime as milliseconds since 1970-01-01, rounded
    QString text(int column) const;   ///< Text and Memo; other types in the form of `access-export`
    QByteArray bytes(int column) const; ///< as stored; Ole and Memo as a whole
    /// Appends `text` as UTF-8, for exports: without a QString where the type needs none.
    void appendText(int column, QByteArray &out) const;

    /// Throws Error(InvalidFileFormat) that names the page of the current row.
    [[noreturn]] void fail(const QString &what) const;

private:
    class Private;

    const Column &at(int column) const { return m_columns[column]; }
    /// The null mask's bit: for a Boolean its value, for other types whether there is a value.
    bool hasBit(int number) const
    {
        return number < m_rowColumns &&
               (static_cast<unsigned char>(m_nullMask[number >> 3]) >> (number & 7) & 1);
    }
    bool hasNoResult(const Column &column) const;
    qint64 otherInteger(const Column &column) const;
    double otherNumber(const Column &column) const;

    // The current row, for the values that loops read.
    const Column *m_columns = nullptr;
    const char *m_fixed = nullptr; ///< the fixed values
    const char *m_nullMask = nullptr;
    int m_rowColumns = 0;
    std::unique_ptr<Private> d;
};

inline bool RowCursor::isNull(int column) const
{
    const Column &c = at(column);
    if (!hasBit(c.number))
        return c.type != ColumnType::Boolean || c.isCalculated;
    return c.isCalculated && hasNoResult(c);
}

inline qint64 RowCursor::integer(int column) const
{
    const Column &c = at(column);
    if (!c.isFixed || !hasBit(c.number))
        return otherInteger(c);
    if (c.type == ColumnType::Long)
        return qFromLittleEndian<qint32>(m_fixed + c.fixedOffset);
    if (c.type == ColumnType::Integer)
        return qFromLittleEndian<qint16>(m_fixed + c.fixedOffset);
    return otherInteger(c);
}

inline double RowCursor::number(int column) const
{
    const Column &c = at(column);
    if (!c.isFixed || c.type != ColumnType::Double || !hasBit(c.number))
        return otherNumber(c);
    return qFromLittleEndian<double>(m_fixed + c.fixedOffset);
}

} // namespace mdb
