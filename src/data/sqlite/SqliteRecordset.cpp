#include "data/sqlite/SqliteRecordset.h"

#include "core/Error.h"
#include "core/Numbers.h"
#include "data/DayNumbers.h"

namespace {

QString textAt(sqlite3_stmt *statement, int column)
{
    const auto *text = static_cast<const char16_t *>(sqlite3_column_text16(statement, column));
    return QString::fromUtf16(text, sqlite3_column_bytes16(statement, column) / 2);
}

} // namespace

SqliteRecordset::SqliteRecordset(std::shared_ptr<void> owner, sqlite3 *database, ErrorSlot &slot,
                                 QString file, const QString &sql, const QStringList &wanted)
    : m_owner(std::move(owner))
    , m_database(database)
    , m_slot(slot)
    , m_file(std::move(file))
{
    prepare(sql);
    for (int i = 0; i < sqlite3_column_count(m_statement); ++i) {
        const QString name = QString::fromUtf8(sqlite3_column_name(m_statement, i));
        if (!wanted.isEmpty() && !wanted.contains(name, Qt::CaseInsensitive))
            continue;
        m_columns.append(name);
        m_places.push_back(i);
    }
}

SqliteRecordset::~SqliteRecordset()
{
    sqlite3_finalize(m_statement);
}

void SqliteRecordset::prepare(const QString &sql)
{
    const QByteArray text = sql.toUtf8();
    const char *rest = nullptr;
    const int result = sqlite3_prepare_v2(m_database, text.constData(),
                                          static_cast<int>(text.size()), &m_statement, &rest);
    if (result != SQLITE_OK)
        fail();
    if (!m_statement || !QByteArray(rest).trimmed().isEmpty()) {
        sqlite3_finalize(m_statement);
        throw Error(DatabaseError,
                    QStringLiteral("'%1': one statement is expected, not \"%2\"").arg(m_file, sql));
    }
}

void SqliteRecordset::fail() const
{
    m_slot.rethrow();
    throw Error(
        DatabaseError,
        QStringLiteral("'%1': %2").arg(m_file, QString::fromUtf8(sqlite3_errmsg(m_database))));
}

bool SqliteRecordset::next()
{
    switch (sqlite3_step(m_statement)) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        fail();
    }
}

bool SqliteRecordset::isNull(int column) const
{
    return sqlite3_column_type(m_statement, place(column)) == SQLITE_NULL;
}

qint64 SqliteRecordset::integer(int column) const
{
    switch (sqlite3_column_type(m_statement, place(column))) {
    case SQLITE_FLOAT:
        return toInteger(sqlite3_column_double(m_statement, place(column)));
    case SQLITE_TEXT:
        return toInteger(leadingNumber(textAt(m_statement, place(column))));
    default:
        return sqlite3_column_int64(m_statement, place(column));
    }
}

double SqliteRecordset::number(int column) const
{
    if (sqlite3_column_type(m_statement, place(column)) == SQLITE_TEXT)
        return leadingNumber(textAt(m_statement, place(column)));
    return sqlite3_column_double(m_statement, place(column));
}

qint64 SqliteRecordset::instant(int column) const
{
    return isNull(column) ? 0 : instantOfDay(number(column));
}

QString SqliteRecordset::text(int column) const
{
    return toText(value(column));
}

QVariant SqliteRecordset::value(int column) const
{
    const int at = place(column);
    switch (sqlite3_column_type(m_statement, at)) {
    case SQLITE_INTEGER:
        return qint64(sqlite3_column_int64(m_statement, at));
    case SQLITE_FLOAT:
        return sqlite3_column_double(m_statement, at);
    case SQLITE_TEXT:
        return textAt(m_statement, at);
    case SQLITE_BLOB:
        return QByteArray(static_cast<const char *>(sqlite3_column_blob(m_statement, at)),
                          sqlite3_column_bytes(m_statement, at));
    default:
        return {};
    }
}
