#include "database/OdbcDatabase.h"

#include "base/Error.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "odbc/OdbcRecordset.h"

namespace {

constexpr qint64 rowsBetweenChecks = 1 << 14;

/// Whether to stop reading rows because of a cancel.
bool isCancelled(qint64 rows)
{
    return rows % rowsBetweenChecks == 0 && program().CancelRequested;
}

} // namespace

OdbcDatabase::OdbcDatabase(SqlDialect dialect, const QString &connectionText, int connectionTimeout,
                           int commandTimeout, bool fetchesWhole)
    : m_dialect(dialect)
    , m_connection(std::make_shared<OdbcConnection>(connectionText, connectionTimeout,
                                                    commandTimeout, fetchesWhole))
{}

std::shared_ptr<const Inventory> OdbcDatabase::inventory()
{
    if (m_inventory)
        return m_inventory;
    std::vector<ItemRow> items;
    const auto fields = m_connection->open(QStringLiteral("Select * from DataFields"),
                                           {QStringLiteral("DataIDent"), QStringLiteral("IDent"),
                                            QStringLiteral("DataName"), QStringLiteral("DataDesc"),
                                            QStringLiteral("iScale"), QStringLiteral("IsGlobal")});
    while (fields->next())
        items.push_back({fields->integer(0), fields->integer(1), fields->text(2), fields->text(3),
                         scaleNumber(fields->integer(4)), fields->integer(5) != 0});
    std::vector<ScaleRow> scales;
    const auto units = m_connection->open(
        QStringLiteral("Select * from Scales"),
        {QStringLiteral("iScale"), QStringLiteral("ScaleName"), QStringLiteral("ScaleAbbr")});
    while (units->next())
        scales.push_back({scaleNumber(units->integer(0)), units->text(1), units->text(2)});
    std::vector<DeviceRow> devices;
    bool hasGroups = true;
    const auto machines = openDevices(hasGroups);
    while (machines->next())
        devices.push_back({machines->integer(0), machines->text(1), machines->text(2),
                           machines->text(3), machines->integer(4) != 0,
                           hasGroups ? machines->text(5) : QString()});
    m_inventory =
        std::make_shared<const Inventory>(std::move(devices), std::move(items), std::move(scales));
    return m_inventory;
}

/// `hasGroups`: not every database has a column for them.
std::unique_ptr<OdbcRecordset> OdbcDatabase::openDevices(bool &hasGroups)
{
    const QString sql = QStringLiteral("Select * from Devices order by MachName");
    QStringList columns = {QStringLiteral("IDent"),       QStringLiteral("MUID"),
                           QStringLiteral("MachName"),    QStringLiteral("MachDesc"),
                           QStringLiteral("MachExclude"), QStringLiteral("MachGroup")};
    try {
        return m_connection->open(sql, columns);
    } catch (const Error &error) {
        if (error.number != ItemNotFound)
            throw;
    }
    hasGroups = false;
    columns.removeLast();
    return m_connection->open(sql, columns);
}

qint64 OdbcDatabase::sampleCount()
{
    const auto count = m_connection->open(GetSampleCountSQL(m_dialect), {QStringLiteral("TCOUNT")});
    return count->next() ? count->integer(0) : 0;
}

std::optional<qint64> OdbcDatabase::newestSample()
{
    const auto newest = m_connection->open(GetNewestSampleSQL(), {QStringLiteral("TNEWEST")});
    return newest->next() && !newest->isNull(0) ? std::optional(newest->instant(0)) : std::nullopt;
}

void OdbcDatabase::answer(std::span<ItemQuestion> items, std::span<SummaryQuestion> summaries)
{
    for (ItemQuestion &question : items) {
        if (program().CancelRequested)
            return;
        answer(question);
    }
    for (SummaryQuestion &question : summaries) {
        if (program().CancelRequested)
            return;
        answer(question);
    }
}

void OdbcDatabase::answer(ItemQuestion &question)
{
    const QString ident = QString::number(question.dataIdent);
    const qint64 end = LocalToUTC(question.end).toMSecsSinceEpoch();
    const auto samples = m_connection->open(
        GetDataValuesSQL(m_dialect, ident, question.start, question.end),
        {QStringLiteral("iDate"), QStringLiteral("iState"), QStringLiteral("iValue")});
    for (qint64 rows = 1; samples->next() && !isCancelled(rows); ++rows) {
        const qint64 instant = samples->instant(0);
        if (question.endExcluded && instant >= end)
            continue;
        question.answer->addSample(instant, samples->isNull(1) ? 0 : samples->integer(1),
                                   samples->isNull(2) ? std::optional<double>()
                                                      : samples->number(2));
    }
    if (!question.lastBefore)
        return;
    const auto before = m_connection->open(GetLastValueBeforeSQL(m_dialect, ident, question.start),
                                           {QStringLiteral("iDate"), QStringLiteral("iState")});
    while (before->next())
        question.answer->addSampleBefore(before->instant(0),
                                         before->isNull(1) ? 0 : before->integer(1));
}

void OdbcDatabase::answer(SummaryQuestion &question)
{
    question.answer.clear();
    const DeviceRow *device = inventory()->device(question.muid);
    if (!device)
        return;
    const auto rows = m_connection->open(GetStateSummarySQL(m_dialect, question.start, question.end,
                                                            stateSummaryList(question.muid)),
                                         {QStringLiteral("DataIDent"), QStringLiteral("sumiState"),
                                          QStringLiteral("QCount"), QStringLiteral("IDent")});
    while (rows->next()) {
        if (rows->integer(3) == device->ident)
            question.answer.push_back({rows->integer(0), rows->integer(1), rows->integer(2)});
    }
}

void OdbcDatabase::readSelection(const std::function<void(const SelectionRow &)> &take)
{
    const auto rows = m_connection->open(
        GetDataSelectionSQL(),
        {QStringLiteral("MUID"), QStringLiteral("IDent"), QStringLiteral("MachName"),
         QStringLiteral("MachDesc"), QStringLiteral("DataIDent"), QStringLiteral("DataName"),
         QStringLiteral("DataDesc"), QStringLiteral("iScale"), QStringLiteral("ScaleName"),
         QStringLiteral("ScaleAbbr"), QStringLiteral("MachExclude"), QStringLiteral("IsGlobal")});
    SelectionRow row;
    while (rows->next()) {
        const qint64 ident = rows->integer(1);
        const qint32 scale = scaleNumber(rows->integer(7));
        row.device = {ident, rows->text(0), rows->text(2), rows->text(3), rows->integer(10) != 0};
        row.item = {rows->integer(4), ident, rows->text(5),
                    rows->text(6),    scale, rows->integer(11) != 0};
        row.scale = {scale, rows->text(8), rows->text(9)};
        take(row);
    }
}
