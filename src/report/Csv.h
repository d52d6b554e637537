#pragma once

#include <QByteArray>
#include <QString>

/// The text of a CSV file, record by record: texts in double quotes (a quote inside is doubled),
/// numbers without, a point as the decimal separator whatever the locale, commas between the
/// fields, CR LF behind each record, UTF-8.
class CsvText
{
public:
    CsvText &text(const QString &value);
    CsvText &number(double value);
    /// A fixed-point number with at most four decimals, halves rounded to even.
    CsvText &fixed(double value);
    /// All fields of an unfinished record, written once for many records.
    CsvText &fields(const CsvText &ready);
    void endRecord();

    const QByteArray &bytes() const { return m_bytes; }

private:
    void separate();

    QByteArray m_bytes;
    bool m_inRecord = false;
};
