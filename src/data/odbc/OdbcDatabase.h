#pragma once

#include "data/MonitoringDatabase.h"
#include "data/odbc/OdbcConnection.h"

/// A monitoring database in SQL Server or behind an ODBC data source, asked with the texts of
/// data/Queries.h.
class OdbcDatabase : public MonitoringDatabase
{
public:
    /// Connects; the arguments are those of OdbcConnection. Throws Error.
    OdbcDatabase(const QString &connectionText, int connectionTimeout, int commandTimeout,
                 bool fetchesWhole);

    std::shared_ptr<const Inventory> inventory() override;
    qint64 sampleCount() override;
    void answer(std::span<ItemQuestion> items, std::span<SummaryQuestion> summaries) override;
    bool answersManyAtOnce() const override { return false; }
    void readSelection(const std::function<void(const SelectionRow &)> &take) override;
    void refresh() override { m_inventory.reset(); }
    bool isOpen() override { return m_connection.isOpen(); }

private:
    void answer(ItemQuestion &question);
    void answer(SummaryQuestion &question);

    OdbcConnection m_connection;
    std::shared_ptr<const Inventory> m_inventory;
};
