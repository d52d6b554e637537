#pragma once

#include "definitions/Collection.h"
#include "definitions/Dates.h"
#include "definitions/SelectionRule.h"
#include "definitions/ServiceHours.h"

#include <optional>
#include <pugixml.hpp>
#include <vector>

/// Whether a text can be the key of a data item: a whole number, as it is used in queries.
bool isDataIdent(const QString &text);

/// The optional attributes of a report's figures; nothing where an element has none. They throw
/// Error(TypeMismatch) that names the attribute and says why its value is not valid.
std::optional<double> readTarget(const pugi::xml_node &element); ///< of a CUSTOMREPORT or DEVICE
std::optional<double> readLimit(const pugi::xml_node &datum);
int readKeep(const pugi::xml_node &report); ///< 0 where it has none

/// A data item of a device of a report.
class clsReportDataIdentDef
{
public:
    QString DataIDent;           ///< column DataIDent of the table DataFields
    std::optional<double> Limit; ///< the value that the item is not to reach
};

/// A device of a report.
class clsReportDeviceDef
{
public:
    QString MUID;                                ///< column MUID of the table Devices
    Collection<clsReportDataIdentDef> DataItems; ///< by "k" + DataIDent
    std::optional<double> Target;                ///< as of the report, which it overrides

    QString DisplayName; ///< the device's name; set by a run, never saved
};

/// A schedule of a report.
class clsReportSchedule
{
public:
    QString ScheduleID;
    QDateTime LastRunDate = zeroDate(); ///< wall time of the last run under this schedule
};

/// A stretch of time that does not count for a target.
struct ReportMaintenance
{
    QDateTime From; ///< wall times, From before To
    QDateTime To;
    QString Reason;
};

/// Reads a "MAINTENANCE" element; throws as the functions above.
ReportMaintenance readMaintenance(const pugi::xml_node &element);

/// A report definition: which chart of which data items of which devices, and when.
class clsReportDef
{
public:
    QString ReportID = NewID();
    QString ReportTitle = QStringLiteral("New Report Definition");
    QString OutputFile;
    QString OutputTemplate;
    QString ChartID;
    Collection<clsReportDeviceDef> ReportDevices;  ///< by MUID
    Collection<clsReportSchedule> ReportSchedules; ///< by ScheduleID

    /// What it charts beside those devices: found anew by each run. A file has them only where
    /// there are any.
    std::vector<SelectionRule> Rules;

    // What the figures are held against. A file has them only where they are set.
    std::optional<double> Target; ///< success rate in percent that is promised, 0 to 100
    ServiceHours Hours;           ///< attribute ServiceHours: when the promise holds
    bool Compare = true;          ///< with the preceding period
    std::vector<ReportMaintenance> Maintenance;

    // What is made of it beside its pages. A file has them only where they are set.
    bool Pdf = false; ///< REPORT.PDF
    int Keep = 0;     ///< finished runs that are kept in its archive; 0: none

    /// Appends the "CUSTOMREPORT" element to `parent`.
    pugi::xml_node XMLConfigEL(pugi::xml_node parent) const;

    QString XMLConfig() const;
    /// Reads a "CUSTOMREPORT" element into a new object (schedules are added to those it has).
    /// Throws Error(DuplicateKey) naming a duplicate device, data item or schedule,
    /// Error(TypeMismatch) naming a data item whose key is not a number, or a target, a limit,
    /// service hours, a maintenance, a rule or a number of runs to keep that is not valid, and
    /// Error on malformed XML.
    void SetXMLConfig(const QString &text);
    void readElement(const pugi::xml_node &element);
};
