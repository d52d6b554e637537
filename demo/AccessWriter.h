#pragma once

#include "demo/AccessFormat.h"

#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <deque>
#include <memory>
#include <optional>

/// Writes Access files of the Jet 4 format (.mdb), without indexes: demonstration databases, and
/// the unusual ones that tests need.
namespace demo {

enum class FieldType : std::uint8_t {
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
};

struct Field
{
    QString name;
    FieldType type = FieldType::Long;
    int size = 255;       ///< max characters of a Text, max bytes of a Binary
    int precision = 18;   ///< of a Numeric
    int scale = 0;        ///< of a Numeric
    bool dropped = false; ///< rows carry it, but the definition no longer lists it
    /// Of a calculated column, whose values are not of `type` then.
    std::optional<FieldType> resultType = {};
};

struct TableOptions
{
    /// The fields' indexes in the order of the definition; empty: as stored.
    std::vector<int> definitionOrder = {};
    int maxRowsOnPage = demo::maxRowsOnPage;
};

/// One table of a file under construction. The values of a row are set one by one, those that are
/// not set are NULL (a Boolean: false), then the row is appended; fixed-size fields need no
/// allocation. Fields are numbered from 0 in storage order. A value of the wrong kind throws
/// Error(TypeMismatch), one that does not fit Error(Overflow).
class TableWriter
{
public:
    void setBoolean(int field, bool value);
    void setInteger(int field, qint64 value); ///< Byte, Integer, Long
    void setNumber(int field, double value);  ///< Single, Double, DateTime (days since 1899-12-30)
    void setCurrency(int field, qint64 tenThousandths);
    void setNumeric(int field, const QString &decimal);
    void setGuid(int field, const QUuid &value);
    void setText(int field, QStringView value);     ///< Text, Memo
    void setBytes(int field, QByteArrayView value); ///< Binary, Ole
    /// A calculated column's value as stored; empty for one that is NULL.
    void setResult(int field, QByteArrayView value);

    RowAddress append();

    // Changes that Access makes to rows.

    /// Marks a row as deleted; its bytes stay.
    void deleteRow(RowAddress address);
    /// Moves a row to another page (a new one, if necessary) and replaces it by a pointer, as
    /// happens to a row that outgrows its page.
    void moveRow(RowAddress address);
    /// Rows appended from now on have only the first `count` fields, like rows that are older than
    /// the other fields.
    void setRowFields(int count);
    /// The row count that the definition states instead of the true one.
    void setStatedRows(qint64 count) { m_statedRows = count; }

    const QString &name() const { return m_name; }
    int definitionPage() const { return m_definitionPages.front(); }
    const std::vector<int> &dataPages() const { return m_rows.pages(); }

private:
    friend class AccessWriter;
    struct Column
    {
        Field field;
        bool isFixed = true;
        int fixedOffset = 0;
        int variableIndex = 0;
        int size = 0;                    ///< as the definition states it
        std::vector<std::uint8_t> value; ///< of the row being built, if it is variable
        std::unique_ptr<RowPages> longValues;
        RowAddress longValueMap; ///< its usage maps: all pages, and in the next row
                                 ///< those with room
    };

    TableWriter(PageFile &file, QString name, bool isSystem, const std::vector<Field> &fields,
                const TableOptions &options);

    Column &column(int field, std::initializer_list<FieldType> types);
    void markSet(int field);
    void setFixed(int field, const void *bytes, std::size_t size);
    void storeLongValue(Column &column);
    QByteArray definition(RowAddress ownedMap, RowAddress roomyMap) const;
    QByteArray properties() const;
    void finish(UsageMaps &maps);

    PageFile &m_file;
    QString m_name;
    bool m_isSystem;
    std::vector<Column> m_columns;
    std::vector<int> m_order;
    std::vector<int> m_definitionPages;
    RowPages m_rows;
    qint64 m_rowCount = 0;
    qint64 m_statedRows = -1;

    // The row being built.
    int m_fixedBytes = 0; ///< of the whole table
    int m_variables = 0;  ///< of the whole table
    int m_rowFields = 0;  ///< columns of each row; the next two follow from it
    int m_rowFixedBytes = 0;
    int m_rowVariables = 0;
    Page m_fixed{};
    std::array<std::uint8_t, 32> m_notNull{};
    Page m_row{};
};

/// A database. Tables are valid until `finish`, and may be filled in turn.
class AccessWriter
{
public:
    /// `createdInstant`: milliseconds since 1970, the date in header and catalog.
    AccessWriter(const QString &path, qint64 createdInstant);

    TableWriter &addTable(const QString &name, const std::vector<Field> &fields,
                          const TableOptions &options = {});

    /// Adds a table whose rows are in another file, or where `connect` says.
    void addLink(const QString &name, const QString &database, const QString &connect,
                 const QString &foreignName);

    /// Completes the file and renames it to its path. Nothing else may be called afterwards.
    void finish();

private:
    TableWriter &addTable(const QString &name, bool isSystem, const std::vector<Field> &fields,
                          const TableOptions &options);
    void addCatalogRow(qint32 id, qint32 parent, const QString &name, int type, quint32 flags);
    void writeCatalog();

    struct Link
    {
        QString name;
        QString database;
        QString connect;
        QString foreignName;
    };

    qint64 m_created;
    std::vector<Link> m_links;
    PageFile m_file;
    std::deque<std::unique_ptr<TableWriter>> m_tables; ///< the system tables first
};

} // namespace demo
