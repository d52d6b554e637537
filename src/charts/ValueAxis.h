#pragma once

#include <QString>

#include <vector>

/// The vertical scale of a chart: round ticks, and a prefix of the unit for large and small numbers
/// (binary for bytes, SI for bits, hertz, watts and the like). Pure functions.
struct ValueAxis
{
    double min = 0;              ///< value at the bottom; a tick
    double max = 1;              ///< value at the top; a tick
    std::vector<double> ticks;   ///< ascending
    std::vector<QString> labels; ///< of the ticks, in the prefixed unit
    QString unit;                ///< with its prefix: "MiB/s"; may be empty

    /// 0 at the bottom, 1 at the top.
    double position(double value) const { return (value - min) / (max - min); }
};

/// An axis for values from `min` to `max` (finite, min <= max) with at most `maxSteps` steps; at
/// least one. It starts at zero unless the values are close together and far from zero.
ValueAxis valueAxis(double min, double max, const QString &unit, int maxSteps);

/// An axis of 0 to 100 percent.
ValueAxis percentAxis(int maxSteps);

/// A value for readers: about four digits, with prefix and unit ("12.35 MiB/s", "0.21 ms").
QString readableValue(double value, const QString &unit);
