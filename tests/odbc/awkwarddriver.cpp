// An ODBC driver with a table of its own and the habits that other drivers have; the keyword HABIT
// of the connection text chooses one. For tests of what no driver at hand does.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <map>
#include <sql.h>
#include <sqlext.h>
#include <string>
#include <thread>

namespace {

constexpr SQLLEN rowCount = 5000;

struct Column
{
    const char16_t *name;
    SQLSMALLINT type;
    SQLLEN width; ///< of a bound value
};
const Column columns[] = {
    {u"id", SQL_BIGINT, sizeof(SQLBIGINT)},
    {u"at", SQL_TYPE_TIMESTAMP, sizeof(SQL_TIMESTAMP_STRUCT)},
    {u"flag", SQL_BIT, 1},
    {u"name", SQL_WVARCHAR, 0},
};

struct Handle
{
    Handle *parent = nullptr;
    std::u16string habit; // of a connection
    std::u16string state; // of the last failure
    std::u16string message;

    // Of a statement.
    SQLULEN arraySize = 1;
    SQLULEN *fetched = nullptr;
    SQLUSMALLINT *status = nullptr;
    std::map<SQLUSMALLINT, std::pair<char *, SQLLEN *>> bindings; // values and indicators
    SQLLEN row = 0;                                               // the last one fetched, from 1
    std::atomic<bool> isCancelled = false;

    bool has(const char16_t *wanted) const { return parent->habit == wanted; }
    SQLRETURN fail(const char16_t *failedState, const char16_t *why)
    {
        state = failedState;
        message = why;
        return SQL_ERROR;
    }
};

Handle *of(SQLHANDLE handle)
{
    return static_cast<Handle *>(handle);
}

/// `datetime` counts in ticks of 1/300 s, which drivers write as 0, 3,333,333 or 6,666,667 ns.
SQL_TIMESTAMP_STRUCT stampOf(SQLLEN row)
{
    constexpr SQLUINTEGER ticks[] = {0, 3'333'333, 6'666'667, 996'666'667};
    return {2024, 2, 29, 23, static_cast<SQLUSMALLINT>(row % 60), 59, ticks[row % 4]};
}

/// Row 7 holds NULLs. Some drivers leave the indicator of other values as it was.
void write(SQLLEN row, SQLUSMALLINT column, char *to, SQLLEN *indicator)
{
    const SQLBIGINT id = row;
    const SQL_TIMESTAMP_STRUCT stamp = stampOf(row);
    const auto flag = static_cast<unsigned char>(row % 2);
    const void *from[] = {&id, &stamp, &flag};
    if (row == 7 && column != 1)
        *indicator = SQL_NULL_DATA;
    else
        std::memcpy(to, from[column - 1], static_cast<std::size_t>(columns[column - 1].width));
}

/// The habits that show at a fetch. SQL_SUCCESS when it goes on.
SQLRETURN misbehave(Handle *statement)
{
    if (statement->has(u"refuses-fetch") && statement->arraySize > 1)
        return statement->fail(u"HYC00", u"[Awkward]Optional feature not implemented");
    if (statement->row < 4096)
        return SQL_SUCCESS;
    if (statement->has(u"breaks-row")) {
        statement->fail(u"22003", u"[Awkward]Numeric value out of range");
        statement->status[1] = SQL_ROW_ERROR;
        return SQL_SUCCESS_WITH_INFO;
    }
    const bool isDeaf = statement->has(u"deaf");
    if (!isDeaf && !statement->has(u"stalls"))
        return SQL_SUCCESS;
    for (int i = 0; i < 600 && (isDeaf || !statement->isCancelled); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return statement->fail(u"HY008", u"[Awkward]Operation canceled");
}

} // namespace

extern "C" {

SQLRETURN SQLAllocHandle(SQLSMALLINT, SQLHANDLE parent, SQLHANDLE *handle)
{
    auto *made = new Handle;
    made->parent = of(parent);
    *handle = made;
    return SQL_SUCCESS;
}

SQLRETURN SQLFreeHandle(SQLSMALLINT, SQLHANDLE handle)
{
    delete of(handle);
    return SQL_SUCCESS;
}

SQLRETURN SQLDriverConnectW(SQLHDBC connection, SQLHWND, SQLWCHAR *text, SQLSMALLINT, SQLWCHAR *,
                            SQLSMALLINT, SQLSMALLINT *, SQLUSMALLINT)
{
    const std::u16string all(reinterpret_cast<const char16_t *>(text));
    const std::size_t at = all.find(u"HABIT=") + 6;
    of(connection)->habit = all.substr(at, all.find(u';', at) - at);
    return SQL_SUCCESS;
}

SQLRETURN SQLDisconnect(SQLHDBC)
{
    return SQL_SUCCESS;
}

SQLRETURN SQLSetStmtAttrW(SQLHSTMT handle, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER)
{
    Handle *statement = of(handle);
    const bool isSize = attribute == SQL_ATTR_ROW_ARRAY_SIZE;
    const bool isCount = attribute == SQL_ATTR_ROWS_FETCHED_PTR;
    const auto size = reinterpret_cast<SQLULEN>(value);
    if ((isSize && size > 1 && statement->has(u"refuses-size")) ||
        (isCount && statement->has(u"refuses-count")))
        return statement->fail(u"HYC00", u"[Awkward]Optional feature not implemented");
    if (isSize && size > 1 && statement->has(u"changes-size")) {
        statement->arraySize = 10;
        statement->fail(u"01S02", u"[Awkward]Option value changed");
        return SQL_SUCCESS_WITH_INFO;
    }
    if (isSize)
        statement->arraySize = size;
    if (isCount)
        statement->fetched = static_cast<SQLULEN *>(value);
    if (attribute == SQL_ATTR_ROW_STATUS_PTR)
        statement->status = static_cast<SQLUSMALLINT *>(value);
    return SQL_SUCCESS;
}

SQLRETURN SQLGetStmtAttrW(SQLHSTMT handle, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER,
                          SQLINTEGER *)
{
    if (attribute == SQL_ATTR_ROW_ARRAY_SIZE)
        *static_cast<SQLULEN *>(value) = of(handle)->arraySize;
    else
        *static_cast<SQLPOINTER *>(value) = nullptr; // the descriptors that the manager asks for
    return SQL_SUCCESS;
}

SQLRETURN SQLPrepareW(SQLHSTMT, SQLWCHAR *, SQLINTEGER)
{
    return SQL_SUCCESS;
}

SQLRETURN SQLExecute(SQLHSTMT)
{
    return SQL_SUCCESS;
}

SQLRETURN SQLNumResultCols(SQLHSTMT, SQLSMALLINT *count)
{
    *count = static_cast<SQLSMALLINT>(std::size(columns));
    return SQL_SUCCESS;
}

SQLRETURN SQLDescribeColW(SQLHSTMT, SQLUSMALLINT number, SQLWCHAR *name, SQLSMALLINT, SQLSMALLINT *,
                          SQLSMALLINT *type, SQLULEN *, SQLSMALLINT *, SQLSMALLINT *)
{
    const Column &column = columns[number - 1];
    const std::u16string text = column.name;
    std::memcpy(name, text.c_str(), (text.size() + 1) * sizeof(SQLWCHAR));
    *type = column.type;
    return SQL_SUCCESS;
}

SQLRETURN SQLBindCol(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT, SQLPOINTER value, SQLLEN,
                     SQLLEN *indicator)
{
    of(handle)->bindings[number] = {static_cast<char *>(value), indicator};
    return SQL_SUCCESS;
}

SQLRETURN SQLFetch(SQLHSTMT handle)
{
    Handle *statement = of(handle);
    if (statement->row >= rowCount)
        return SQL_NO_DATA;
    const SQLRETURN result = misbehave(statement);
    if (result == SQL_ERROR)
        return result;
    const SQLLEN size = static_cast<SQLLEN>(statement->arraySize);
    const SQLLEN rows = std::min(size, rowCount - statement->row);
    for (SQLLEN i = 0; i < rows; ++i) {
        for (const auto &[number, to] : statement->bindings)
            write(statement->row + i + 1, number, to.first + i * columns[number - 1].width,
                  to.second + i);
    }
    statement->row += rows;
    if (statement->fetched)
        *statement->fetched = static_cast<SQLULEN>(rows);
    return result;
}

SQLRETURN SQLGetData(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT type, SQLPOINTER value,
                     SQLLEN size, SQLLEN *indicator)
{
    Handle *statement = of(handle);
    *indicator = 0;
    if (number != 4 || statement->row == 7) {
        write(statement->row, number, static_cast<char *>(value), indicator);
        return SQL_SUCCESS;
    }
    if (type != SQL_C_CHAR)
        return statement->fail(u"07006", u"[Awkward]Restricted data type attribute violation");
    const std::string text = "Zürich " + std::to_string(statement->row);
    *indicator = static_cast<SQLLEN>(text.size());
    std::memcpy(value, text.c_str(), std::min(text.size() + 1, static_cast<std::size_t>(size)));
    return SQL_SUCCESS;
}

SQLRETURN SQLCancel(SQLHSTMT handle)
{
    of(handle)->isCancelled = true;
    return SQL_SUCCESS;
}

SQLRETURN SQLGetDiagRecW(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT number, SQLWCHAR *state,
                         SQLINTEGER *native, SQLWCHAR *message, SQLSMALLINT, SQLSMALLINT *length)
{
    const Handle *failed = of(handle);
    if (number != 1 || failed->state.empty())
        return SQL_NO_DATA;
    std::memcpy(state, failed->state.c_str(), 12);
    std::memcpy(message, failed->message.c_str(), (failed->message.size() + 1) * 2);
    *native = 4711;
    *length = static_cast<SQLSMALLINT>(failed->message.size());
    return SQL_SUCCESS;
}

/// The driver manager takes errors only from a driver that has this one too.
SQLRETURN SQLGetDiagFieldW(SQLSMALLINT, SQLHANDLE, SQLSMALLINT, SQLSMALLINT, SQLPOINTER,
                           SQLSMALLINT, SQLSMALLINT *)
{
    return SQL_NO_DATA;
}
}
