#pragma once

#include "report/PaperChart.h"
#include "report/PdfPages.h"
#include "report/ReportContext.h"
#include "report/ReportStory.h"

#include <QHash>

#include <span>

/// A report as one PDF file, made of the same figures and charts as its pages: a title sheet with
/// sentences, key figures and timeline; contents; incidents, missed targets, rankings and
/// forecasts; then the devices, two charts a page or four. A4, or Letter where the locale measures
/// in inches. Devices are drawn as they come, and only their names and pages are kept. Used by one
/// thread.
class PdfReport
{
public:
    /// The context has to outlive it. Throws Error that names the file.
    PdfReport(const ReportContext &context, const QString &path);

    /// Throws Error.
    void addDevice(const DeviceFigures &device, const std::vector<PaperChart> &charts);

    /// Draws the pages before those of the devices, and puts the file into its place. Throws Error.
    void finish(const ReportFigures &figures);

private:
    /// A line of the contents.
    struct Entry
    {
        QString text;
        QString number;
        int page = 0;
        int level = 0;
    };

    QString nextFrontNumber() { return romanNumber(++m_frontNumber); }
    void drawCharts(const QString &heading, std::span<const PaperChart> charts, int perPage);
    void drawTitleSheet(const ReportFigures &figures);
    void drawTiles(const std::vector<StoryTile> &tiles);
    void drawTimeline(const ReportFigures &figures);
    void drawContents(const std::vector<Entry> &entries);
    size_t entriesOfColumn() const;

    const ReportContext &m_context;
    PdfDocument m_document;
    PdfPages m_pages;
    std::vector<Entry> m_devices;
    QHash<QString, int> m_pageOfDevice; ///< by its folder
    int m_devicePages = 0;
    int m_frontNumber = 0; ///< the last one
};
