#pragma once

#include "charts/ChartPool.h"
#include "core/Status.h"
#include "data/DataSeries.h"
#include "definitions/GraphDef.h"
#include "report/DeviceCounts.h"
#include "report/ReportRun.h"
#include "report/Templates.h"

#include <QDateTime>
#include <QString>

#include <vector>

/// What the parts of one report's run share.
struct ReportContext
{
    clsReportDef &report;
    const clsGraphDef &chart; ///< its period is set
    const clsChartOutputBuilder &builder;
    StaticRecordset &devices; ///< the report's devices
    StaticRecordset &fields;  ///< all data items
    StaticRecordset &scales;
    ChartPool &pool;
    std::vector<PendingOutcome> &files; ///< pages and CSV files that the pool writes
    ReportOutcome &outcome;
    OverallTests &overall;
    QString period; ///< of the charts' header
    QString zone;
    qint64 start = 0; ///< the period as instants, both inclusive
    qint64 end = 0;
    qint64 latest = 0; ///< the run date: charts reach no further
};

/// The series of some summary rows over the report's period. Throws Error(Overflow) for a period
/// that cannot be charted.
DataSeries seriesOf(const ReportContext &context, const std::vector<SummaryRow> &summary,
                    int scale);

/// The outcome of a chart that never reached the pool.
PendingOutcome failedOutcome(const Error &error);

/// A chart image that is written, or being written.
struct clsChartImageRef
{
    QString fileName; ///< as the page cites it
    QSize size;       ///< logical pixels
    PendingOutcome outcome;
};

/// A device of a report, in between: its charts are on their way, its page is not written yet.
/// Writing it one device later keeps the worker pool busy.
class DevicePage
{
public:
    DevicePage(const ReportContext &context, const clsReportDeviceDef &device,
               const QString &previousFolder, const QString &nextFolder);

    /// Queries, buckets and hands to the pool one chart for each of the device's data items, and
    /// adds the tests that count to the report's. Throws Error.
    void chartItems(Progress &progress);

    /// What the page tells of the tests that count; nothing without it. Comes behind chartItems.
    void setCounts(const DeviceCounts &counts);

    /// Waits for the images, and hands the device's page and its CSV files to the pool.
    void write();

private:
    struct Item
    {
        int number = 0; ///< place among the report's items of this device, from 1
        QString name;
        QString description;
        QString scaleName;
        QString unit;
        DataSeries series;
        clsChartImageRef image;
        QString graphPage;   ///< file name of the filled chart template
        QString csv;         ///< file name of the numbers behind the chart
        QString problem;     ///< why there is no image; empty when there is one
        bool counts = false; ///< a state item whose tests count
    };

    /// A state item of the device whose tests count.
    struct CountedItem
    {
        qint64 dataIdent = 0;
        QString name;
        int number = 0;       ///< of the item that charts it; 0: not charted in this report
        bool isAdded = false; ///< to the tests of the report
    };

    void findCountedItems();
    bool findItem(const QString &dataIdent) const;
    void chartItem(Item &item, const QString &dataIdent);
    std::vector<SummaryRow> summaryOf(const QString &dataIdent);
    void addUncharted();
    QString keyFigures(const Item &item) const;
    PageValue alternative(const Item &item) const;
    Placeholders itemValues(const Item &item) const;
    void writeGraphPage(const Item &item) const;
    void writeItem(PageText &page, const Item &item);
    void writeDetails(PageText &page, const Item &item) const;
    void removeStaleCharts() const;

    const ReportContext &m_context;
    const clsReportDeviceDef &m_device;
    QString m_name;
    QString m_description;
    QString m_ident;
    QString m_folder;
    Placeholders m_values; ///< of the whole page
    std::vector<Item> m_items;
    std::vector<CountedItem> m_counted;
};
