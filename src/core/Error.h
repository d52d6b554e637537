#pragma once

#include <QString>

#include <exception>

/// Numbers of the errors that the tool itself raises. They are those that scripts and users of the
/// product know from its other parts; a database driver's errors keep the driver's own number.
enum ErrorNumber : int {
    Overflow = 6,             ///< a number does not fit where it has to go
    OutOfMemory = 7,          ///< the system gives no more memory
    TypeMismatch = 13,        ///< a value is of another type than the one asked for
    BadFileName = 52,         ///< the system can have no file of that name
    FileNotFound = 53,        ///< a file that has to exist does not
    DeviceIO = 57,            ///< reading, writing or syncing failed
    DiskFull = 61,            ///< fewer bytes stand on the disk than were written
    PermissionDenied = 70,    ///< the system refuses access
    PathNotFound = 76,        ///< a folder does not exist or cannot be made
    InvalidFileFormat = 321,  ///< a file's content breaks its format
    DuplicateKey = 457,       ///< a collection holds an entry with this key already
    DatabaseTimeout = 3146,   ///< a database server does not answer, or its connection is broken
    ItemNotFound = 3265,      ///< no column, table or entry of this name
    DatabaseError = 3001,     ///< an SQL statement cannot be run
    NoCurrentRecord = 3021,   ///< a value is asked for behind the last row
    UnrecognizedFormat = 3343 ///< a file is no Access database
};

/// The one error type: a number and a description that names the place. Thrown where the failure
/// happens, caught per routine, and shown as `routine's own text [number] description`.
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

/// Any exception as an Error: one that is none already gets a number and a description, as those
/// that memory runs out.
Error errorOf(const std::exception &exception);

/// "[number] description", the tail of every error text.
QString errorTail(const Error &error);
