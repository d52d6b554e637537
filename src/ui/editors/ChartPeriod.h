#pragma once

#include "charts/ChartJob.h"
#include "definitions/clsGraphDef.h"

#include <QStringList>

/// The period of a chart definition in words, with warnings and a sample, for its editor. Pure
/// functions of the definition and the current time; main thread only.

/// "Sunday 2026-11-08 00:00"
QString momentInWords(const QDateTime &wall);

/// Names of the codes, in their order: intervals, calendar periods, image qualities.
QStringList frequencyNames();
QString durationName(qint32 code); ///< empty: not known, or no calendar period
QStringList qualityNames();

/// Above this number intervals are too narrow to see and slow to draw.
inline constexpr qint64 maxSensibleIntervals = 20'000;

/// How the period of a chart is chosen, as a report run reads its codes.
enum class ChartSpan { LastIntervals, Calendar, Custom };
ChartSpan spanOf(const clsGraphDef &chart);

/// How many intervals the period of a chart touches; 0 when it ends before it starts. Above
/// maxSensibleIntervals the number ignores daylight saving.
qint64 intervalsTouched(const clsGraphDef &chart);

/// "Last Week: Sunday 2026-11-08 00:00 to Saturday 2026-11-14 23:59, 168 intervals of an hour"
QString periodInWords(const clsGraphDef &chart);

/// "Last Week, 168 intervals of an hour", "Last 24 intervals of an hour"
QString shortPeriodInWords(const clsGraphDef &chart);

/// The error when a chart has more than maxChartIntervals; else empty.
QString tooManyIntervals(const clsGraphDef &chart);

/// Warnings about the period and the intervals, a sentence each.
QStringList periodWarnings(const clsGraphDef &chart);

enum class SampleItem { State, Counter };

/// A chart of sample data over the chart's own period, as a report that runs at the instant
/// `latest` would draw it: the same samples for the same period each time. Of more than
/// maxSensibleIntervals only the last ones; `note` then says so. Throws Error if a report could not
/// draw it either.
Chart sampleChart(const clsGraphDef &chart, SampleItem item, qint64 latest, QString &note);
