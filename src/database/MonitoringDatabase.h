#pragma once

#include "database/Inventory.h"
#include "series/SampleSink.h"

#include <QDateTime>

#include <functional>
#include <memory>
#include <optional>
#include <span>

/// A question for the samples of one data item. Bounds are wall times, both inclusive.
struct ItemQuestion
{
    qint64 dataIdent = 0;
    QDateTime start;
    QDateTime end;
    SampleSink *answer = nullptr; ///< takes the samples
    bool lastBefore = false;      ///< the last one before `start`, too
    bool endExcluded = false;     ///< `end` is the first instant that is not asked for
};

/// Tests of one state item.
struct StateCount
{
    qint64 dataIdent = 0;
    qint64 successes = 0; ///< sum of the states
    qint64 tests = 0;
};

/// A question for the state summary of one device: the tests of its state items with IsGlobal set.
/// A period that starts at midnight starts one second later.
struct SummaryQuestion
{
    QString muid;
    QDateTime start;
    QDateTime end;
    std::vector<StateCount> answer; ///< of the items that have samples
};

/// A device, one of its data items and that item's scale, as the selection lists show them.
struct SelectionRow
{
    DeviceRow device;
    ItemRow item;
    ScaleRow scale;
};

/// An open monitoring database, read-only: answers to typed questions. How they are asked (in which
/// SQL dialect, or of a file) is known only here. Used on one thread at a time. Each question
/// throws Error with the database's number and description.
class MonitoringDatabase
{
public:
    virtual ~MonitoringDatabase() = default;

    /// Devices, items and scales; read once.
    virtual std::shared_ptr<const Inventory> inventory() = 0;

    /// How many samples the database holds.
    virtual qint64 sampleCount() = 0;

    /// The instant of the newest sample; nothing where there is none.
    virtual std::optional<qint64> newestSample() = 0;

    /// Answers questions for samples. Ends early, with answers that are not complete, when
    /// `CancelRequested` is set meanwhile.
    virtual void answer(std::span<ItemQuestion> items, std::span<SummaryQuestion> summaries) = 0;

    /// True where many questions cost little more than one: an Access file is read once for all.
    virtual bool answersManyAtOnce() const = 0;

    /// Each data item with its device and its scale, in no order.
    virtual void readSelection(const std::function<void(const SelectionRow &)> &take) = 0;

    /// What is wrong with a database file as far as it was read, but no error: a line for each
    /// table that states more rows than it has. None from a server.
    virtual QStringList warnings() const { return {}; }

    /// Reads all tables of a database file; a line for each error and each warning. None from a
    /// server.
    virtual QStringList verify() { return {}; }

    /// False when a failure has ended the connection.
    virtual bool isOpen() { return true; }
};
