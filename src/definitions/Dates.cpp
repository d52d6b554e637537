#include "definitions/Dates.h"

#include "base/Clock.h"
#include "base/TimeZone.h"
#include "base/Xml.h"

#include <QUuid>

namespace {

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// In `pattern` "#" matches a digit, "?" any character, and others themselves.
bool matches(QStringView text, QStringView pattern)
{
    if (text.size() != pattern.size())
        return false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar wanted = pattern[i];
        const bool fits = wanted == u'?' || (wanted == u'#' ? isDigit(text[i]) : text[i] == wanted);
        if (!fits)
            return false;
    }
    return true;
}

} // namespace

QDateTime zeroDate()
{
    return wallDateTime(QDate(1899, 12, 30));
}

QDateTime wallDateTime(const QDate &date, const QTime &time)
{
    return QDateTime(date, time, Qt::UTC);
}

DateRange wholeDays(const QDate &first, const QDate &last)
{
    return {wallDateTime(first), wallDateTime(last, QTime(23, 59, 59))};
}

QDate dateSerial(int year, int month, int day)
{
    const qint64 months = qint64(year) * 12 + month - 1;
    const auto inYear = static_cast<int>((months % 12 + 12) % 12);
    const QDate first(static_cast<int>(qBound(qint64(100), (months - inYear) / 12, qint64(9999))),
                      inYear + 1, 1);
    return first.addDays(day - 1);
}

QString DateToXML(const QDateTime &date)
{
    const QDateTime utc = LocalToUTC(date.isValid() ? date : zeroDate());
    return utc.toString(u"yyyy-MM-ddTHH:mm:ss") + QLatin1String("-00:00");
}

bool isXmlDate(const QString &text)
{
    return matches(text, u"####-##-##T##?##?##-00?00");
}

QDateTime XMLToDate(const QString &text)
{
    if (!isXmlDate(text))
        return LocalToUTC(now());
    const auto number = [&text](qsizetype from, qsizetype digits) {
        return QStringView(text).mid(from, digits).toInt();
    };
    const QDate date = dateSerial(number(0, 4), number(5, 2), number(8, 2));
    const qint64 seconds = number(11, 2) * 3600 + number(14, 2) * 60 + number(17, 2);
    return UTCToLocal(wallDateTime(date).addSecs(seconds));
}

QDateTime dateAttr(const pugi::xml_node &element, const char *name)
{
    return XMLToDate(GetAttr(element, name, DateToXML(now())));
}

QString NewID()
{
    return QUuid::createUuid().toString(QUuid::WithBraces).toUpper();
}

QString folderSafe(QString identifier)
{
    return identifier.removeIf(
        [](QChar character) { return QStringView(u"{}.-,").contains(character); });
}
