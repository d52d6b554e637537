// An ODBC driver with a table of its own and the habits that other drivers have; the keyword HABIT
// of the connection text chooses one. For tests of what no driver at hand does.

#ifdef _WIN32
#include <windows.h>
#endif

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <map>
#include <mutex>
#include <sql.h>
#include <sqlext.h>
#include <string>
#include <vector>

namespace {

constexpr SQLLEN rowCount = 5000;

struct Column
{
    const char16_t *name;
    SQLSMALLINT type;
    SQLULEN digits;
    SQLSMALLINT decimals;
};
const Column columns[] = {
    {u"id", SQL_BIGINT, 19, 0},
    {u"at", SQL_TYPE_TIMESTAMP, 23, 3},
    {u"flag", SQL_BIT, 1, 0},
    {u"name", SQL_WVARCHAR, 50, 0},
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
    struct Binding
    {
        SQLSMALLINT type;
        char *value;
        SQLLEN *indicator;
    };
    std::map<SQLUSMALLINT, Binding> bindings;
    SQLLEN row = 0; // the last one fetched, from 1
    std::mutex mutex;
    std::condition_variable changed;
    bool isCancelled = false;

    bool has(const char16_t *wanted) const { return parent->habit == wanted; }
};

Handle *of(SQLHANDLE handle)
{
    return static_cast<Handle *>(handle);
}

SQLRETURN fail(Handle *handle, const char16_t *state, const char16_t *message)
{
    handle->state = state;
    handle->message = message;
    return SQL_ERROR;
}

/// `datetime` counts in ticks of 1/300 s, which drivers write as 0, 3,333,333 or 6,666,667 ns.
SQL_TIMESTAMP_STRUCT stampOf(SQLLEN row)
{
    constexpr SQLUINTEGER ticks[] = {0, 3'333'333, 6'666'667, 996'666'667};
    const auto minute = static_cast<SQLUSMALLINT>(row % 60);
    return {2024, 2, 29, 23, minute, 59, ticks[row % 4]};
}

/// Row 7 holds NULLs.
void write(SQLLEN row, SQLUSMALLINT column, char *to, SQLLEN *indicator)
{
    if (row == 7 && column != 1) {
        *indicator = SQL_NULL_DATA;
        return;
    }
    const SQLBIGINT id = row;
    const SQL_TIMESTAMP_STRUCT stamp = stampOf(row);
    const auto flag = static_cast<unsigned char>(row % 2);
    const void *from[] = {&id, &stamp, &flag};
    const std::size_t sizes[] = {sizeof id, sizeof stamp, sizeof flag};
    std::memcpy(to, from[column - 1], sizes[column - 1]);
    *indicator = static_cast<SQLLEN>(sizes[column - 1]);
}

SQLLEN widthOf(SQLSMALLINT type)
{
    return type == SQL_C_SBIGINT ? 8 : type == SQL_C_BIT ? 1 : sizeof(SQL_TIMESTAMP_STRUCT);
}

/// The habits that show at a fetch. SQL_SUCCESS when it goes on.
SQLRETURN misbehave(Handle *statement)
{
    if (statement->has(u"refuses-fetch") && statement->arraySize > 1)
        return fail(statement, u"HYC00", u"[Awkward]Optional feature not implemented");
    if (statement->row < 4096)
        return SQL_SUCCESS;
    if (statement->has(u"breaks-row")) {
        fail(statement, u"22003", u"[Awkward]Numeric value out of range");
        if (statement->status)
            statement->status[1] = SQL_ROW_ERROR;
        return SQL_SUCCESS_WITH_INFO;
    }
    const bool isDeaf = statement->has(u"deaf");
    if (!isDeaf && !statement->has(u"stalls"))
        return SQL_SUCCESS;
    std::unique_lock lock(statement->mutex);
    statement->changed.wait_for(lock, std::chrono::seconds(isDeaf ? 6 : 60),
                                [&] { return statement->isCancelled && !isDeaf; });
    return fail(statement, u"HY008", u"[Awkward]Operation canceled");
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

SQLRETURN SQLSetEnvAttr(SQLHENV, SQLINTEGER, SQLPOINTER, SQLINTEGER)
{
    return SQL_SUCCESS;
}

SQLRETURN SQLSetConnectAttrW(SQLHDBC, SQLINTEGER, SQLPOINTER, SQLINTEGER)
{
    return SQL_SUCCESS;
}

SQLRETURN SQLDriverConnectW(SQLHDBC connection, SQLHWND, SQLWCHAR *text, SQLSMALLINT, SQLWCHAR *,
                            SQLSMALLINT, SQLSMALLINT *, SQLUSMALLINT)
{
    const std::u16string all(reinterpret_cast<const char16_t *>(text));
    const std::size_t at = all.find(u"HABIT=");
    of(connection)->habit = all.substr(at + 6, all.find(u';', at) - at - 6);
    return SQL_SUCCESS;
}

SQLRETURN SQLDisconnect(SQLHDBC)
{
    return SQL_SUCCESS;
}

SQLRETURN SQLSetStmtAttrW(SQLHSTMT handle, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER)
{
    Handle *statement = of(handle);
    switch (attribute) {
    case SQL_ATTR_ROW_ARRAY_SIZE: {
        const auto wanted = reinterpret_cast<SQLULEN>(value);
        if (wanted > 1 && statement->has(u"refuses-size"))
            return fail(statement, u"HYC00", u"[Awkward]Optional feature not implemented");
        if (wanted > 1 && statement->has(u"changes-size")) {
            statement->arraySize = 10;
            fail(statement, u"01S02", u"[Awkward]Option value changed");
            return SQL_SUCCESS_WITH_INFO;
        }
        statement->arraySize = wanted;
        return SQL_SUCCESS;
    }
    case SQL_ATTR_ROWS_FETCHED_PTR:
        if (statement->has(u"refuses-count"))
            return fail(statement, u"HYC00", u"[Awkward]Optional feature not implemented");
        statement->fetched = static_cast<SQLULEN *>(value);
        return SQL_SUCCESS;
    case SQL_ATTR_ROW_STATUS_PTR:
        statement->status = static_cast<SQLUSMALLINT *>(value);
        return SQL_SUCCESS;
    default:
        return SQL_SUCCESS;
    }
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

SQLRETURN SQLDescribeColW(SQLHSTMT, SQLUSMALLINT number, SQLWCHAR *name, SQLSMALLINT,
                          SQLSMALLINT *length, SQLSMALLINT *type, SQLULEN *digits,
                          SQLSMALLINT *decimals, SQLSMALLINT *nullable)
{
    const Column &column = columns[number - 1];
    const std::u16string text = column.name;
    std::memcpy(name, text.c_str(), (text.size() + 1) * sizeof(SQLWCHAR));
    *length = static_cast<SQLSMALLINT>(text.size());
    *type = column.type;
    *digits = column.digits;
    *decimals = column.decimals;
    *nullable = SQL_NULLABLE;
    return SQL_SUCCESS;
}

SQLRETURN SQLBindCol(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT type, SQLPOINTER value,
                     SQLLEN, SQLLEN *indicator)
{
    of(handle)->bindings[number] = {type, static_cast<char *>(value), indicator};
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
            write(statement->row + i + 1, number, to.value + i * widthOf(to.type),
                  to.indicator + i);
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
    if (number != 4) {
        write(statement->row, number, static_cast<char *>(value), indicator);
        return SQL_SUCCESS;
    }
    if (type != SQL_C_CHAR)
        return fail(statement, u"07006", u"[Awkward]Restricted data type attribute violation");
    if (statement->row == 7) {
        *indicator = SQL_NULL_DATA;
        return SQL_SUCCESS;
    }
    const std::string text = "Zürich " + std::to_string(statement->row);
    *indicator = static_cast<SQLLEN>(text.size());
    std::memcpy(value, text.c_str(), std::min(text.size() + 1, static_cast<std::size_t>(size)));
    return SQL_SUCCESS;
}

SQLRETURN SQLFreeStmt(SQLHSTMT, SQLUSMALLINT)
{
    return SQL_SUCCESS;
}

SQLRETURN SQLCancel(SQLHSTMT handle)
{
    const std::lock_guard lock(of(handle)->mutex);
    of(handle)->isCancelled = true;
    of(handle)->changed.notify_all();
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
