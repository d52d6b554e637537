#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

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
