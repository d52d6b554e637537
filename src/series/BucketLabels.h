#pragma once

#include "definitions/clsGraphDef.h"

#include <QDateTime>
#include <QLocale>
#include <QString>

#include <array>

/// How the buckets of one frequency (as in a chart definition) are named. On charts and pages the
/// names of months and days are in the user's language; files that programs read take
/// QLocale::c(), which makes them English.
class BucketLabels
{
public:
    explicit BucketLabels(ChartFrequencyCode frequency, const QLocale &locale = QLocale());

    /// For an axis: "14:05", "14:00", "Mon Mar 04", "Mar '24", "2024".
    QString shortForm(const QDateTime &wallStart) const;
    /// For tables and hints: "Mar 04 - 14:05", "Mar 04 - 14:00", "2024-Mar-04", "2024-Mar", "2024".
    QString longForm(const QDateTime &wallStart) const;

private:
    const QString &month(const QDate &date) const;
    const QString &weekday(const QDate &date) const;

    ChartFrequencyCode m_frequency;
    std::array<QString, 12> m_months;
    std::array<QString, 7> m_days;
};
