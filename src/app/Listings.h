#pragma once

#include "scheduling/RunHistory.h"

#include <QString>

#include <vector>

/// Texts of --list and --history, in lines. Main thread only.

/// One line a report definition, separated by tabs: id, title, "last <time>", "next <time>", "due"
/// or "not due", and why. Needs the report and schedule definitions.
QString reportListText();

/// The runs, the newest last; below each the reports that it took.
QString historyText(const std::vector<RunRecord> &newestFirst);
