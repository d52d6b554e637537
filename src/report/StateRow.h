#pragma once

#include "report/Csv.h"
#include "report/Templates.h"

/// One row of a state table: on the page and in the CSV file.
struct StateRow
{
    QString label;
    qint64 successes = 0;
    qint64 failures = 0;
    QString link = {}; ///< what the label links to, percent-encoded; empty: nothing

    qint64 tests() const { return successes + failures; }
    /// Success rate in percent with two decimals; "n/a" without tests.
    QString rateText() const;

    QString filled(const QString &rowTemplate) const;
    /// The same as the table's total: "<b>Total</b>", and each number in bold.
    QString filledAsTotal(const QString &rowTemplate) const;

    double rate() const; ///< success rate in percent; 0 without tests
    /// Adds success, critical and total counts to a record.
    void addCounts(CsvText &csv) const;
};
