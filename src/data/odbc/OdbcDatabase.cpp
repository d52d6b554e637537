#include "data/odbc/OdbcDatabase.h"

#include "core/Error.h"
#include "core/State.h"
#include "data/Queries.h"

namespace {

constexpr qint64 rowsBetweenChecks = 1 << 14;

/// A recordset's columns, found once by name, in the order in which the rows are taken apart.
class RowReader
{
public:
    RowReader(OdbcConnection &connection, const QString &sql, const QStringList &names)
        : m_rows(connection.open(sql, names))
    {
        for (const QString &name : names)
            m_columns.push_back(m_rows->column(name));
    }

    bool next() { return m_rows->next(); }
    bool isNull(size_t index) const { return m_rows->isNull(m_columns[index]); }
    qint64 integer(size_t index) const { return m_rows->integer(m_columns[index]); }
    double number(size_t index) const { return m_rows->number(m_columns[index]); }
    qint64 instant(size_t index) const { return m_rows->instant(m_columns[index]); }
    QString text(size_t index) const { return m_rows->text(m_columns[index]); }

private:
    std::unique_ptr<Recordset> m_rows;
    std::vector<int> m_columns;
};

/// Whether a cancel ends the reading of many rows here.
bool isCancelled(qint64 rows)
{
    return rows % rowsBetweenChecks == 0 && CancelRequested;
}

} // namespace

OdbcDatabase::OdbcDatabase(const QString &connectionText, int connectionTimeout, int commandTimeout,
                           bool fetchesWhole)
    : m_connection(connectionText, connectionTimeout, commandTimeout, fetchesWhole)
{}

std::shared_ptr<const Inventory> OdbcDatabase::inventory()
{
    if (m_inventory)
        return m_inventory;
    std::vector<ItemRow> items;
    RowReader fields(m_connection, QStringLiteral("Select * from DataFields"),
                     {QStringLiteral("DataIDent"), QStringLiteral("IDent"),
                      QStringLiteral("DataName"), QStringLiteral("DataDesc"),
                      QStringLiteral("iScale"), QStringLiteral("IsGlobal")});
    while (fields.next())
        items.push_back({fields.integer(0), fields.integer(1), fields.text(2), fields.text(3),
                         scaleNumber(fields.integer(4)), fields.integer(5) != 0});
    std::vector<ScaleRow> scales;
    RowReader units(
        m_connection, QStringLiteral("Select * from Scales"),
        {QStringLiteral("iScale"), QStringLiteral("ScaleName"), QStringLiteral("ScaleAbbr")});
    while (units.next())
        scales.push_back({scaleNumber(units.integer(0)), units.text(1), units.text(2)});
    std::vector<DeviceRow> devices;
    RowReader machines(m_connection, QStringLiteral("Select * from Devices order by MachName"),
                       {QStringLiteral("IDent"), QStringLiteral("MUID"), QStringLiteral("MachName"),
                        QStringLiteral("MachDesc"), QStringLiteral("MachExclude")});
    while (machines.next())
        devices.push_back({machines.integer(0), machines.text(1), machines.text(2),
                           machines.text(3), machines.integer(4) != 0});
    m_inventory =
        std::make_shared<const Inventory>(std::move(devices), std::move(items), std::move(scales));
    return m_inventory;
}

qint64 OdbcDatabase::sampleCount()
{
    RowReader count(m_connection, GetSampleCountSQL(), {QStringLiteral("TCOUNT")});
    return count.next() ? count.integer(0) : 0;
}

void OdbcDatabase::answer(std::span<ItemQuestion> items, std::span<SummaryQuestion> summaries)
{
    for (ItemQuestion &question : items) {
        if (CancelRequested)
            return;
        answer(question);
    }
    for (SummaryQuestion &question : summaries) {
        if (CancelRequested)
            return;
        answer(question);
    }
}

void OdbcDatabase::answer(ItemQuestion &question)
{
    RowReader samples(
        m_connection,
        GetDataValuesSQL(QString::number(question.dataIdent), question.start, question.end),
        {QStringLiteral("iDate"), QStringLiteral("iState"), QStringLiteral("iValue")});
    for (qint64 rows = 1; samples.next() && !isCancelled(rows); ++rows) {
        question.answer->addSample(samples.instant(0), samples.isNull(1) ? 0 : samples.integer(1),
                                   samples.isNull(2) ? std::optional<double>() : samples.number(2));
    }
}

void OdbcDatabase::answer(SummaryQuestion &question)
{
    question.answer.clear();
    const DeviceRow *device = inventory()->device(question.muid);
    if (!device)
        return;
    RowReader rows(
        m_connection,
        GetStateSummarySQL(question.start, question.end, stateSummaryList(question.muid)),
        {QStringLiteral("DataIDent"), QStringLiteral("sumiState"), QStringLiteral("QCount"),
         QStringLiteral("IDent")});
    while (rows.next()) {
        if (rows.integer(3) == device->ident)
            question.answer.push_back({rows.integer(0), rows.integer(1), rows.integer(2)});
    }
}

void OdbcDatabase::readSelection(const std::function<void(const SelectionRow &)> &take)
{
    RowReader rows(
        m_connection, GetDataSelectionSQL(),
        {QStringLiteral("MUID"), QStringLiteral("IDent"), QStringLiteral("MachName"),
         QStringLiteral("MachDesc"), QStringLiteral("DataIDent"), QStringLiteral("DataName"),
         QStringLiteral("DataDesc"), QStringLiteral("iScale"), QStringLiteral("ScaleName"),
         QStringLiteral("ScaleAbbr"), QStringLiteral("MachExclude"), QStringLiteral("IsGlobal")});
    SelectionRow row;
    while (rows.next()) {
        const qint64 ident = rows.integer(1);
        const qint32 scale = scaleNumber(rows.integer(7));
        row.device = {ident, rows.text(0), rows.text(2), rows.text(3), rows.integer(10) != 0};
        row.item = {rows.integer(4), ident, rows.text(5),
                    rows.text(6),    scale, rows.integer(11) != 0};
        row.scale = {scale, rows.text(8), rows.text(9)};
        take(row);
    }
}
