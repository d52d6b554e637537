#pragma once

#include "report/ReportContext.h"

/// As many rows as a timeline has at most in an image.
inline constexpr size_t maxTimelineRows = 60;

/// When each device of a report was up: those with failures or gaps, the worst first; all devices
/// where they are few. `figures` are summarized.
TimelineChart timelineChart(const ReportContext &context, const ReportFigures &figures,
                            size_t maxRows = maxTimelineRows);
