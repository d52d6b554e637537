#include "figures/Targets.h"

#include <cmath>

qint64 TargetResult::allowedFailures() const
{
    constexpr qint64 whole = 1'000'000; // 100 %, in ten-thousandths of a percent
    return (whole - std::llround(target * 10'000)) * tests / whole;
}

double TargetResult::margin() const
{
    return 100.0 * static_cast<double>(tests - failures) / static_cast<double>(tests) - target;
}
