#include "database/Queries.h"

#include "base/DayNumbers.h"
#include "base/Numbers.h"
#include "base/TimeZone.h"

#include <algorithm>

// The texts are sent exactly as written here, with all blanks and line breaks: users
// compare them with the query logs of their servers.

namespace {

constexpr QLatin1String crlf("\r\n");

/// A bound in the Access dialect: the day number in UTC.
QString dayText(const QDateTime &wall)
{
    return plainNumber(dayNumber(LocalToUTC(wall).toMSecsSinceEpoch()));
}

/// A bound in SQL Server's dialect: ISO text in UTC.
QString isoText(const QDateTime &wall)
{
    return LocalToUTC(wall).toString(u"yyyy-MM-dd'T'HH:mm:ss") + QLatin1String(".000");
}

bool isMidnight(const QDateTime &wall)
{
    const QTime time = wall.time();
    return time.hour() == 0 && time.minute() == 0 && time.second() == 0;
}

QString periodCondition(SqlDialect dialect, const QDateTime &start, const QDateTime &end)
{
    if (dialect == SqlDialect::SqlServer)
        return QLatin1String("  [DataValues].[iDate] > CAST ('") + isoText(start) +
               QLatin1String("' as DateTime)") + crlf +
               QLatin1String("  AND [DataValues].[iDate] <= CAST('") + isoText(end) +
               QLatin1String("'  as DateTime)") + crlf;
    return QLatin1String("  [DataValues].[iDate] >= CDATE(") + dayText(start) + QLatin1Char(')') +
           crlf + QLatin1String("  AND [DataValues].[iDate] <= CDATE(") + dayText(end) +
           QLatin1Char(')') + crlf;
}

QString deviceCondition(QString muidList)
{
    if (muidList.isEmpty())
        return QStringLiteral("  AND DataFields.iScale=21 ");
    if (!muidList.contains(u'\''))
        muidList = u'\'' + muidList.replace(u',', QLatin1String("','")) + u'\'';
    const bool isList = muidList.contains(u',');
    return (isList ? QLatin1String(" AND Devices.MUID in(")
                   : QLatin1String(" AND Devices.MUID =")) +
           muidList + (isList ? QLatin1String(") ") : QLatin1String(" ")) +
           QLatin1String(" AND DataFields.iScale=21 ");
}

QString quoted(QString text)
{
    return u'\'' + text.replace(u'\'', QLatin1String("''")) + u'\'';
}

} // namespace

QString GetDataSelectionSQL()
{
    return QStringLiteral("SELECT [Devices].[MUID], "
                          "[Devices].[IDent], "
                          "[Devices].[MachName], "
                          "[Devices].[MachDesc], "
                          "[DataFields].[DataIDent], "
                          "[DataFields].[DataName], "
                          "[DataFields].[DataDesc],  "
                          "[DataFields].[iScale],  "
                          "[Scales].[ScaleName],  "
                          "[Scales].[ScaleAbbr],  "
                          "[Devices].[MachExclude],  "
                          "[DataFields].[IsGlobal] "
                          "FROM [Scales] "
                          "     INNER JOIN ([Devices] "
                          "INNER JOIN [DataFields] "
                          "ON [Devices].[IDent] = [DataFields].[IDent]) "
                          "ON [Scales].[iScale] = [DataFields].[iScale]");
}

bool isPlainKey(const QString &key)
{
    return std::all_of(key.begin(), key.end(),
                       [](QChar character) { return character.isPrint() && character != u'\\'; });
}

QString stateSummaryList(const QString &muid)
{
    if (!isPlainKey(muid))
        return QString();
    // A list with an apostrophe counts as quoted already.
    return muid.contains(u'\'') || muid.contains(u',') ? quoted(muid) : muid;
}

QString GetStateSummarySQL(SqlDialect dialect, const QDateTime &start, const QDateTime &end,
                           QString muidList)
{
    const QDateTime from = summaryStart(start);
    return (dialect == SqlDialect::SqlServer ? QLatin1String("SELECT DISTINCT ")
                                             : QLatin1String("SELECT DISTINCTROW")) +
           QLatin1String("   Devices.IDent AS [IDent], "
                         "   DataFields.DataIDent AS [DataIDent], "
                         "   Sum(DataValues.iState) AS [sumiState], "
                         "   Count(1) AS [QCount] \r\n"
                         " FROM "
                         "   Devices INNER JOIN "
                         "   (DataFields "
                         "      INNER JOIN "
                         "      DataValues ON DataFields.DataIDent = DataValues.DataIDent) "
                         "   ON Devices.IDent = DataFields.IDent \r\n"
                         " WHERE \r\n") +
           periodCondition(dialect, from, end) + deviceCondition(std::move(muidList)) +
           QLatin1String("  AND DataFields.IsGlobal<>0 "
                         " GROUP BY "
                         "   Devices.IDent, "
                         "   DataFields.DataIDent\r\n");
}

QString GetSampleCountSQL(SqlDialect dialect)
{
    return dialect == SqlDialect::SqlServer
               ? QStringLiteral(" SELECT rowcnt as TCOUNT  FROM sysindexes  WHERE "
                                "object_name(id) = 'DataValues'  AND "
                                "name='DataValues_PK'")
               : QStringLiteral("Select Count(1) as TCOUNT from DataValues");
}

QString GetNewestSampleSQL()
{
    return QStringLiteral("Select Max(iDate) as TNEWEST from DataValues");
}

QString GetDataValuesSQL(SqlDialect dialect, const QString &dataIdent, const QDateTime &start,
                         const QDateTime &end)
{
    if (dialect == SqlDialect::SqlServer)
        return QLatin1String("SELECT * from DataValues where "
                             " DataValues.DataIDent = ") +
               dataIdent + QLatin1String("  AND [DataValues].[iDate] >= CAST('") + isoText(start) +
               QLatin1String("' as  DateTime)") + crlf +
               QLatin1String("  AND [DataValues].[iDate] <= CAST('") + isoText(end) +
               QLatin1String("' as DateTime)") + crlf + crlf + QLatin1String(" ORDER BY IDate ");
    return QLatin1String(" SELECT * from DataValues Where "
                         " [DataValues].[DataIDent] = ") +
           dataIdent + QLatin1String("     AND [DataValues].[iDate] >= CDATE(") + dayText(start) +
           QLatin1String(" )") + crlf + QLatin1String("     AND [DataValues].[iDate] <= CDATE(") +
           dayText(end) + QLatin1String(" )") + crlf + QLatin1String(" ORDER BY iDate;");
}

QString GetLastValueBeforeSQL(SqlDialect dialect, const QString &dataIdent, const QDateTime &end)
{
    const QString bound =
        dialect == SqlDialect::SqlServer
            ? QLatin1String("CAST('") + isoText(end) + QLatin1String("' as DateTime)")
            : QLatin1String("CDATE(") + dayText(end) + QLatin1Char(')');
    const QString item = QLatin1String("[DataValues].[DataIDent] = ") + dataIdent;
    return QLatin1String("SELECT * from DataValues where ") + item +
           QLatin1String(" AND [DataValues].[iDate] = (SELECT Max([DataValues].[iDate]) "
                         "from DataValues where ") +
           item + QLatin1String(" AND [DataValues].[iDate] < ") + bound + u')';
}

QDateTime summaryStart(const QDateTime &start)
{
    return isMidnight(start) ? start.addSecs(1) : start;
}
