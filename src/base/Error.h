#pragma once

#include <QString>

#include <exception>

/// Numbers of the errors that the tool itself raises: those that scripts and users of the product
/// know from its other parts. A database driver's errors keep the driver's own number.
enum ErrorNumber : int {
    Overflow = 6,             ///< a number is out of range
    OutOfMemory = 7,          ///< the system has no more memory
    TypeMismatch = 13,        ///< a value is of the wrong type
    BadFileName = 52,         ///< the system does not allow the file name
    FileNotFound = 53,        ///< a required file does not exist
    DeviceIO = 57,            ///< reading, writing or syncing failed
    DiskFull = 61,            ///< fewer bytes are on the disk than were written
    PermissionDenied = 70,    ///< the system refuses access
    PathNotFound = 76,        ///< a folder does not exist or cannot be created
    InvalidFileFormat = 321,  ///< a file's content breaks its format
    DuplicateKey = 457,       ///< a collection already has an entry with this key
    DatabaseTimeout = 3146,   ///< a database server does not answer, or its connection is broken
    ItemNotFound = 3265,      ///< no column, table or entry of this name
    DatabaseError = 3001,     ///< an SQL statement cannot be run
    NoCurrentRecord = 3021,   ///< a value is read before the first or after the last row
    UnrecognizedFormat = 3343 ///< a file is not an Access database
};

/// The one error type: a number and a description that says where. Thrown where the failure
/// happens, caught once by the routine that has a text for it, and shown as `text [number]
/// description`.
class Error : public std::exception
{
public:
    Error(int errorNumber, QString errorDescription);

    const char *what() const noexcept override;

    int number;
    QString description;

private:
    QByteArray m_what;
};

/// Any exception as an Error: others, such as std::bad_alloc, get a number and a description.
Error errorOf(const std::exception &exception);

/// "[number] description", the tail of every error text.
QString errorTail(const Error &error);
