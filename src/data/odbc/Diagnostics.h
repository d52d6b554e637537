#pragma once

#include "core/Error.h"
#include "data/odbc/Odbc.h"

/// A failure that a driver, or the driver manager, tells of: the first record's native number, and
/// as description the texts of all records with their SQL states.
class OdbcError : public Error
{
public:
    OdbcError(int nativeNumber, QString description, QString sqlState);

    QString state; ///< SQL state of the first record, five characters

    /// False where the connection works on: the statement or its data was at fault.
    bool endsConnection() const;
};

/// The records that the last call left on a handle.
OdbcError odbcError(SQLSMALLINT type, SQLHANDLE handle);

/// Throws odbcError() unless the call succeeded.
void check(SQLRETURN result, const OdbcHandle &handle);
