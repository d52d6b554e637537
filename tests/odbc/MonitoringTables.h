#pragma once

#include "base/Files.h"
#include "support/MdbTools.h"

/// The statements that put the tables of a monitoring database on a server, as an administrator of
/// SQL Server would see them. The rows are read by mdbtools and pass through files in `folder`.
inline QStringList monitoringTables(const QString &accessFile, const QString &folder)
{
    const auto load = [&](const QString &table, const QString &columns = QString()) {
        const QString path = folder + u'/' + table;
        QString rows;
        for (QStringList row : mdbRows(accessFile, table)) {
            for (QString &cell : row)
                cell = cell == u"NULL" ? "\\N" : cell.replace("\\", "\\\\");
            rows += row.join(u'\t') + u'\n';
        }
        saveFile(path, rows.toUtf8());
        return QString("LOAD DATA INFILE '%1' INTO TABLE %2 CHARACTER SET utf8mb4 %3;")
            .arg(path, table, columns);
    };
    return {
        "CREATE TABLE Scales (iScale INT, ScaleName VARCHAR(50), ScaleAbbr VARCHAR(20), "
        "ScaleFactor DOUBLE);",
        "CREATE TABLE Devices (IDent INT PRIMARY KEY, MUID VARCHAR(50), MachName VARCHAR(100), "
        "MachAddress VARCHAR(100), MachDesc VARCHAR(255), MachGroup VARCHAR(100), "
        "MachExclude BIT(1), MachAdded DATETIME, MachNotes LONGTEXT);",
        "CREATE TABLE DataFields (DataIDent INT PRIMARY KEY, IDent INT, DataName VARCHAR(100), "
        "DataDesc VARCHAR(255), iScale INT, IsGlobal SMALLINT, `Interval` INT, DataLimit DOUBLE);",
        "CREATE TABLE DataValues (iSequence INT, DataIDent INT, iDate DATETIME(3), "
        "iState SMALLINT, iValue DOUBLE, iMessage VARCHAR(80), "
        "KEY DataValues_Time (DataIDent, iDate));",
        load("Scales"),
        load("Devices", "(IDent, MUID, MachName, MachAddress, MachDesc, MachGroup, @excluded, "
                        "MachAdded, MachNotes) SET MachExclude = @excluded + 0"),
        load("DataFields"),
        load("DataValues"),
        // What SQL Server has of its own.
        "CREATE TABLE sysindexes (id INT, name VARCHAR(100), rowcnt BIGINT);",
        "INSERT INTO sysindexes SELECT 1, 'DataValues_PK', COUNT(*) FROM DataValues;",
        "CREATE DEFINER='root'@'localhost' FUNCTION object_name(id INT) RETURNS VARCHAR(100) "
        "DETERMINISTIC RETURN 'DataValues';",
        // What a data source of the Access dialect has.
        "CREATE DEFINER='root'@'localhost' FUNCTION CDATE(day DOUBLE) RETURNS DATETIME(3) "
        "DETERMINISTIC RETURN "
        "TIMESTAMPADD(MICROSECOND, ROUND(day * 86400000) * 1000, '1899-12-30');",
    };
}
