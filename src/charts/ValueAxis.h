#pragma once

#include <QString>

#include <vector>

/// The vertical scale of a chart: round ticks, and a prefix of the unit where the numbers ask for
/// one (binary for bytes, SI for bits, hertz, watts and the like). Pure functions.
struct ValueAxis
{
    double least = 0;            ///< value at the foot; a tick
    double greatest = 1;         ///< value at the top; a tick
    std::vector<double> ticks;   ///< ascending
    std::vector<QString> labels; ///< of the ticks, in the prefixed unit
    QString unit;                ///< with its prefix: "MiB/s"; may be empty

    /// 0 at the foot, 1 at the top.
    double position(double value) const { return (value - least) / (greatest - least); }
};

/// An axis that holds all values from `least` to `greatest` (finite, least <= greatest) with at
/// most `mostTicks` steps (at least 1). It begins at zero unless the values lie close together far
/// from it.
ValueAxis valueAxis(double least, double greatest, const QString &unit, int mostSteps);

/// An axis of 0 to 100 percent.
ValueAxis percentAxis(int mostSteps);

/// A value for reading: about four digits, with prefix and unit ("12.35 MiB/s", "0.21 ms").
QString readableValue(double value, const QString &unit);
