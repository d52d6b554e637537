#include "config/clsGrapherConfig.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/ProgramState.h"
#include "base/Xml.h"
#include "config/Program.h"

#include <array>

namespace {

struct TextAttribute
{
    const char *name;
    QString clsGrapherConfig::*property;
};

/// The text attributes in the order of the file.
constexpr std::array textAttributes = {
    TextAttribute{"PTH_Output", &clsGrapherConfig::storedOutput},
    TextAttribute{"PTH_Config", &clsGrapherConfig::storedConfig},
    TextAttribute{"PTH_Template", &clsGrapherConfig::storedTemplate},
    TextAttribute{"TIN_TOC", &clsGrapherConfig::TIN_TOC},
    TextAttribute{"TIN_TOC_ReportItem", &clsGrapherConfig::TIN_TOC_ReportItem},
    TextAttribute{"TIN_REPORT", &clsGrapherConfig::TIN_REPORT},
    TextAttribute{"TIN_REP_TOC", &clsGrapherConfig::TIN_REP_TOC},
    TextAttribute{"TIN_REP_DeviceItem", &clsGrapherConfig::TIN_REP_DeviceItem},
    TextAttribute{"TIN_REP_Top", &clsGrapherConfig::TIN_REP_Top},
    TextAttribute{"TIN_REP_Summary", &clsGrapherConfig::TIN_REP_Summary},
    TextAttribute{"TIN_STATE_Detail", &clsGrapherConfig::TIN_STATE_Detail},
    TextAttribute{"TIN_STATE_DetailItem", &clsGrapherConfig::TIN_STATE_DetailItem},
    TextAttribute{"TIN_COUNT_Detail", &clsGrapherConfig::TIN_COUNT_Detail},
    TextAttribute{"TIN_COUNT_DetailItem", &clsGrapherConfig::TIN_COUNT_DetailItem},
    TextAttribute{"TIN_DEV_Rep", &clsGrapherConfig::TIN_DEV_Rep},
    TextAttribute{"TIN_VARB_Item", &clsGrapherConfig::TIN_VARB_Item},
    TextAttribute{"TOU_TOC", &clsGrapherConfig::TOU_TOC},
    TextAttribute{"TOU_REPORT", &clsGrapherConfig::TOU_REPORT},
    TextAttribute{"TOU_REP_Top", &clsGrapherConfig::TOU_REP_Top},
    TextAttribute{"TOU_REP_TOC", &clsGrapherConfig::TOU_REP_TOC},
    TextAttribute{"TOU_REP_Summary", &clsGrapherConfig::TOU_REP_Summary},
    TextAttribute{"TOU_DEV_SUM_IMAGE", &clsGrapherConfig::TOU_DEV_SUM_IMAGE},
    TextAttribute{"IMG_Format", &clsGrapherConfig::IMG_Format},
};

constexpr const char *rootName = "VTRGRAPHER";
const QString workingFile = QStringLiteral("VTRGConfigV6.XML");
const QString factoryFile = QStringLiteral("VTRGConfigV6.FAC");

QString inProgramFolder(const QString &name)
{
    return WithBackslash(programFolder()) + name;
}

const StatePart<clsGrapherConfig> currentConfig;

QString expanded(QString folder)
{
    return folder.replace(QLatin1String("%%app.path%%"), programFolder());
}

} // namespace

QString clsGrapherConfig::PTH_Output() const
{
    return expanded(storedOutput);
}

QString clsGrapherConfig::PTH_Config() const
{
    return expanded(storedConfig);
}

QString clsGrapherConfig::PTH_Template() const
{
    return expanded(storedTemplate);
}

QString clsGrapherConfig::metricsPath() const
{
    return expanded(MetricsFile);
}

QString clsGrapherConfig::XMLConfig() const
{
    pugi::xml_document document;
    pugi::xml_node instruction = document.append_child(pugi::node_pi);
    instruction.set_name("xml");
    instruction.set_value("version='1.0' encoding='UTF-8'");
    pugi::xml_node root = document.append_child(rootName);
    for (const TextAttribute &attribute : textAttributes)
        setAttr(root, attribute.name, this->*attribute.property);
    setAttr(root, "IMG_Width", IMG_Width);
    setAttr(root, "IMG_Height", IMG_Height);
    if (!MetricsFile.isEmpty())
        setAttr(root, "MetricsFile", MetricsFile);
    if (PdfReports)
        setAttr(root, "PdfReports", xmlBoolean(PdfReports));
    for (const QString &name : CopyFileList) {
        pugi::xml_node copy = root.append_child("COPYFILE");
        setAttr(copy, "Name", name);
    }
    return QString::fromUtf8(documentBytes(document));
}

void clsGrapherConfig::SetXMLConfig(const QString &text)
{
    pugi::xml_document document;
    parseXml(document, text);
    const pugi::xml_node root = document.document_element();
    if (qstrcmp(root.name(), rootName) != 0)
        throw Error(InvalidFileFormat,
                    QStringLiteral(" the root element is '%1', not '%2'")
                        .arg(QString::fromUtf8(root.name()), QLatin1String(rootName)));
    for (const TextAttribute &attribute : textAttributes)
        this->*attribute.property = GetAttr(root, attribute.name, this->*attribute.property);
    IMG_Width = integerAttr(root, "IMG_Width", 640);
    IMG_Height = integerAttr(root, "IMG_Height", 390);
    MetricsFile = GetAttr(root, "MetricsFile", QString());
    PdfReports = xmlBoolean(GetAttr(root, "PdfReports", QStringLiteral("0")));
    CopyFileList.clear();
    forEachElement(document, "COPYFILE", [this](const pugi::xml_node &copy) {
        CopyFileList.append(GetAttr(copy, "Name", QString()));
    });
}

clsGrapherConfig &gConfig()
{
    return *currentConfig;
}

void loadGrapherConfig()
{
    const bool working = fileExists(inProgramFolder(workingFile));
    const QString path = inProgramFolder(working ? workingFile : factoryFile);
    clsGrapherConfig config;
    try {
        config.SetXMLConfig(readTextFile(path));
    } catch (const Error &error) {
        if (error.number != InvalidFileFormat && error.number != Overflow)
            throw;
        throw Error(error.number, path + u':' + error.description);
    }
    gConfig() = std::move(config);
    if (!working)
        saveGrapherConfig();
}

void saveGrapherConfig()
{
    saveTextFile(inProgramFolder(workingFile), gConfig().XMLConfig());
}

QString configurationFolder()
{
    return NormalizeFolder(gConfig().PTH_Config());
}
