#pragma once

#include "data/MonitoringDatabase.h"

/// A monitoring database in an Access file. Its small tables are read once; questions for samples
/// are answered in one pass over the file, whatever their number.
class AccessDatabase : public MonitoringDatabase
{
public:
    /// Opens a file given by its path in the file system. Throws Error.
    explicit AccessDatabase(const QString &path);
    ~AccessDatabase() override;

    std::shared_ptr<const Inventory> inventory() override;
    qint64 sampleCount() override;
    void answer(std::span<ItemQuestion> items, std::span<SummaryQuestion> summaries) override;
    bool answersManyAtOnce() const override { return true; }
    void readSelection(const std::function<void(const SelectionRow &)> &take) override;
    void refresh() override;
    QStringList warnings() const override;
    QStringList verify() override;

private:
    class State;
    QString m_path;
    std::unique_ptr<State> m_state;
};
