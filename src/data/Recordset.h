#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <unordered_map>
#include <vector>

/// The rows of one query, read once from first to last. Columns are found once by name, values are
/// read by column number without allocation (texts excepted). Used on one thread only.
///
/// Dates are instants: milliseconds since 1970-01-01 UTC of the date-time as stored, rounded to
/// the millisecond. NULL reads as 0, an empty text or an invalid QVariant; isNull tells it apart.
class Recordset
{
public:
    virtual ~Recordset() = default;

    virtual QStringList columns() const = 0;

    /// The number of a column, without regard to case. Throws Error(ItemNotFound) naming it.
    int column(const QString &name) const;

    /// Moves to the next row, at first to the first one; false behind the last. Throws Error when
    /// the database fails: never fewer rows than there are.
    virtual bool next() = 0;

    // Values of the row that next() moved to.
    virtual bool isNull(int column) const = 0;
    virtual qint64 integer(int column) const = 0; ///< fractions are rounded, halves to even
    virtual double number(int column) const = 0;
    virtual qint64 instant(int column) const = 0;
    virtual QString text(int column) const = 0;
    virtual QVariant value(int column) const = 0;
};

/// Conversions between the kinds of value that a column can hold (integer, number, text, nothing),
/// as all recordsets make them. Throws Error(Overflow) for a number that no integer holds.
qint64 toInteger(double value);
qint64 toInteger(const QVariant &value);
double toNumber(const QVariant &value);
QString toText(const QVariant &value);

/// A text in apostrophes, as criteria and SQL take it.
QString quoted(QString text);

/// A recordset fetched whole, with a filter, a count and a way back to the first row. Copies share
/// the rows; each has its own filter and place.
class StaticRecordset
{
public:
    /// Reads all rows of `source`.
    explicit StaticRecordset(Recordset &source);

    int column(const QString &name) const;

    /// Rows that pass the filter.
    qsizetype recordCount() const;

    /// Keeps the rows whose columns equal the given values: "[MUID]='A1'", "[iScale]=21",
    /// "[IDent]='3' and [DataIDent]='7'". Texts are compared without regard to case, a number in
    /// apostrophes matches a numeric column. The empty text removes the filter. Moves to the first
    /// row. Throws Error on any other form. A filter on one column costs a look-up, not a walk.
    void setFilter(const QString &criterion);

    void moveFirst();
    void moveNext();
    bool eof() const;

    // Values of the present row, converted as those of a Recordset; Error(NoCurrentRecord) when
    // eof().
    bool isNull(int column) const;
    qint64 integer(int column) const;
    double number(int column) const;
    QString text(int column) const;

private:
    struct Condition
    {
        int column = 0;
        QString value;
    };
    using Index = std::unordered_multimap<QString, size_t>;
    struct Table
    {
        QStringList columns;
        std::vector<std::vector<QVariant>> rows;
        std::unordered_map<int, Index> indexes; ///< by column, made on first use
    };

    std::vector<Condition> parsed(const QString &criterion) const;
    const Index &index(int column);
    std::vector<size_t> candidates(const Condition &condition);
    const QVariant &cell(int column) const;

    std::shared_ptr<Table> m_table;
    std::vector<size_t> m_passing; ///< numbers of the rows that pass the filter, ascending
    size_t m_at = 0;               ///< position in m_passing
};
