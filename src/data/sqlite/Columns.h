#pragma once

#include "data/access/AccessFile.h"

#include <sqlite3.h>

/// How the columns of an Access table look to SQL: integers (True is -1), numbers, date-times as
/// day numbers, texts, bytes.
enum class ColumnKind { Integer, Number, Date, Text, Bytes };

ColumnKind kindOf(const mdb::Column &column);

/// The collation by which texts are compared and ordered: without regard to case, of whatever
/// letters.
inline constexpr char accessCollation[] = "ACCESS";

/// Makes that collation known to a database.
void addAccessCollation(sqlite3 *database);

/// The "CREATE TABLE" text of a table's columns.
QString declarationOf(const mdb::Table &table);

/// An integer column's value of the cursor's row, a Boolean as 0 or -1.
qint64 integerOf(const mdb::RowCursor &row, const mdb::Table &table, int column);

/// Hands the value of the cursor's row to SQLite.
void resultOf(sqlite3_context *context, const mdb::RowCursor &row, const mdb::Table &table,
              int column);

void resultText(sqlite3_context *context, const QString &text);
void resultBytes(sqlite3_context *context, const QByteArray &bytes);
