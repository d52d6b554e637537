/// access-export FILE [TABLE]: lists the user tables of an Access file, or prints one as CSV, its
/// columns in the order of their numbers. A linked table is listed with its target:
/// "NAME (linked to 'TABLE' in 'DATABASE')". Fewer rows than a table states are a warning on
/// standard error; the status stays 0. Control characters are listed as blanks, and printed as they
/// are.
///
/// UTF-8, one record a line ("\n"), the first one with the column names. A field that holds a
/// comma, a quote or a line break is quoted. NULL is an empty field, an empty text is "". Booleans
/// are 0 and 1, dates "yyyy-MM-ddTHH:mm:ss" (then ".zzz" if not zero), floating-point numbers the
/// shortest text that reads back as the same number of their type, Currency and Numeric
/// plain decimals without trailing zeros, bytes hexadecimal, GUIDs "{...}" in upper case.

#include "access/AccessFile.h"
#include "base/Error.h"
#include "base/OneLine.h"
#include "base/Paths.h"
#include "base/ProgramState.h"

#include <QCoreApplication>
#include <QDir>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <numeric>
#include <vector>

namespace {

constexpr qsizetype bufferSize = 1 << 20;

/// Standard output, written in large pieces.
class Output
{
public:
    QByteArray buffer;

    void flushWhenLarge()
    {
        if (buffer.size() > bufferSize)
            flush();
    }

    void flush()
    {
        const auto size = static_cast<size_t>(buffer.size());
        if (std::fwrite(buffer.constData(), 1, size, stdout) != size || std::fflush(stdout) != 0)
            throw Error(DeviceIO, QStringLiteral("standard output cannot be written"));
        buffer.resize(0); // keeps the memory
    }
};

/// Quotes the field that starts at `start` if necessary. Empty texts are quoted too.
void quoteFrom(QByteArray &out, qsizetype start)
{
    const QByteArrayView field = QByteArrayView(out).sliced(start);
    const auto isSpecial = [](char c) { return c == ',' || c == '"' || c == '\n' || c == '\r'; };
    if (!field.isEmpty() && std::none_of(field.begin(), field.end(), isSpecial))
        return;
    QByteArray text = field.toByteArray();
    text.replace('"', "\"\"");
    out.truncate(start);
    out += '"' + text + '"';
}

void listTables(const mdb::AccessFile &file, Output &output)
{
    for (const QString &name : file.tableNames()) {
        QString line = name;
        if (const QString target = file.linkTarget(name); !target.isEmpty())
            line += QStringLiteral(" (linked to %1)").arg(target);
        output.buffer += oneLine(line).toUtf8() + '\n';
    }
}

/// The columns in the order of their numbers, as other readers list them.
std::vector<int> columnsByNumber(const mdb::Table &table)
{
    std::vector<int> columns(table.columns.size());
    std::iota(columns.begin(), columns.end(), 0);
    std::stable_sort(columns.begin(), columns.end(), [&](int a, int b) {
        return table.columns[static_cast<size_t>(a)].number <
               table.columns[static_cast<size_t>(b)].number;
    });
    return columns;
}

void printTable(mdb::AccessFile &file, const QString &name, Output &output)
{
    const mdb::Table &table = file.table(name);
    const std::vector<int> columns = columnsByNumber(table);
    QByteArray &out = output.buffer;
    for (const int column : columns) {
        if (column != columns.front())
            out += ',';
        const qsizetype start = out.size();
        out += table.columns[static_cast<size_t>(column)].name.toUtf8();
        quoteFrom(out, start);
    }
    out += '\n';

    mdb::RowCursor row(file, table);
    while (row.next()) {
        for (const int column : columns) {
            if (column != columns.front())
                out += ',';
            if (row.isNull(column))
                continue;
            const qsizetype start = out.size();
            row.appendText(column, out);
            quoteFrom(out, start);
        }
        out += '\n';
        output.flushWhenLarge();
    }
}

void printError(const QString &text)
{
    std::fprintf(stderr, "access-export: %s\n", oneLine(text).toUtf8().constData());
}

int run(const QString &path, const QString &table)
{
    try {
        Output output;
        mdb::AccessFile file(path);
        if (table.isNull())
            listTables(file, output);
        else
            printTable(file, table, output);
        output.flush();
        const QStringList warnings = file.warnings();
        for (const QString &warning : warnings)
            printError(QLatin1String("warning: ") + warning);
        return 0;
    } catch (const Error &error) {
        printError(errorTail(error));
    } catch (const std::exception &error) { // of allocations
        printError(u'\'' + path + QLatin1String("', table '") + table +
                   QLatin1String("': not enough memory: ") + QString::fromLocal8Bit(error.what()));
    }
    return 1;
}

} // namespace

int main(int argc, char *argv[])
{
    const ProgramState state;
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2 || arguments.size() > 3) {
        std::fputs("usage: access-export FILE [TABLE]\n", stderr);
        return 2;
    }
    setProgramFolder(QDir::currentPath()); // FILE is relative to it
    return run(arguments.at(1), arguments.value(2));
}
