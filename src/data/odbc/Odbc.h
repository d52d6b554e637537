#pragma once

// The ODBC headers, and what their C types need to meet Qt's. For the .cpp files of this folder.

#ifdef _WIN32
#include <windows.h>
#endif

#include <QString>

#include <sql.h>
#include <sqlext.h>

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "ODBC texts are UTF-16");

/// ODBC takes texts that it only reads as pointers to non-const.
inline SQLWCHAR *odbcString(const QString &text)
{
    return reinterpret_cast<SQLWCHAR *>(const_cast<ushort *>(text.utf16()));
}

/// An attribute's value, passed as the pointer that ODBC declares.
inline SQLPOINTER odbcValue(SQLULEN value)
{
    return reinterpret_cast<SQLPOINTER>(value); // NOLINT(performance-no-int-to-ptr)
}

/// One handle, freed at the end.
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
