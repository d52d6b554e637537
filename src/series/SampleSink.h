#pragma once

#include <QtGlobal>

#include <optional>

/// Takes the samples of one data item as they are read, in any order. Used by one thread at a time.
class SampleSink
{
public:
    virtual ~SampleSink() = default;

    /// `instant` in milliseconds since 1970-01-01 UTC. `state`: 0 a failure. `value`: nothing where
    /// it is NULL.
    virtual void addSample(qint64 instant, qint64 state, std::optional<double> value) = 0;

    /// The same of samples before those that were asked for: all of them or the last one alone.
    virtual void addSampleBefore(qint64 instant, qint64 state)
    {
        Q_UNUSED(instant)
        Q_UNUSED(state)
    }

protected:
    SampleSink() = default;
    SampleSink(const SampleSink &) = default;
    SampleSink &operator=(const SampleSink &) = default;
};
