#include "database/AccessDatabase.h"

#include "access/AccessFile.h"
#include "base/Error.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "database/Queries.h"

#include <cmath>
#include <optional>

namespace {

constexpr qint64 rowsBetweenChecks = 1 << 14;

bool isNumeric(mdb::ColumnType type)
{
    switch (type) {
    case mdb::ColumnType::Boolean:
    case mdb::ColumnType::Byte:
    case mdb::ColumnType::Integer:
    case mdb::ColumnType::Long:
    case mdb::ColumnType::BigInt:
    case mdb::ColumnType::Currency:
    case mdb::ColumnType::Single:
    case mdb::ColumnType::Double:
    case mdb::ColumnType::Numeric:
        return true;
    default:
        return false;
    }
}

/// The rows of a table, whose columns are found by name.
class TableWalk
{
public:
    TableWalk(mdb::AccessFile &file, const QString &name)
        : m_file(file)
        , m_table(file.table(name))
        , m_row(file, m_table)
    {}

    bool next() { return m_row.next(); }
    const mdb::RowCursor &row() const { return m_row; }

    [[noreturn]] void fail(int number, const QString &column, const QString &what) const
    {
        throw Error(number, QStringLiteral("'%1', table '%2', column '%3': %4")
                                .arg(m_file.path(), m_table.name, column, what));
    }

    int column(const QString &name) const
    {
        const int number = m_table.column(name);
        if (number < 0)
            fail(ItemNotFound, name, QStringLiteral("the column is missing"));
        return number;
    }
    /// -1 when there is none.
    int optionalColumn(const QString &name) const { return m_table.column(name); }
    int numericColumn(const QString &name) const
    {
        const int number = column(name);
        if (!isNumeric(typeOf(number)))
            fail(TypeMismatch, name, QStringLiteral("it holds no numbers"));
        return number;
    }
    int dateColumn(const QString &name) const
    {
        const int number = column(name);
        if (typeOf(number) != mdb::ColumnType::DateTime)
            fail(TypeMismatch, name, QStringLiteral("it holds no date-times"));
        return number;
    }
    mdb::ColumnType typeOf(int column) const
    {
        return m_table.columns[static_cast<size_t>(column)].type;
    }
    bool isWhole(int column) const
    {
        switch (typeOf(column)) {
        case mdb::ColumnType::Boolean:
        case mdb::ColumnType::Byte:
        case mdb::ColumnType::Integer:
        case mdb::ColumnType::Long:
        case mdb::ColumnType::BigInt:
            return true;
        default:
            return false;
        }
    }

private:
    mdb::AccessFile &m_file;
    const mdb::Table &m_table;
    mdb::RowCursor m_row;
};

QString textOf(const TableWalk &walk, int column)
{
    return walk.row().isNull(column) ? QString() : walk.row().text(column);
}

qint64 integerOf(const TableWalk &walk, int column)
{
    return walk.row().integer(column);
}

std::vector<DeviceRow> readDevices(mdb::AccessFile &file)
{
    TableWalk walk(file, QStringLiteral("Devices"));
    const int ident = walk.numericColumn(QStringLiteral("IDent"));
    const int muid = walk.column(QStringLiteral("MUID"));
    const int name = walk.column(QStringLiteral("MachName"));
    const int description = walk.column(QStringLiteral("MachDesc"));
    const int excluded = walk.optionalColumn(QStringLiteral("MachExclude"));
    const int group = walk.optionalColumn(QStringLiteral("MachGroup"));
    std::vector<DeviceRow> devices;
    while (walk.next())
        devices.push_back({integerOf(walk, ident), textOf(walk, muid), textOf(walk, name),
                           textOf(walk, description),
                           excluded >= 0 && integerOf(walk, excluded) != 0,
                           group >= 0 ? textOf(walk, group) : QString()});
    return devices;
}

std::vector<ItemRow> readItems(mdb::AccessFile &file)
{
    TableWalk walk(file, QStringLiteral("DataFields"));
    const int dataIdent = walk.numericColumn(QStringLiteral("DataIDent"));
    const int ident = walk.numericColumn(QStringLiteral("IDent"));
    const int name = walk.column(QStringLiteral("DataName"));
    const int description = walk.column(QStringLiteral("DataDesc"));
    const int scale = walk.numericColumn(QStringLiteral("iScale"));
    const int global = walk.numericColumn(QStringLiteral("IsGlobal"));
    std::vector<ItemRow> items;
    while (walk.next())
        items.push_back({integerOf(walk, dataIdent), integerOf(walk, ident), textOf(walk, name),
                         textOf(walk, description), scaleNumber(integerOf(walk, scale)),
                         integerOf(walk, global) != 0});
    return items;
}

std::vector<ScaleRow> readScales(mdb::AccessFile &file)
{
    TableWalk walk(file, QStringLiteral("Scales"));
    const int scale = walk.numericColumn(QStringLiteral("iScale"));
    const int name = walk.column(QStringLiteral("ScaleName"));
    const int abbreviation = walk.column(QStringLiteral("ScaleAbbr"));
    std::vector<ScaleRow> scales;
    while (walk.next())
        scales.push_back(
            {scaleNumber(integerOf(walk, scale)), textOf(walk, name), textOf(walk, abbreviation)});
    return scales;
}

/// One pass over the samples that answers all questions.
class SamplePass
{
public:
    SamplePass(mdb::AccessFile &file, std::span<ItemQuestion> items)
        : m_walk(file, QStringLiteral("DataValues"))
        , m_ident(m_walk.numericColumn(QStringLiteral("DataIDent")))
        , m_date(m_walk.dateColumn(QStringLiteral("iDate")))
        , m_state(m_walk.numericColumn(QStringLiteral("iState")))
        , m_value(m_walk.numericColumn(QStringLiteral("iValue")))
        , m_hasWholeIdents(m_walk.isWhole(m_ident))
    {
        for (ItemQuestion &question : items)
            add(question.dataIdent, {instantBound(question.start),
                                     instantBound(question.end) - (question.endExcluded ? 1 : 0),
                                     question.lastBefore, question.answer, nullptr});
    }

    void count(qint64 dataIdent, const QDateTime &start, const QDateTime &end, StateCount &counts)
    {
        add(dataIdent, {instantBound(start), instantBound(end), false, nullptr, &counts});
    }

    /// The number of all rows; null when a cancel ended the pass.
    std::optional<qint64> run()
    {
        qint64 rows = 0;
        while (m_walk.next()) {
            if (++rows % rowsBetweenChecks == 0 && program().CancelRequested)
                return std::nullopt;
            take(m_walk.row());
        }
        return rows;
    }

private:
    /// A question for the samples of an item: those with from <= instant <= to.
    struct Target
    {
        qint64 from;
        qint64 to;
        bool wantsBefore;
        SampleSink *sink;
        StateCount *counts;
    };

    /// Bounds are whole seconds, as in queries.
    static qint64 instantBound(const QDateTime &wall)
    {
        return LocalToUTC(wall).toMSecsSinceEpoch();
    }

    void add(qint64 dataIdent, const Target &target)
    {
        const auto known = m_indexes.constFind(dataIdent);
        if (known != m_indexes.cend()) {
            m_targets[*known].push_back(target);
            return;
        }
        m_indexes.insert(dataIdent, m_targets.size());
        m_targets.push_back({target});
    }

    void take(const mdb::RowCursor &row)
    {
        if (row.isNull(m_ident))
            return;
        const auto index = m_indexes.constFind(identOf(row));
        if (index == m_indexes.cend() || row.isNull(m_date))
            return;
        const qint64 instant = row.instant(m_date);
        for (const Target &target : m_targets[*index]) {
            if (instant > target.to || (instant < target.from && !target.wantsBefore))
                continue;
            const qint64 state = stateOf(row);
            if (instant < target.from) {
                target.sink->addSampleBefore(instant, state);
            } else if (target.counts) {
                ++target.counts->tests;
                target.counts->successes += state;
            } else {
                target.sink->addSample(instant, state,
                                       row.isNull(m_value) ? std::optional<double>()
                                                           : row.number(m_value));
            }
        }
    }

    qint64 identOf(const mdb::RowCursor &row) const
    {
        if (m_hasWholeIdents)
            return row.integer(m_ident);
        const double ident = row.number(m_ident);
        if (ident != std::nearbyint(ident))
            m_walk.fail(TypeMismatch, QStringLiteral("DataIDent"),
                        QStringLiteral("%1 is not a whole number").arg(ident));
        return row.integer(m_ident);
    }

    /// True of a Boolean is -1, as in Access.
    qint64 stateOf(const mdb::RowCursor &row) const
    {
        if (row.isNull(m_state))
            return 0;
        const qint64 state = row.integer(m_state);
        return m_walk.typeOf(m_state) == mdb::ColumnType::Boolean ? -state : state;
    }

    TableWalk m_walk;
    int m_ident;
    int m_date;
    int m_state;
    int m_value;
    bool m_hasWholeIdents;
    QHash<qint64, size_t> m_indexes; ///< of an item's targets
    std::vector<std::vector<Target>> m_targets;
};

} // namespace

AccessDatabase::AccessDatabase(const QString &path)
    : m_file(std::make_unique<mdb::AccessFile>(path))
{}

AccessDatabase::~AccessDatabase() = default;

std::shared_ptr<const Inventory> AccessDatabase::inventory()
{
    if (!m_inventory)
        m_inventory = std::make_shared<const Inventory>(readDevices(*m_file), readItems(*m_file),
                                                        readScales(*m_file));
    return m_inventory;
}

qint64 AccessDatabase::sampleCount()
{
    if (!m_sampleCount)
        m_sampleCount = SamplePass(*m_file, {}).run();
    return m_sampleCount.value_or(0);
}

std::optional<qint64> AccessDatabase::newestSample()
{
    TableWalk walk(*m_file, QStringLiteral("DataValues"));
    const int date = walk.dateColumn(QStringLiteral("iDate"));
    std::optional<qint64> newest;
    while (walk.next()) {
        if (!walk.row().isNull(date))
            newest = std::max(walk.row().instant(date), newest.value_or(walk.row().instant(date)));
    }
    return newest;
}

void AccessDatabase::answer(std::span<ItemQuestion> items, std::span<SummaryQuestion> summaries)
{
    SamplePass pass(*m_file, items);
    for (SummaryQuestion &question : summaries) {
        question.answer.clear();
        const DeviceRow *device = inventory()->device(question.muid);
        if (!device)
            continue;
        for (const ItemRow *item : inventory()->countedItems(device->ident))
            question.answer.push_back({item->dataIdent, 0, 0});
        for (StateCount &counts : question.answer)
            pass.count(counts.dataIdent, summaryStart(question.start), question.end, counts);
    }
    if (const std::optional<qint64> rows = pass.run())
        m_sampleCount = rows;
    for (SummaryQuestion &question : summaries)
        std::erase_if(question.answer, [](const StateCount &counts) { return counts.tests == 0; });
}

void AccessDatabase::readSelection(const std::function<void(const SelectionRow &)> &take)
{
    const std::shared_ptr<const Inventory> rows = inventory();
    QMultiHash<qint64, const DeviceRow *> devices;
    for (const DeviceRow &device : rows->devices())
        devices.insert(device.ident, &device);
    for (const ItemRow &item : rows->items()) {
        const ScaleRow *scale = rows->scale(item.scale);
        if (!scale)
            continue;
        const auto [from, to] = std::as_const(devices).equal_range(item.deviceIdent);
        for (auto device = from; device != to; ++device)
            take({**device, item, *scale});
    }
}

QStringList AccessDatabase::warnings() const
{
    return m_file->warnings();
}

QStringList AccessDatabase::verify()
{
    mdb::AccessFile &file = *m_file;
    QStringList errors;
    for (const QString &name : file.tableNames()) {
        if (!file.linkTarget(name).isEmpty())
            continue;
        try {
            mdb::RowCursor row(file, file.table(name));
            while (row.next()) {
            }
        } catch (const Error &error) {
            errors.append(error.description);
        }
    }
    return errors + file.warnings();
}
