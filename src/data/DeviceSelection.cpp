#include "data/DeviceSelection.h"

#include "core/Status.h"

void SortDeviceSelection(clsReportDef &report, StaticRecordset &devices)
{
    ShowStatus(QStringLiteral("Sorting device selection."));
    const int nameColumn = devices.column(QStringLiteral("MachName"));
    const int muidColumn = devices.column(QStringLiteral("MUID"));

    // The names are taken in one walk: a filter text could not hold every MUID.
    QHash<QString, QString> names;
    devices.setFilter({});
    for (; !devices.eof(); devices.moveNext()) {
        const QString key = devices.text(muidColumn).toCaseFolded();
        if (!names.contains(key)) // the first row counts
            names.insert(key, devices.text(nameColumn));
    }
    devices.moveFirst();
    report.ReportDevices.sortByText([&names](const clsReportDeviceDef &device) {
        return names.value(device.MUID.toCaseFolded());
    });
}
