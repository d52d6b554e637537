#pragma once

#include <QtGlobal>

/// A promised success rate, and what became of it. Pure; safe on any thread.
struct TargetResult
{
    double target = 0; ///< percent, 0 to 100, to a ten-thousandth
    qint64 tests = 0;  ///< those that count, at least one
    qint64 failures = 0;

    /// How many of the tests may fail: (100 - target) % of them, rounded down.
    qint64 allowedFailures() const;
    bool isMet() const { return failures <= allowedFailures(); }
    /// Percentage points above the target; negative where it is missed.
    double margin() const;
};
