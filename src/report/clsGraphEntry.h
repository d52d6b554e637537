#pragma once

#include "report/DeviceFacts.h"
#include "report/Templates.h"

#include <QDateTime>
#include <QString>

/// The values of one chart of one data item of one device, as a chart template shows them.
class clsGraphEntry
{
public:
    QString deviceName;
    QString deviceDescription;
    QString itemName;
    QString itemDescription;
    qint32 pointCount = 0; ///< number of points less one; set by FillChartTemplate
    QString chartTitle;
    QString sampleLabel;
    QString scaleName;
    ChartFrequencyCode frequency = ByMinute;
    QDateTime startTime; ///< wall times
    QDateTime endTime;
    QString series1; ///< values separated by commas; a blank for an empty bucket
    QString series2;
    QString series3;
    QString labels; ///< bucket labels separated by commas
    QString series1Total;
    QString series2Total;
    QString series3Total;
    QString lowRange; ///< bounds of the scale
    QString upperRange;
    QString ranged;  ///< "true" when the scale has a fixed range
    QString average; ///< this and the next three: of a counter item's interval means; else empty
    QString percentile95;
    QString moving;       ///< as a series; blanks where there is none
    QString movingPeriod; ///< how many means are averaged
    qint32 filled = 0;    ///< 1 once FillChartTemplate has run

    /// Takes names, series, labels, totals, range and statistics from an item. State item:
    /// successes, failures and success rate in percent, range 0 to 100. Counter item: mean, min
    /// and max, range from the min to the max.
    void setItem(const ItemFacts &item);

    /// The template with its "%%chart....%%", "%%mach....%%" and "%%varb....%%" placeholders
    /// replaced, and with those of the page around it.
    QString FillChartTemplate(const QString &text, const Placeholders &page = {});
};

/// The period's begin and end as chart templates show them: "yyyy-MMM-dd HH:mm".
QString chartTimeText(const QDateTime &wall);
