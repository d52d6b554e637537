#pragma once

#include "base/Error.h"
#include "database/Inventory.h"
#include "definitions/clsGraphDef.h"
#include "definitions/clsReportDef.h"
#include "figures/ServiceTime.h"
#include "series/BucketAxis.h"
#include "series/ItemFold.h"

#include <QHash>

#include <optional>
#include <vector>

/// Everything that one report of a run needs of the user's definitions, taken before the run
/// begins; nothing reads a definition file after that. Does not change during the run; read on any
/// thread.
struct PlannedReport
{
    struct Device
    {
        QString muid;
        std::vector<qint64> dataIdents;    ///< of the items to chart, in the report's order
        std::optional<double> target = {}; ///< success rate in percent; the report's or its own
        QHash<qint64, double> limits = {}; ///< of its items, by DataIDent
    };

    /// A period that the figures are compared with, or taken from.
    struct FurtherPeriod
    {
        ItemFold::Span span; ///< instants
        SharedAxis axis;     ///< without labels
    };

    QString id;
    QString title;
    int keep = 0;               ///< finished runs in its archive
    std::optional<Error> error; ///< why it cannot be produced; what follows is not set then
    clsGraphDef chart;          ///< with the period of this run
    QDateTime runDate;          ///< wall time of the run, which all its pages show
    qint64 latest = 0;          ///< the same as an instant: charts reach no further
    qint64 start = 0;           ///< the period as instants, both inclusive
    qint64 end = 0;
    SharedAxis axis;                ///< of all its charts
    std::optional<Error> axisError; ///< why nothing can be charted; the axis is empty then
    std::vector<Device> devices;    ///< in the report's order

    /// Whether it becomes a PDF file: beside its pages in the report's folder, or alone at
    /// `pdfPath`.
    enum class Pdf { None, Beside, Alone };
    Pdf pdf = Pdf::None;
    QString pdfPath;

    ServiceTime service; ///< what counts for targets of the period up to the run
    std::optional<FurtherPeriod> preceding;
    std::optional<ServiceTime> precedingService; ///< where there is a preceding period
    std::optional<FurtherPeriod> recentDays;     ///< the days before the run, for forecasts

    std::vector<SelectionRule> rules;
    bool knowsAllDevices = true;       ///< false: what its rules find is still to be added
    std::optional<double> target = {}; ///< the report's, of what its rules find

    int itemCount() const;

    /// Adds what its rules find now. Items that are there already stay where they are.
    void applyRules(const Inventory &inventory);

    /// Orders the devices by their names, ascending and without regard to case; equal ones keep
    /// their order, those that the database does not know come first.
    void sortDevices(const Inventory &inventory);
};

/// The plan of a report that runs at an instant. `chart`: its chart definition as it stands, null
/// when there is none.
PlannedReport plannedReport(const clsReportDef &report, const clsGraphDef *chart,
                            qint64 runInstant);
