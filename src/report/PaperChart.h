#pragma once

#include "charts/ChartJob.h"

#include <optional>

/// A chart on its way to paper: its values, which are drawn once its page comes.
struct PaperChart
{
    QString item;
    std::optional<Chart> chart;
    QString problem; ///< why there is none
};
