#pragma once

#include "series/CalculatedSummary.h"
#include "series/SampleSink.h"
#include "series/TestTrack.h"

#include <memory>

/// All that one data item's samples are folded into while they are read once: the buckets of the
/// report's period, those of further periods, and the times of its tests.
class ItemFold : public SampleSink
{
public:
    /// Instants, from <= t <= to.
    struct Span
    {
        qint64 from = 0;
        qint64 to = 0;

        bool contains(qint64 instant) const { return instant >= from && instant <= to; }
    };

    /// The report's period; see CalculatedSummary.
    ItemFold(const Span &span, const SharedAxis &axis, qint64 latest);

    /// Buckets of another period too.
    void addPeriod(const Span &span, const SharedAxis &axis);
    /// The times of the tests too; those before the span are noted as such.
    void trackTests(const Span &span);

    const CalculatedSummary &summary() const { return m_parts.front().summary; }
    /// Of the period that was added as number `index`, from 0.
    const CalculatedSummary &summaryOf(size_t index) const { return m_parts[index + 1].summary; }
    const TestTrack &tests() const { return m_tests; }

    /// What the samples to ask for lie in.
    Span wholeSpan() const { return m_whole; }

    void addSample(qint64 instant, qint64 state, std::optional<double> value) override;
    void addSampleBefore(qint64 instant, qint64 state) override;

private:
    struct Part
    {
        Span span;
        CalculatedSummary summary;
    };
    void extend(const Span &span);

    std::vector<Part> m_parts;
    TestTrack m_tests;
    std::optional<Span> m_tracked;
    Span m_whole;
};
