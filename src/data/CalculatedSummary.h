#pragma once

#include "data/Recordset.h"

#include <vector>

/// Samples of one data item grouped into time buckets of local time.
struct SummaryRow
{
    qint64 DataIDent = 0;
    qint64 QCount = 0;     ///< samples in the bucket
    qint64 ValueCount = 0; ///< those of them whose value is not NULL
    QString QDate;         ///< the bucket's key: "yyyyMMddHHmm", "yyyyMMddHH", "yyyyMMdd", ...
    qint64 sumiState = 0;
    double avgiValue = 0; ///< mean, rounded to 6 decimals, halves to even
    double miniValue = 0; ///< least value, 4 decimals
    double maxiValue = 0; ///< greatest value, 4 decimals
    qint64 start = 0;     ///< the bucket's bounds as instants: start <= t < end
    qint64 end = 0;
};

/// One pass over samples that arrive ascending by time (columns DataIDent, iDate, iState, iValue),
/// without allocation per sample. Values count in ten-thousandths, rounded half to even; a NULL
/// value leaves mean and extremes alone, a NULL state adds nothing. Only buckets with samples have
/// a row, in order of time. `frequency` and `minuteInterval` as in a chart definition.
/// Throws Error(Overflow) for a value beyond +-922,337,203,685,477.
std::vector<SummaryRow> BuildCalculatedSummary(Recordset &raw, int frequency, int minuteInterval);
