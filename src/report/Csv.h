#pragma once

#include <QByteArray>
#include <QString>

/// The text of a CSV file, record by record: texts in double quotes (a quote inside is doubled),
/// numbers without, a point as the decimal separator whatever the locale, commas between the
/// fields, CR LF after each record, UTF-8. A text that a spreadsheet would take for a formula is
/// preceded by an apostrophe.
class CsvText
{
public:
    CsvText &text(const QString &value);
    /// A number in quotes like a text; empty when there is none.
    CsvText &quotedNumber(const QString &number);
    CsvText &number(double value);
    CsvText &number(qint64 value);
    CsvText &empty(); ///< a field without a value
    /// A fixed-point number with at most four decimals, halves rounded to even.
    CsvText &fixed(double value);
    /// All fields of an unfinished record, written once for many records.
    CsvText &fields(const CsvText &ready);
    void endRecord();

    const QByteArray &bytes() const { return m_bytes; }

private:
    CsvText &quoted(const QString &value);
    void separate();

    QByteArray m_bytes;
    bool m_inRecord = false;
};
