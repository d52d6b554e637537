#pragma once

// The ODBC headers, and conversions between their C types and Qt's. On Windows it includes
// windows.h, so that only this folder and the .cpp files that read recordsets include it.

#ifdef _WIN32
#include <windows.h>
#endif

#include <QString>

#include <sql.h>
#include <sqlext.h>

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "ODBC texts are UTF-16");

/// A text for ODBC, which declares even what it only reads as non-const.
inline SQLWCHAR *odbcString(const QString &text)
{
    return reinterpret_cast<SQLWCHAR *>(const_cast<ushort *>(text.utf16()));
}

/// An attribute's value, passed as the pointer that ODBC declares.
inline SQLPOINTER odbcValue(SQLULEN value)
{
    return reinterpret_cast<SQLPOINTER>(value); // NOLINT(performance-no-int-to-ptr)
}

/// Owns a handle; null when it could not be allocated.
class OdbcHandle
{
public:
    OdbcHandle(SQLSMALLINT type, SQLHANDLE parent)
        : m_type(type)
    {
        if (!SQL_SUCCEEDED(SQLAllocHandle(type, parent, &m_handle)))
            m_handle = SQL_NULL_HANDLE;
    }
    ~OdbcHandle()
    {
        if (m_handle)
            SQLFreeHandle(m_type, m_handle);
    }
    OdbcHandle(const OdbcHandle &) = delete;
    OdbcHandle &operator=(const OdbcHandle &) = delete;

    SQLHANDLE get() const { return m_handle; }
    SQLSMALLINT type() const { return m_type; }

private:
    SQLSMALLINT m_type;
    SQLHANDLE m_handle = SQL_NULL_HANDLE;
};
