#pragma once

#include "base/Error.h"
#include "odbc/Odbc.h"

/// A failure reported by a driver or the driver manager: the first record's native number, and the
/// texts of all records with their SQL states.
class OdbcError : public Error
{
public:
    OdbcError(int nativeNumber, QString description, QString sqlState);

    QString state; ///< SQL state of the first record, five characters

    /// False when only the statement or its data was at fault and the connection can still be used.
    bool endsConnection() const;
};

/// The diagnostic records that the last call left on a handle.
OdbcError odbcError(SQLSMALLINT type, SQLHANDLE handle);

/// Throws odbcError() unless the call succeeded.
void checkOdbc(SQLRETURN result, const OdbcHandle &handle);
