#pragma once

#include "data/DataSeries.h"
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
    qint32 frequency = 0; ///< 0 minute interval, 1 hour, 2 day, 3 month, 4 year
    QDateTime startTime;  ///< wall times
    QDateTime endTime;
    QString series1; ///< values separated by commas, a blank for an empty bucket
    QString series2;
    QString series3;
    QString labels; ///< bucket labels separated by commas
    QString series1Total;
    QString series2Total;
    QString series3Total;
    QString lowRange; ///< bounds of the scale
    QString upperRange;
    QString ranged;    ///< "true" when the scale has a fixed range
    qint32 filled = 0; ///< 1 once FillChartTemplate has run

    /// Takes the series, labels, totals and range from a data series. State item: successes,
    /// failures and success rate in percent, range 0 to 100. Counter item: mean, least and greatest
    /// value, range from the least to the greatest of them.
    void setSeries(const DataSeries &data);

    /// The template with its "%%chart....%%", "%%mach....%%" and "%%varb....%%" placeholders
    /// replaced, and with those of the page around it.
    QString FillChartTemplate(const QString &text, const Placeholders &page = {});
};

/// The period's begin and end as chart templates show them: "yyyy-MMM-dd HH:mm".
QString chartTimeText(const QDateTime &wall);
