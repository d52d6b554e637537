#pragma once

#include "access/AccessFile.h"
#include "support/Errors.h"

#include <QFile>
#include <QStringList>

#include <array>
#include <numeric>

/// What tests of Access files share: whole tables as texts, and the page encoding.

/// All rows of a table, each cell in the form of access-export; NULL is "NULL".
inline QList<QStringList> readTable(mdb::AccessFile &file, const QString &name)
{
    QList<QStringList> rows;
    const mdb::Table &table = file.table(name);
    mdb::RowCursor cursor(file, table);
    while (cursor.next()) {
        QStringList row;
        for (int i = 0; i < static_cast<int>(table.columns.size()); ++i)
            row.append(cursor.isNull(i) ? "NULL" : cursor.text(i));
        rows.append(row);
    }
    return rows;
}

inline QList<QStringList> readTable(const QString &path, const QString &name)
{
    mdb::AccessFile file(path);
    return readTable(file, name);
}

/// The error that reading a table throws; number 0 when there is none.
inline Error errorOf(const QString &path, const QString &table)
{
    return errorOf([&] { readTable(path, table); });
}

/// Writes a file without the care that a result deserves, for tests that write many.
inline void writeQuickly(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("A test file cannot be written");
}

/// RC4: encodes and decodes alike.
inline void applyRc4(QByteArray key, char *bytes, qsizetype length)
{
    std::array<int, 256> s;
    std::iota(s.begin(), s.end(), 0);
    for (int i = 0, j = 0; i < 256; ++i) {
        j = (j + s[size_t(i)] + quint8(key[i % key.size()])) & 255;
        std::swap(s[size_t(i)], s[size_t(j)]);
    }
    for (int n = 0, i = 0, j = 0; n < length; ++n) {
        i = (i + 1) & 255;
        j = (j + s[size_t(i)]) & 255;
        std::swap(s[size_t(i)], s[size_t(j)]);
        bytes[n] = char(quint8(bytes[n]) ^ s[size_t((s[size_t(i)] + s[size_t(j)]) & 255)]);
    }
}

/// The encoded part of a file's header, encoded or decoded in place.
inline void applyHeaderKey(QByteArray &file)
{
    applyRc4(QByteArray("\xC7\xDA\x39\x6B", 4), file.data() + 0x18, 126);
}
