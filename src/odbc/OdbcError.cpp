#include "odbc/OdbcError.h"

#include <array>

namespace {

struct Record
{
    QString state;
    SQLINTEGER native = 0;
    QString text;
};

bool readRecord(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT number, Record &record)
{
    std::array<SQLWCHAR, 6> state{};
    std::array<SQLWCHAR, SQL_MAX_MESSAGE_LENGTH * 4> text{};
    SQLSMALLINT length = 0;
    const SQLRETURN result =
        SQLGetDiagRecW(type, handle, number, state.data(), &record.native, text.data(),
                       static_cast<SQLSMALLINT>(text.size()), &length);
    if (!SQL_SUCCEEDED(result))
        return false;
    const auto shown =
        std::min(static_cast<qsizetype>(length), static_cast<qsizetype>(text.size() - 1));
    record.state = QString::fromUtf16(reinterpret_cast<const char16_t *>(state.data()), 5);
    record.text = QString::fromUtf16(reinterpret_cast<const char16_t *>(text.data()), shown);
    return true;
}

} // namespace

OdbcError::OdbcError(int nativeNumber, QString text, QString sqlState)
    : Error(nativeNumber, std::move(text))
    , state(std::move(sqlState))
{}

bool OdbcError::endsConnection() const
{
    // Classes: dynamic SQL (07), cardinality (21), data (22), syntax or access (42, formerly S0);
    // features that a driver lacks. Anything else, such as a time-out, may have left the connection
    // in an unknown state.
    for (const char *harmless : {"07", "21", "22", "42", "S0", "HYC00", "IM001"}) {
        if (state.startsWith(QLatin1String(harmless)))
            return false;
    }
    return true;
}

OdbcError odbcError(SQLSMALLINT type, SQLHANDLE handle)
{
    constexpr SQLSMALLINT maxRecords = 5;
    Record first;
    if (!readRecord(type, handle, 1, first))
        return {0, QStringLiteral("The ODBC driver failed and gave no reason"),
                QStringLiteral("HY000")};
    QString description = QStringLiteral("%1 (SQL state %2)").arg(first.text, first.state);
    Record further;
    for (SQLSMALLINT i = 2; i <= maxRecords && readRecord(type, handle, i, further); ++i)
        description += QStringLiteral("; %1 (SQL state %2)").arg(further.text, further.state);
    return {first.native, description.simplified(), first.state};
}

void checkOdbc(SQLRETURN result, const OdbcHandle &handle)
{
    if (!SQL_SUCCEEDED(result))
        throw odbcError(handle.type(), handle.get());
}
