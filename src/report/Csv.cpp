#include "report/Csv.h"

#include "base/Numbers.h"

#include <cmath>

CsvText &CsvText::text(const QString &value)
{
    const bool isFormula = !value.isEmpty() && QStringView(u"=+-@\t\r").contains(value.front());
    return quoted(isFormula ? u'\'' + value : value);
}

CsvText &CsvText::quotedNumber(const QString &number)
{
    return quoted(number);
}

CsvText &CsvText::quoted(const QString &value)
{
    separate();
    m_bytes += '"';
    m_bytes += value.toUtf8().replace('"', "\"\"");
    m_bytes += '"';
    return *this;
}

CsvText &CsvText::number(double value)
{
    separate();
    m_bytes += plainNumber(value).toLatin1();
    return *this;
}

CsvText &CsvText::number(qint64 value)
{
    separate();
    m_bytes += QByteArray::number(value);
    return *this;
}

CsvText &CsvText::empty()
{
    separate();
    return *this;
}

CsvText &CsvText::fixed(double value)
{
    return number(std::nearbyint(value * 10'000) / 10'000);
}

CsvText &CsvText::fields(const CsvText &ready)
{
    separate();
    m_bytes += ready.m_bytes;
    return *this;
}

void CsvText::endRecord()
{
    m_bytes += "\r\n";
    m_inRecord = false;
}

void CsvText::separate()
{
    if (m_inRecord)
        m_bytes += ',';
    m_inRecord = true;
}
