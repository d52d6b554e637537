#pragma once

#include <QString>

namespace mdb {

/// Where in a file something is: errors about its content name it.
struct Location
{
    QString file;
    QString table;    ///< empty outside a table
    qint64 page = -1; ///< -1 when the error is not about a page

    /// "'FILE', table 'TABLE', page PAGE: what".
    QString message(const QString &what) const;

    /// Throws Error(InvalidFileFormat) with that message.
    [[noreturn]] void fail(const QString &what) const;
};

} // namespace mdb
