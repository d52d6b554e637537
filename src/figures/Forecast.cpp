#include "figures/Forecast.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

namespace {

constexpr size_t minDays = 14;
constexpr double maxDaysAhead = 180;
constexpr double normal95 = 1.959964; ///< two-sided quantiles of the normal distribution
constexpr double normal90 = 1.644854;
constexpr double madToDeviation = 1.4826;    ///< of normally distributed noise
constexpr double medianToMeanError = 1.2533; ///< how much less the median tells than the mean

double median(std::vector<double> values)
{
    const size_t middle = values.size() / 2;
    const auto upper = values.begin() + static_cast<std::ptrdiff_t>(middle);
    std::nth_element(values.begin(), upper, values.end());
    if (values.size() % 2 == 1)
        return *upper;
    return (*std::max_element(values.begin(), upper) + *upper) / 2;
}

/// Mann and Kendall's S and its variance where there is no trend.
struct Trend
{
    double s = 0;
    double variance = 0;

    bool rises() const { return s > 0 && (s - 1) / std::sqrt(variance) > normal95; }
};

Trend trendOf(std::span<const DailyMean> days)
{
    Trend trend;
    std::map<double, double> ties;
    for (size_t i = 0; i < days.size(); ++i) {
        ties[days[i].mean] += 1;
        for (size_t j = i + 1; j < days.size(); ++j)
            trend.s += (days[j].mean > days[i].mean) - (days[j].mean < days[i].mean);
    }
    const auto term = [](double n) { return n * (n - 1) * (2 * n + 5); };
    trend.variance = term(static_cast<double>(days.size()));
    for (const auto &[mean, count] : ties)
        trend.variance -= term(count);
    trend.variance /= 18;
    return trend;
}

/// The slopes between all pairs of days, ascending.
std::vector<double> slopesOf(std::span<const DailyMean> days)
{
    std::vector<double> slopes;
    for (size_t i = 0; i < days.size(); ++i) {
        for (size_t j = i + 1; j < days.size(); ++j)
            slopes.push_back((days[j].mean - days[i].mean) /
                             static_cast<double>(days[j].day - days[i].day));
    }
    std::sort(slopes.begin(), slopes.end());
    return slopes;
}

} // namespace

std::optional<Forecast> forecast(std::span<const DailyMean> days, double limit)
{
    if (days.size() < minDays)
        return {};
    const Trend trend = trendOf(days);
    if (!trend.rises())
        return {};
    const std::vector<double> slopes = slopesOf(days);
    const double slope = median(slopes);
    if (!(slope > 0))
        return {};

    // The line goes through the middle of the days, where slope and level do not depend on each
    // other. Days count from there.
    std::vector<double> times;
    for (const DailyMean &day : days)
        times.push_back(static_cast<double>(day.day));
    const double middle = median(times);
    std::vector<double> levels;
    for (const DailyMean &day : days)
        levels.push_back(day.mean - slope * (static_cast<double>(day.day) - middle));
    const double level = median(levels);
    for (double &residual : levels)
        residual = std::abs(residual - level);
    const double levelError = normal90 * medianToMeanError * madToDeviation * median(levels) /
                              std::sqrt(static_cast<double>(days.size()));

    const double reached = (limit - level) / slope;
    const double today = times.back() - middle;
    if (!(reached > today) || reached - today >= maxDaysAhead)
        return {};

    const double count = static_cast<double>(slopes.size());
    const double spread = normal90 * std::sqrt(trend.variance);
    const auto slopeAt = [&](double rank) { // from 1
        return slopes[static_cast<size_t>(std::clamp(std::round(rank), 1.0, count)) - 1];
    };
    const double steepest = slopeAt((count + spread) / 2 + 1);
    const double flattest = slopeAt((count - spread) / 2);
    const auto together = [&](double bySlope) { return std::hypot(bySlope, levelError / slope); };
    const auto dayOf = [&](double time) { return static_cast<qint64>(std::floor(middle + time)); };

    Forecast result;
    result.slope = slope;
    result.day = dayOf(reached);
    result.earliest =
        dayOf(std::max(today, reached - together(reached - reached * slope / steepest)));
    if (flattest > 0)
        result.latest = dayOf(reached + together(reached * slope / flattest - reached)) + 1;
    return result;
}
