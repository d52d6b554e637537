#pragma once

#include <QProcess>

#include <stdexcept>

/// What the packaged mdbtools say of a file. A tool that is missing, fails or complains throws,
/// which fails the test.
inline QString mdbTool(const QString &tool, const QStringList &arguments)
{
    QProcess process;
    process.start(tool, arguments);
    const bool ended = process.waitForStarted() && process.waitForFinished(120'000);
    const QByteArray complaints = process.readAllStandardError();
    if (!ended || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0 ||
        !complaints.isEmpty())
        throw std::runtime_error(
            qPrintable(tool + ": " + process.errorString() + ", " + QString::fromUtf8(complaints)));
    return QString::fromUtf8(process.readAllStandardOutput());
}

/// A table's rows as lists of texts, bytes as hexadecimal digits; the values must not hold the
/// characters 30 and 31.
inline QList<QStringList> mdbRows(const QString &file, const QString &table)
{
    const QString text =
        mdbTool("mdb-export", {"-H", "-Q", "-d", "\x1f", "-R", "\x1e", "-0", "NULL", "-b", "hex",
                               "-T", "%Y-%m-%dT%H:%M:%S", file, table});
    QList<QStringList> rows;
    for (const QString &row : text.split(u'\x1e', Qt::SkipEmptyParts))
        rows.append(row.split(u'\x1f'));
    return rows;
}

inline QStringList mdbTables(const QString &file)
{
    return mdbTool("mdb-tables", {"-1", file}).split(u'\n', Qt::SkipEmptyParts);
}
