#pragma once

#include "charts/ChartStatistics.h"
#include "figures/Timeline.h"

#include <QSize>
#include <QString>

#include <variant>
#include <vector>

/// Charts as values: they can be drawn on any thread, now or later, and look the same every time.

/// The texts and the size that every chart has.
struct ChartFrame
{
    QString title;        ///< the chart definition's title
    QString subtitle;     ///< device and item, or "Basis: ..."
    QString period;       ///< "yyyy-MM-dd HH:mm to yyyy-MM-dd HH:mm", local time
    QString zone;         ///< time zone of all times in the chart
    QString credit;       ///< the product and the year, at the bottom
    QSize size{640, 390}; ///< logical pixels
    int quality = 2;      ///< ChartQuality: 0 plain and smallest, 1 plain, 2 antialiased,
                          ///< 3 antialiased at twice the pixels
    int labelStep = 1;    ///< label every n-th bucket at most
};

/// Success rate per bucket of a state item.
struct StateChart
{
    ChartFrame frame;
    DataSeries series;
    StateStatistics statistics = stateStatistics(series);
};

/// Mean per bucket of a counter item, with its lines.
struct CounterChart
{
    ChartFrame frame;
    QString valueLabel; ///< sample label and unit of the value axis
    QString unit;       ///< abbreviation of the scale, "ms", "%", "B/s"; may be empty
    DataSeries series;
    CounterStatistics statistics = counterStatistics(series);
};

/// Success rate by device, in the order given.
struct DeviceRateChart
{
    struct Device
    {
        QString name;
        qint64 successes = 0;
        qint64 failures = 0;
        bool hasData = false;
    };
    ChartFrame frame;
    QString valueAxisTitle;
    QString categoryAxisTitle;
    std::vector<Device> devices;
};

/// When each device was up: a row a device, time across.
struct TimelineChart
{
    enum class Trend { None, Better, Worse };
    struct Row
    {
        QString name;
        TimelineParts parts;
        QString rate;   ///< as shown at the right
        QString change; ///< against the preceding period; may be empty
        Trend trend = Trend::None;
        bool isBad = false; ///< the rate is told as a failure
    };
    ChartFrame frame;
    Period period;
    std::vector<bool> excluded; ///< see excludedParts()
    std::vector<Row> rows;      ///< the worst first
    QString note;               ///< what is not shown; may be empty
};

using Chart = std::variant<StateChart, CounterChart, DeviceRateChart, TimelineChart>;
