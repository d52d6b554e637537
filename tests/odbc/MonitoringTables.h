#pragma once

#include "demo/MdbTools.h"

#include <QFile>

/// The statements that put the tables of a monitoring database on a server, as an administrator of
/// SQL Server would see them. The rows are read by mdbtools and pass through files in `folder`.
inline QStringList monitoringTables(const QString &accessFile, const QString &folder)
{
    const auto load = [&](const QString &table, const QString &columns) {
        const QString path = folder + u'/' + table;
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            throw std::runtime_error("cannot write " + path.toStdString());
        const QList<QStringList> rows = mdbRows(accessFile, table);
        for (QStringList row : rows) {
            for (QString &cell : row)
                cell = cell == u"NULL" ? QStringLiteral("\\N")
                                       : cell.replace(QLatin1String("\\"), QLatin1String("\\\\"));
            file.write(row.join(u'\t').toUtf8() + '\n');
        }
        return QStringLiteral("LOAD DATA INFILE '%1' INTO TABLE %2 CHARACTER SET utf8mb4 %3;")
            .arg(path, table, columns);
    };
    return {
        QStringLiteral("CREATE TABLE Scales (iScale INT, ScaleName VARCHAR(50), "
                       "ScaleAbbr VARCHAR(20), ScaleFactor DOUBLE);"),
        QStringLiteral("CREATE TABLE Devices (IDent INT PRIMARY KEY, MUID VARCHAR(50), "
                       "MachName VARCHAR(100), MachAddress VARCHAR(100), MachDesc VARCHAR(255), "
                       "MachGroup VARCHAR(100), MachExclude BIT(1), MachAdded DATETIME, "
                       "MachNotes LONGTEXT);"),
        QStringLiteral("CREATE TABLE DataFields (DataIDent INT PRIMARY KEY, IDent INT, "
                       "DataName VARCHAR(100), DataDesc VARCHAR(255), iScale INT, "
                       "IsGlobal SMALLINT, `Interval` INT, DataLimit DOUBLE);"),
        QStringLiteral("CREATE TABLE DataValues (iSequence INT, DataIDent INT, iDate DATETIME(3), "
                       "iState SMALLINT, iValue DOUBLE, iMessage VARCHAR(80), "
                       "KEY DataValues_Time (DataIDent, iDate));"),
        load(QStringLiteral("Scales"), QString()),
        load(QStringLiteral("Devices"),
             QStringLiteral("(IDent, MUID, MachName, MachAddress, MachDesc, MachGroup, @excluded, "
                            "MachAdded, MachNotes) SET MachExclude = @excluded + 0")),
        load(QStringLiteral("DataFields"), QString()),
        load(QStringLiteral("DataValues"), QString()),
        // What SQL Server has of its own.
        QStringLiteral("CREATE TABLE sysindexes (id INT, name VARCHAR(100), rowcnt BIGINT);"),
        QStringLiteral("INSERT INTO sysindexes SELECT 1, 'DataValues_PK', COUNT(*) FROM "
                       "DataValues;"),
        QStringLiteral("CREATE DEFINER='root'@'localhost' FUNCTION object_name(id INT) RETURNS "
                       "VARCHAR(100) DETERMINISTIC "
                       "RETURN 'DataValues';"),
        // What a data source of the Access dialect has.
        QStringLiteral("CREATE DEFINER='root'@'localhost' FUNCTION CDATE(day DOUBLE) RETURNS "
                       "DATETIME(3) DETERMINISTIC RETURN "
                       "TIMESTAMPADD(MICROSECOND, ROUND(day * 86400000) * 1000, '1899-12-30');"),
    };
}
