#pragma once

#include <QString>

namespace mdb {

/// Where in a file something stands: what errors about its content name.
struct Place
{
    QString file;
    QString table;    ///< empty outside of a table
    qint64 page = -1; ///< -1 where no page is at fault

    /// "'FILE', table 'TABLE', page PAGE: what".
    QString message(const QString &what) const;

    /// Throws Error(InvalidFileFormat) with that message.
    [[noreturn]] void fail(const QString &what) const;
};

} // namespace mdb
