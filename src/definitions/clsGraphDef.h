#pragma once

#include "base/Clock.h"
#include "definitions/Dates.h"

#include <pugixml.hpp>

/// Width of one interval of a chart.
enum ChartFrequencyCode : qint32 { ByMinute = 0, ByHour, ByDay, ByMonth, ByYear };

/// How a chart's period is chosen.
enum SubFrequencyCode : qint32 {
    LastIntervals = 0, ///< the last IntervalCount intervals up to EndTime
    FixedPeriod = 2    ///< the calendar period of ChartDuration; any other code: a custom range
};

/// Calendar periods, and the code that marks a custom range.
enum ChartDurationCode : qint32 {
    Today = 0,
    ThisWeek,
    ThisMonth,
    ThisYear,
    Yesterday,
    LastWeek,
    LastMonth,
    LastYear,
    CustomRange,
    // Older versions do not know these: their --check and editor say so.
    ThisMondayWeek, ///< from Monday to Sunday
    LastMondayWeek,
    Last7Days, ///< up to yesterday
    ThisQuarter,
    LastQuarter,
    AfterLastDuration
};

/// Enough for a year of five-minute intervals (105,408). A finer chart would show nothing more, and
/// its tables would fill memory and disk.
inline constexpr qint32 maxChartIntervals = 110'000;

/// A chart definition: what a report's charts show and over which period. Codes in a file other
/// than the above are kept as they are.
class clsGraphDef
{
public:
    QString ChartID = NewID();
    QString ChartTitle = QStringLiteral("New Chart");
    QString SampleLabel;
    ChartFrequencyCode ChartFrequency = ByMinute;
    SubFrequencyCode SubFrequency = LastIntervals;
    ChartDurationCode ChartDuration = Today;
    qint32 MinuteInterval = 0; ///< minutes of one interval, for ByMinute
    qint32 IntervalCount = 0;
    QDateTime StartTime = zeroDate(); ///< wall times, both inclusive
    QDateTime EndTime = zeroDate();
    qint32 ChartQuality = 2;
    QString StateTemplateFile; ///< as stored: a name in the configuration folder, or a full path
    QString CountTemplateFile;
    QString StateTemplateData; ///< the templates' texts, read together with the definition
    QString CountTemplateData;
    bool Details = false;
    qint32 DetailCount = 0;
    qint32 LabelStep = 1; ///< 1, 2 or 5; made by SetStart, not saved

    /// Computes StartTime, EndTime and LabelStep from the date `today`, or from EndTime. Takes any
    /// values; a start before the year 100 becomes that year's first moment.
    void SetStart(const QDate &today = now().date());

    /// The period that StartTime and EndTime, as SetStart made them for a run at `run`, are
    /// compared with: of a calendar period the one before it, of one that still runs as much of
    /// that as has passed by the clock on the wall; else as long a stretch right before StartTime.
    DateRange precedingPeriod(const QDateTime &run) const;

    /// Appends the "CHART" element to `parent`.
    pugi::xml_node XMLConfigEL(pugi::xml_node parent) const;

    QString XMLConfig() const;
    /// Reads a "CHART" element and the templates that it names. A template that cannot be read
    /// becomes an empty text, with the status line "Error reading chart template '<path>' [number]
    /// ..."; reports that use it fail. Throws Error on malformed XML and on numbers beyond 32 bits.
    void SetXMLConfig(const QString &text);
    void readElement(const pugi::xml_node &element);
    /// The same without the templates.
    void readAttributes(const pugi::xml_node &element);
};

/// The chart with the period that a report run at that wall time gives it: it reaches up to the
/// run, unless its dates are the user's own.
clsGraphDef chartOfRun(clsGraphDef chart, const QDateTime &runTime);
