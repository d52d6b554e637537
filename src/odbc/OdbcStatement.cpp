#include "odbc/OdbcStatement.h"

#include "base/Files.h"
#include "odbc/OdbcError.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr std::size_t maxBlockBytes = 1024 * 1024;
constexpr std::size_t maxBlockRows = 4096;
constexpr std::size_t rowsOneByOne = 256; ///< in a block of rows that are read cell by cell
constexpr qsizetype maxTextBytes = 64 * 1024 * 1024;

CellKind decimalKind(SQLULEN digits, SQLSMALLINT decimals)
{
    return decimals == 0 && digits <= 18 ? CellKind::Integer : CellKind::Number;
}

CellKind cellKind(SQLSMALLINT sqlType, SQLULEN digits, SQLSMALLINT decimals)
{
    switch (sqlType) {
    case SQL_BIT:
        return CellKind::Flag;
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT:
        return CellKind::Integer;
    case SQL_DECIMAL:
    case SQL_NUMERIC:
        return decimalKind(digits, decimals);
    case SQL_REAL:
        return CellKind::Single;
    case SQL_FLOAT:
    case SQL_DOUBLE:
        return CellKind::Number;
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIMESTAMP:
    case SQL_DATE:
    case SQL_TIMESTAMP:
        return CellKind::Instant;
    default:
        return CellKind::Text;
    }
}

std::size_t rowBytes(const std::vector<OdbcColumn> &columns)
{
    std::size_t bytes = sizeof(SQLUSMALLINT); // its status
    for (const OdbcColumn &column : columns)
        bytes += cellWidth(column.kind) + sizeof(SQLLEN);
    return bytes;
}

} // namespace

SQLSMALLINT cellType(CellKind kind)
{
    switch (kind) {
    case CellKind::Integer:
        return SQL_C_SBIGINT;
    case CellKind::Flag:
        return SQL_C_BIT;
    case CellKind::Number:
    case CellKind::Single:
        return SQL_C_DOUBLE;
    case CellKind::Instant:
        return SQL_C_TYPE_TIMESTAMP;
    case CellKind::Text:
        break;
    }
    return SQL_C_WCHAR;
}

std::size_t cellWidth(CellKind kind)
{
    switch (kind) {
    case CellKind::Integer:
    case CellKind::Number:
    case CellKind::Single:
        return 8;
    case CellKind::Flag:
        return 1;
    case CellKind::Instant:
        return sizeof(SQL_TIMESTAMP_STRUCT);
    case CellKind::Text:
        break;
    }
    return 0;
}

OdbcStatement::OdbcStatement(std::shared_ptr<OdbcSession> session)
    : m_session(std::move(session))
    , m_statement(SQL_HANDLE_STMT, m_session->connection())
{
    if (!m_statement.get())
        throw odbcError(SQL_HANDLE_DBC, m_session->connection());
}

/// Sets an attribute; false when the driver refuses it, where its default will do.
bool OdbcStatement::set(SQLINTEGER attribute, SQLPOINTER value)
{
    return SQL_SUCCEEDED(SQLSetStmtAttrW(m_statement.get(), attribute, value, 0));
}

void OdbcStatement::execute(const QString &sql, const QStringList &wanted,
                            std::chrono::seconds time)
{
    set(SQL_ATTR_CURSOR_TYPE, odbcValue(SQL_CURSOR_FORWARD_ONLY));
    set(SQL_ATTR_CONCURRENCY, odbcValue(SQL_CONCUR_READ_ONLY));
    set(SQL_ATTR_NOSCAN, odbcValue(SQL_NOSCAN_ON)); // ids in braces are not escape sequences
    if (time.count() > 0)
        set(SQL_ATTR_QUERY_TIMEOUT, odbcValue(static_cast<SQLULEN>(time.count())));

    // Not at once by SQLExecDirect: MariaDB's driver 3.1 crashes in it when the connection breaks.
    checkOdbc(SQLPrepareW(m_statement.get(), odbcString(sql), SQL_NTS), m_statement);
    const SQLRETURN result = SQLExecute(m_statement.get());
    m_isAtEnd = result == SQL_NO_DATA;
    if (!m_isAtEnd)
        checkOdbc(result, m_statement);
    describeColumns(wanted);
    bind();
}

void OdbcStatement::describeColumns(const QStringList &wanted)
{
    SQLSMALLINT count = 0;
    checkOdbc(SQLNumResultCols(m_statement.get(), &count), m_statement);
    for (SQLSMALLINT i = 1; i <= count; ++i) {
        std::array<SQLWCHAR, 512> name{};
        SQLSMALLINT length = 0;
        SQLSMALLINT type = 0;
        SQLSMALLINT decimals = 0;
        SQLSMALLINT nullable = 0;
        SQLULEN digits = 0;
        const auto number = static_cast<SQLUSMALLINT>(i);
        checkOdbc(SQLDescribeColW(m_statement.get(), number, name.data(),
                                  static_cast<SQLSMALLINT>(name.size()), &length, &type, &digits,
                                  &decimals, &nullable),
                  m_statement);
        OdbcColumn column{QString::fromUtf16(reinterpret_cast<const char16_t *>(name.data())),
                          number, cellKind(type, digits, decimals)};
        if (wanted.isEmpty() || wanted.contains(column.name, Qt::CaseInsensitive))
            m_columns.push_back(std::move(column));
    }
    for (const QString &name : wanted) {
        if (std::none_of(m_columns.begin(), m_columns.end(), [&](const OdbcColumn &column) {
                return column.name.compare(name, Qt::CaseInsensitive) == 0;
            }))
            throw Error(ItemNotFound, QStringLiteral("Item not found: no column '%1'").arg(name));
    }
    m_block.columns.resize(m_columns.size());
}

void OdbcStatement::bind()
{
    m_isBound = std::none_of(m_columns.begin(), m_columns.end(), [](const OdbcColumn &column) {
        return column.kind == CellKind::Text; // which could be truncated
    });
    if (!m_isBound) {
        bindRows(rowsOneByOne);
        return;
    }
    bindRows(acceptedRows(
        std::clamp<std::size_t>(maxBlockBytes / rowBytes(m_columns), 1, maxBlockRows)));
}

/// The size of blocks that the driver agrees to.
std::size_t OdbcStatement::acceptedRows(std::size_t rows)
{
    SQLULEN accepted = 1;
    const bool isAccepted =
        set(SQL_ATTR_ROW_BIND_TYPE, odbcValue(SQL_BIND_BY_COLUMN)) &&
        set(SQL_ATTR_ROWS_FETCHED_PTR, &m_rowsFetched) && // else a block's size is unknown
        set(SQL_ATTR_ROW_ARRAY_SIZE, odbcValue(rows)) &&
        SQL_SUCCEEDED(SQLGetStmtAttrW(m_statement.get(), SQL_ATTR_ROW_ARRAY_SIZE, &accepted,
                                      SQL_IS_UINTEGER, nullptr)); // it may have taken another one
    if (isAccepted && accepted >= 1 && accepted <= rows)
        return accepted;
    set(SQL_ATTR_ROW_ARRAY_SIZE, odbcValue(1));
    return 1;
}

/// Allocates space for so many rows, and binds it when whole blocks are fetched.
void OdbcStatement::bindRows(std::size_t rows)
{
    m_blockRows = rows;
    m_rowStatus.assign(rows, SQL_ROW_SUCCESS);
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const CellKind kind = m_columns[i].kind;
        ColumnBlock &column = m_block.columns[i];
        column.cells.assign(rows * cellWidth(kind), std::byte(0));
        column.indicators.assign(rows, 0);
        column.texts.resize(kind == CellKind::Text ? rows : 0);
        if (m_isBound)
            checkOdbc(SQLBindCol(m_statement.get(), m_columns[i].number, cellType(kind),
                                 column.cells.data(), static_cast<SQLLEN>(cellWidth(kind)),
                                 column.indicators.data()),
                      m_statement);
    }
    if (m_isBound)
        set(SQL_ATTR_ROW_STATUS_PTR, m_rowStatus.data());
}

void OdbcStatement::fetch()
{
    m_block.rows = 0;
    if (m_isAtEnd)
        return;
    if (!m_isBound) {
        fetchOneByOne();
    } else if (!fetchBound()) {
        // The driver accepts an array's size but cannot fill it.
        set(SQL_ATTR_ROW_ARRAY_SIZE, odbcValue(1));
        bindRows(1);
        fetchBound();
    }
    m_isFirstBlock = false;
}

/// False when the driver cannot fetch blocks.
bool OdbcStatement::fetchBound()
{
    for (ColumnBlock &column : m_block.columns)
        std::fill(column.indicators.begin(), column.indicators.end(), 0);
    std::fill(m_rowStatus.begin(), m_rowStatus.end(), SQLUSMALLINT(SQL_ROW_SUCCESS));
    m_rowsFetched = 1; // for a driver that does not count
    const SQLRETURN result = SQLFetch(m_statement.get());
    if (result == SQL_NO_DATA) {
        m_isAtEnd = true;
        return true;
    }
    if (!SQL_SUCCEEDED(result)) {
        const OdbcError error = odbcError(SQL_HANDLE_STMT, m_statement.get());
        if (m_isFirstBlock && m_blockRows > 1 && error.state == u"HYC00")
            return false;
        throw error;
    }
    const std::size_t rows = std::min<std::size_t>(m_rowsFetched, m_blockRows);
    // No bound column can be truncated, so an error in a row means that a value cannot be read.
    if (std::find(m_rowStatus.begin(), m_rowStatus.begin() + static_cast<std::ptrdiff_t>(rows),
                  SQL_ROW_ERROR) != m_rowStatus.begin() + static_cast<std::ptrdiff_t>(rows))
        throw odbcError(SQL_HANDLE_STMT, m_statement.get());
    m_block.rows = rows;
    return true;
}

void OdbcStatement::fetchOneByOne()
{
    while (m_block.rows < m_blockRows) {
        const SQLRETURN result = SQLFetch(m_statement.get());
        if (result == SQL_NO_DATA) {
            m_isAtEnd = true;
            return;
        }
        checkOdbc(result, m_statement);
        for (std::size_t i = 0; i < m_columns.size(); ++i)
            readCell(i, m_block.rows);
        ++m_block.rows;
    }
}

void OdbcStatement::readCell(std::size_t column, std::size_t row)
{
    const OdbcColumn &from = m_columns[column];
    ColumnBlock &to = m_block.columns[column];
    if (from.kind == CellKind::Text) {
        to.indicators[row] = readText(from.number, to.texts[row]) ? 0 : SQL_NULL_DATA;
        return;
    }
    const std::size_t width = cellWidth(from.kind);
    checkOdbc(SQLGetData(m_statement.get(), from.number, cellType(from.kind),
                         to.cells.data() + row * width, static_cast<SQLLEN>(width),
                         &to.indicators[row]),
              m_statement);
}

/// Reads a text chunk by chunk, whatever its length. False for NULL.
bool OdbcStatement::readText(SQLUSMALLINT number, QString &text)
{
    bool isNull = false;
    if (m_session->offersUtf16) {
        text.clear();
        const SQLRETURN result = readChunks<char16_t>(
            number, SQL_C_WCHAR, isNull, [&](const char16_t *from, qsizetype count) {
                text.append(reinterpret_cast<const QChar *>(from), count);
                return text.size() * 2;
            });
        if (SQL_SUCCEEDED(result))
            return !isNull;
        const OdbcError error = odbcError(SQL_HANDLE_STMT, m_statement.get());
        const bool isRefused = error.state == u"07006" || error.state == u"HYC00" ||
                               error.state == u"HY003" || error.state == u"HY004";
        if (!isRefused || !text.isEmpty())
            throw error;
        m_session->offersUtf16 = false;
    }
    QByteArray bytes;
    checkOdbc(readChunks<char>(number, SQL_C_CHAR, isNull,
                               [&](const char *from, qsizetype count) {
                                   bytes.append(from, count);
                                   return bytes.size();
                               }),
              m_statement);
    text = decodeText(bytes);
    return !isNull;
}

/// `append` takes a chunk and returns the bytes so far.
template <typename Character, typename Append>
SQLRETURN OdbcStatement::readChunks(SQLUSMALLINT number, SQLSMALLINT type, bool &isNull,
                                    Append append)
{
    std::array<Character, 2048> chunk;
    constexpr auto size = static_cast<SQLLEN>(sizeof chunk);
    constexpr SQLLEN maxLength = size - static_cast<SQLLEN>(sizeof(Character)); // without the zero
    for (bool isFirst = true;; isFirst = false) {
        SQLLEN length = 0;
        const SQLRETURN result =
            SQLGetData(m_statement.get(), number, type, chunk.data(), size, &length);
        if (result == SQL_NO_DATA)
            return SQL_SUCCESS;
        if (!SQL_SUCCEEDED(result))
            return result;
        isNull = isFirst && length == SQL_NULL_DATA;
        if (isNull)
            return SQL_SUCCESS;
        const bool isCut = length == SQL_NO_TOTAL || length > maxLength;
        const SQLLEN bytes = isCut ? maxLength : length;
        if (append(chunk.data(), static_cast<qsizetype>(bytes) /
                                     static_cast<qsizetype>(sizeof(Character))) > maxTextBytes)
            throw Error(Overflow, QStringLiteral("Overflow: a text is longer than 64 MiB"));
        if (!isCut)
            return SQL_SUCCESS;
    }
}

void OdbcStatement::cancel()
{
    SQLCancel(m_statement.get());
}
