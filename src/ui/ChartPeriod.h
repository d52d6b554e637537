#pragma once

#include "charts/ChartJob.h"
#include "definitions/GraphDef.h"

#include <QStringList>

/// What a chart definition comes to, for the one who edits it. Pure functions of the definition and
/// the present time; main thread only.

/// Names of the codes, in their order: intervals, calendar periods, image qualities.
QStringList frequencyNames();
QStringList durationNames();
QStringList qualityNames();

/// More intervals than these are no use on a chart and slow to make.
inline constexpr qint64 mostSensibleIntervals = 20'000;

/// How the period of a chart is chosen, as a report run reads its codes.
enum class ChartSpan { LastIntervals, Calendar, Custom };
ChartSpan spanOf(const clsGraphDef &chart);

/// The chart with the period that a report run at the present moment gives it.
clsGraphDef chartRunNow(clsGraphDef chart);

/// How many intervals the period of a chart touches; 0 when it ends before it starts. A number
/// beyond mostSensibleIntervals takes no account of daylight saving.
qint64 intervalsTouched(const clsGraphDef &chart);

/// "Last Week: Sunday 2026-11-08 00:00 to Saturday 2026-11-14 23:59, 168 intervals of an hour"
QString periodInWords(const clsGraphDef &chart);

/// Why no report can draw the chart: it has more than maxChartIntervals. Empty: it has not.
QString tooManyIntervals(const clsGraphDef &chart);

/// What speaks against the period and the intervals, a sentence each.
QStringList periodWarnings(const clsGraphDef &chart);

enum class SampleItem { State, Counter };

/// A chart of made-up samples over the chart's own period up to now, as a report would draw it: the
/// same samples for the same period each time. Of a longer period than mostSensibleIntervals its
/// last ones; `note` then says so. Throws Error where a report could not draw it either.
Chart sampleChart(const clsGraphDef &chart, SampleItem item, QString &note);
