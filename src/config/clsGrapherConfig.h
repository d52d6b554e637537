#pragma once

#include <QString>
#include <QStringList>

/// The tool's own configuration, kept as the XML file "VTRGConfigV6.XML" in the program's folder:
/// folders, template and output file names, image size and format, companion files.
class clsGrapherConfig
{
public:
    // Folders as stored; the readers below replace the token "%%app.path%%" (in this lower case)
    // by the program's folder without a trailing separator.
    QString storedOutput;
    QString storedConfig;
    QString storedTemplate;
    QString PTH_Output() const;   ///< report output
    QString PTH_Config() const;   ///< definition files and page templates
    QString PTH_Template() const; ///< kept for the file's sake

    QString TIN_TOC;
    QString TIN_TOC_ReportItem;
    QString TIN_REPORT;
    QString TIN_REP_TOC;
    QString TIN_REP_DeviceItem;
    QString TIN_REP_Top;
    QString TIN_REP_Summary;
    QString TIN_STATE_Detail;
    QString TIN_STATE_DetailItem;
    QString TIN_COUNT_Detail;
    QString TIN_COUNT_DetailItem;
    QString TIN_DEV_Rep;
    QString TIN_VARB_Item;

    QString TOU_TOC;
    QString TOU_REPORT;
    QString TOU_REP_Top;
    QString TOU_REP_TOC;
    QString TOU_REP_Summary;
    QString TOU_DEV_SUM_IMAGE; ///< kept for the file's sake: the image is always DEVSUM.PNG

    QString IMG_Format;
    qint32 IMG_Width = 640;  ///< pixels
    qint32 IMG_Height = 390; ///< pixels

    QString MetricsFile; ///< where each run says how it ended, as stored; empty: nowhere
    QString metricsPath() const;

    bool PdfReports = false; ///< every report becomes a PDF file, too

    QStringList CopyFileList; ///< companion files, copied into the output folder

    /// The whole configuration as XML text.
    QString XMLConfig() const;
    /// Reads a text of that form. An attribute that is missing leaves its property unchanged, but
    /// for the image size, which becomes 640 by 390. Throws Error on malformed XML.
    void SetXMLConfig(const QString &text);
};

/// The configuration in force; all empty until start-up has read it. Main thread only.
clsGrapherConfig &gConfig();

/// Reads "VTRGConfigV6.XML" into `gConfig`; where it is missing, first makes it from
/// "VTRGConfigV6.FAC". Throws Error that names the file.
void loadGrapherConfig();

/// Writes `gConfig` to "VTRGConfigV6.XML". Throws Error.
void saveGrapherConfig();

/// The folder of definition files and templates: PTH_Config of `gConfig`, ending in a separator.
QString configurationFolder();
