#pragma once

#include "data/Recordset.h"
#include "definitions/ReportDef.h"

/// Orders the devices of a report by their names, ascending and without regard to case; equal ones
/// keep their order, those no longer in the database come first. `devices` holds the columns MUID
/// and MachName; its filter is left removed.
void SortDeviceSelection(clsReportDef &report, StaticRecordset &devices);
