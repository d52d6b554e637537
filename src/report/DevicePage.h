#pragma once

#include "report/DeviceFacts.h"
#include "report/ReportContext.h"

#include <QByteArray>
#include <QSize>

/// The files that belong to the chart of one data item, by their names in the device's folder.
struct ItemFiles
{
    QString image;
    QString page;                 ///< the filled chart template
    QString csv;                  ///< the values of the chart
    QSize imageSize;              ///< logical pixels
    std::optional<Error> problem; ///< why there is no image
};

/// A file to be written.
struct OutputFile
{
    QString name;
    QByteArray bytes;
};

/// The neighbours of a device in its report, by the names of their folders; empty at the ends.
struct Neighbours
{
    QString previous;
    QString next;
};

/// The pages and CSV files of a device, from its facts and the report's templates; `files` are
/// those of the items, in their order. The device's page comes last: it links to all the others. A
/// pure function except for the pages' nonces; any thread.
std::vector<OutputFile> deviceFiles(const ReportContext &context, const DeviceFacts &device,
                                    const std::vector<ItemFiles> &files,
                                    const Neighbours &neighbours);
