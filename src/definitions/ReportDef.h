#pragma once

#include "definitions/Collection.h"
#include "definitions/Dates.h"

#include <pugixml.hpp>

/// Whether a text can be the key of a data item: a whole number, which queries and filters hold as
/// it stands.
bool isDataIdent(const QString &text);

/// A data item of a device of a report.
class clsReportDataIdentDef
{
public:
    QString DataIDent; ///< column DataIDent of the table DataFields
};

/// A device of a report.
class clsReportDeviceDef
{
public:
    QString MUID;                                ///< column MUID of the table Devices
    Collection<clsReportDataIdentDef> DataItems; ///< by "k" + DataIDent

    QString DisplayName; ///< the device's name; set by a run, never saved
};

/// A schedule of a report.
class clsReportSchedule
{
public:
    QString ScheduleID;
    QDateTime LastRunDate = zeroDate(); ///< wall time of the last run under this schedule
};

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

    /// Appends the "CUSTOMREPORT" element to `parent`.
    pugi::xml_node XMLConfigEL(pugi::xml_node parent) const;

    QString XMLConfig() const;
    /// Reads a "CUSTOMREPORT" element into a new object (schedules are added to those it has).
    /// Throws Error(DuplicateKey) naming a device, data item or schedule that comes twice,
    /// Error(TypeMismatch) naming a data item whose key is not a number, and Error on malformed
    /// XML.
    void SetXMLConfig(const QString &text);
    void readElement(const pugi::xml_node &element);
};
