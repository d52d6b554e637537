#pragma once

#include "database/MonitoringDatabase.h"
#include "database/Queries.h"
#include "odbc/OdbcConnection.h"

/// A monitoring database in SQL Server or an ODBC data source, queried with the texts of
/// database/Queries.h.
class OdbcDatabase : public MonitoringDatabase
{
public:
    /// Connects; the other arguments are those of OdbcConnection. Throws Error.
    OdbcDatabase(SqlDialect dialect, const QString &connectionText, int connectionTimeout,
                 int commandTimeout, bool fetchesWhole);

    std::shared_ptr<const Inventory> inventory() override;
    qint64 sampleCount() override;
    std::optional<qint64> newestSample() override;
    void answer(std::span<ItemQuestion> items, std::span<SummaryQuestion> summaries) override;
    bool answersManyAtOnce() const override { return false; }
    void readSelection(const std::function<void(const SelectionRow &)> &take) override;
    bool isOpen() override { return m_connection->isOpen(); }

private:
    std::unique_ptr<OdbcRecordset> openDevices(bool &hasGroups);
    void answer(ItemQuestion &question);
    void answer(SummaryQuestion &question);

    const SqlDialect m_dialect;
    std::shared_ptr<OdbcConnection> m_connection;
    std::shared_ptr<const Inventory> m_inventory;
};
