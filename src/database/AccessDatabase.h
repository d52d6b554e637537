#pragma once

#include "database/MonitoringDatabase.h"

namespace mdb {
class AccessFile;
}

/// A monitoring database in an Access file. Its small tables are read once; all questions for
/// samples are answered in one pass over the file.
class AccessDatabase : public MonitoringDatabase
{
public:
    /// Opens a file given by its path in the file system. Throws Error.
    explicit AccessDatabase(const QString &path);
    ~AccessDatabase() override;

    std::shared_ptr<const Inventory> inventory() override;
    qint64 sampleCount() override;
    std::optional<qint64> newestSample() override;
    void answer(std::span<ItemQuestion> items, std::span<SummaryQuestion> summaries) override;
    bool answersManyAtOnce() const override { return true; }
    void readSelection(const std::function<void(const SelectionRow &)> &take) override;
    QStringList warnings() const override;
    QStringList verify() override;

private:
    std::unique_ptr<mdb::AccessFile> m_file;
    std::shared_ptr<const Inventory> m_inventory;
    std::optional<qint64> m_sampleCount;
};
