#pragma once

#include <QtGlobal>

#include <optional>
#include <span>

/// When a rising counter reaches its limit. Pure; safe on any thread.

/// The mean of a counter over one day.
struct DailyMean
{
    qint64 day = 0; ///< any count of days, such as the Julian day; ascending, may have holes
    double mean = 0;
};

struct Forecast
{
    double slope = 0;             ///< units a day
    qint64 day = 0;               ///< on which the limit is reached, counted as in DailyMean
    qint64 earliest = 0;          ///< the range in which that day lies nine times of ten
    std::optional<qint64> latest; ///< nothing: maybe never
};

/// Forecast from the daily means of 14 days at least: the slope is Theil and Sen's, the median of
/// the slopes between all pairs of days, its interval that of Sen (1968), and the level at the
/// middle of the days has its own. Nothing where the Mann-Kendall test (with ties, two-sided at
/// 95 %) does not say that the counter rises, where the limit is reached already, or where it is
/// 180 days off or more.
std::optional<Forecast> forecast(std::span<const DailyMean> days, double limit);
