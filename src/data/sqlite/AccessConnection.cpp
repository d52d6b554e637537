#include "data/sqlite/AccessConnection.h"

#include "core/Error.h"
#include "core/Status.h"
#include "data/DayNumbers.h"
#include "data/sqlite/CachedTable.h"
#include "data/sqlite/SampleRecordset.h"
#include "data/sqlite/SampleTable.h"
#include "data/sqlite/SqlText.h"
#include "data/sqlite/SqliteRecordset.h"

#include <QDateTime>
#include <QFileInfo>
#include <QHash>

namespace {

constexpr int stepsBetweenYields = 20'000; ///< of SQLite's machine: a millisecond or two

/// What tells that a file is no longer the one that was read.
struct FileStamp
{
    explicit FileStamp(const QString &path)
        : size(QFileInfo(path).size())
        , changed(QFileInfo(path).lastModified())
    {}
    bool operator==(const FileStamp &) const = default;

    qint64 size;
    QDateTime changed;
};

struct CloseDatabaseHandle
{
    void operator()(sqlite3 *database) const { sqlite3_close_v2(database); }
};
using DatabaseHandle = std::unique_ptr<sqlite3, CloseDatabaseHandle>;

/// CDATE: a number as a date-time, which is a day number rounded to the millisecond.
void convertToDate(sqlite3_context *context, int, sqlite3_value **values)
{
    const int type = sqlite3_value_numeric_type(values[0]);
    if (type == SQLITE_NULL)
        return;
    const double day = sqlite3_value_double(values[0]);
    if ((type == SQLITE_INTEGER || type == SQLITE_FLOAT) && isDayNumber(day))
        sqlite3_result_double(context, dayNumber(instantOfDay(day)));
    else
        sqlite3_result_error(context, "CDATE: the value is no day number", -1);
}

DatabaseHandle openMemory()
{
    sqlite3 *opened = nullptr;
    const int result = sqlite3_open_v2(":memory:", &opened,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE |
                                           SQLITE_OPEN_MEMORY | SQLITE_OPEN_NOMUTEX,
                                       nullptr);
    DatabaseHandle database(opened);
    if (result != SQLITE_OK)
        throw Error(DatabaseError, QString::fromLatin1(sqlite3_errstr(result)));
    // Texts then pass in and out, and through the collation, without conversion.
    sqlite3_exec(opened, "PRAGMA encoding = 'UTF-16'", nullptr, nullptr, nullptr);
    addAccessCollation(opened);
    sqlite3_create_function(opened, "CDATE", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr,
                            convertToDate, nullptr, nullptr);
    const auto yield = [](void *) {
        yieldToUser();
        return 0;
    };
    sqlite3_progress_handler(opened, stepsBetweenYields, yield, nullptr);
    return database;
}

} // namespace

/// One state of the file, and what was read of it.
class AccessConnection::Session : public std::enable_shared_from_this<Session>
{
public:
    explicit Session(const QString &path)
        : stamp(path)
        , m_file(path)
        , m_database(openMemory())
    {
        for (const QString &name : m_file.tableNames())
            m_names.insert(name.toCaseFolded(), name);
    }

    std::unique_ptr<Recordset> open(const QString &sql, const QStringList &wanted)
    {
        if (std::unique_ptr<Recordset> samples = openSamples(sql, wanted))
            return samples;
        if (hasEmptyList(sql))
            throw Error(DatabaseError,
                        QStringLiteral("Syntax error in query on '%1': the list in '%2' is empty")
                            .arg(m_file.path(), sql));
        const QString text =
            isSampleCountQuery(sql) && samples() ? countText() : withoutDistinctRow(sql);
        for (const QString &name : namesIn(text))
            makeTable(name);
        return std::make_unique<SqliteRecordset>(shared_from_this(), m_database.get(), m_slot,
                                                 m_file.path(), text, wanted);
    }

    /// Null when the file has none.
    SampleTable *samples()
    {
        makeTable(sampleTableName);
        return m_samples;
    }
    const SampleTable *samplesInUse() const { return m_samples; }

    QStringList warnings() const { return m_file.warnings(); }

    QStringList verify()
    {
        QStringList errors;
        for (const QString &name : m_file.tableNames()) {
            if (!m_file.linkTarget(name).isEmpty())
                continue;
            try {
                mdb::RowCursor row(m_file, m_file.table(name));
                while (row.next()) {
                }
            } catch (const Error &error) {
                errors.append(error.description);
            }
        }
        return errors + m_file.warnings();
    }

    const FileStamp stamp;

private:
    /// The recordset of a query for one item's samples, when the index alone can answer it.
    std::unique_ptr<Recordset> openSamples(const QString &sql, const QStringList &wanted)
    {
        const std::optional<SampleQuery> query = parsedSampleQuery(sql);
        if (!query || !samples())
            return {};
        QStringList columns;
        for (const mdb::Column &column : m_samples->definition().columns) {
            if (wanted.isEmpty() || wanted.contains(column.name, Qt::CaseInsensitive))
                columns.append(column.name);
        }
        for (const QString &name : std::as_const(columns)) {
            if (!m_samples->isIndexed(m_samples->definition().column(name)))
                return {};
        }
        return std::make_unique<SampleRecordset>(*m_samples, columns, query->dataIdent,
                                                 Period{query->from, query->to});
    }

    /// The answer to the count of all samples. SQLite would count them row by row, which takes
    /// nearly as long as reading them.
    QString countText()
    {
        return QStringLiteral("SELECT %1 AS [TCOUNT]").arg(m_samples->countRows());
    }

    void makeTable(const QString &spelled)
    {
        const QString key = spelled.toCaseFolded();
        const auto name = m_names.constFind(key);
        if (name == m_names.cend() || m_tables.contains(key))
            return;
        const mdb::Table &definition = m_file.table(*name);
        std::unique_ptr<VirtualTable> table;
        if (name->compare(sampleTableName, Qt::CaseInsensitive) == 0) {
            auto made = std::make_unique<SampleTable>(m_file, definition);
            m_samples = made.get();
            table = std::move(made);
        } else {
            table = std::make_unique<CachedTable>(m_file, definition);
        }
        addVirtualTable(m_database.get(), *name, *table, m_slot);
        m_tables.emplace(key, std::move(table));
    }

    mdb::AccessFile m_file;
    ErrorSlot m_slot;
    QHash<QString, QString> m_names; ///< of the file's tables, by their case-folded form
    std::unordered_map<QString, std::unique_ptr<VirtualTable>> m_tables;
    SampleTable *m_samples = nullptr;
    DatabaseHandle m_database; ///< goes before the tables that it uses
};

AccessConnection::AccessConnection(const QString &path)
    : m_path(path)
    , m_session(std::make_shared<Session>(path))
{}

AccessConnection::~AccessConnection() = default;

std::unique_ptr<Recordset> AccessConnection::open(const QString &sql, const QStringList &wanted)
{
    return m_session->open(sql, wanted);
}

void AccessConnection::expectSamples(const SampleScope &scope)
{
    if (SampleTable *samples = m_session->samples())
        samples->expect(scope);
}

void AccessConnection::refresh()
{
    if (FileStamp(m_path) != m_session->stamp)
        m_session = std::make_shared<Session>(m_path);
}

QStringList AccessConnection::warnings() const
{
    return m_session->warnings();
}

QStringList AccessConnection::verify()
{
    return m_session->verify();
}

void AccessConnection::releaseSamples()
{
    if (m_session->samplesInUse())
        m_session->samples()->forget();
}

const SampleIndex *AccessConnection::sampleIndex() const
{
    const SampleTable *samples = m_session->samplesInUse();
    return samples ? samples->index() : nullptr;
}
