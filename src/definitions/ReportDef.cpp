#include "definitions/ReportDef.h"

#include "core/Xml.h"

#include <algorithm>

namespace {

std::shared_ptr<clsReportDeviceDef> readDevice(const pugi::xml_node &element)
{
    auto device = std::make_shared<clsReportDeviceDef>();
    device->MUID = GetAttr(element, "MUID", QString());
    for (const pugi::xml_node &datum : element.children("DATUM")) {
        auto item = std::make_shared<clsReportDataIdentDef>();
        item->DataIDent = GetAttr(datum, "DataIDent", QString());
        if (item->DataIDent.isEmpty())
            continue;
        if (!isDataIdent(item->DataIDent))
            throw Error(TypeMismatch, QStringLiteral("DataIDent '%1' of the device '%2' is not a "
                                                     "whole number")
                                          .arg(item->DataIDent, device->MUID));
        device->DataItems.add(u'k' + item->DataIDent, item);
    }
    return device;
}

} // namespace

bool isDataIdent(const QString &text)
{
    const QStringView digits = QStringView(text).sliced(text.startsWith(u'-') ? 1 : 0);
    bool fits = false;
    text.toLongLong(&fits);
    return fits && std::all_of(digits.begin(), digits.end(),
                               [](QChar digit) { return digit >= u'0' && digit <= u'9'; });
}

pugi::xml_node clsReportDef::XMLConfigEL(pugi::xml_node parent) const
{
    pugi::xml_node element = parent.append_child("CUSTOMREPORT");
    setAttr(element, "ReportID", ReportID);
    setAttr(element, "ReportTitle", ReportTitle);
    setAttr(element, "ChartID", ChartID);
    setAttr(element, "OutputFile", OutputFile);
    setAttr(element, "OutputTemplate", OutputTemplate);
    for (const auto &schedule : ReportSchedules) {
        pugi::xml_node child = element.append_child("SCHEDULE");
        setAttr(child, "ScheduleID", schedule->ScheduleID);
        setAttr(child, "LastRunDate", DateToXML(schedule->LastRunDate));
    }
    for (const auto &device : ReportDevices) {
        pugi::xml_node child = element.append_child("DEVICE");
        setAttr(child, "MUID", device->MUID);
        for (const auto &item : device->DataItems) {
            pugi::xml_node datum = child.append_child("DATUM");
            setAttr(datum, "DataIDent", item->DataIDent);
        }
    }
    return element;
}

QString clsReportDef::XMLConfig() const
{
    pugi::xml_document document;
    return elementText(XMLConfigEL(document));
}

void clsReportDef::SetXMLConfig(const QString &text)
{
    pugi::xml_document document;
    parseXml(document, text);
    readElement(document.document_element());
}

void clsReportDef::readElement(const pugi::xml_node &element)
{
    ReportID = GetAttr(element, "ReportID", ReportID);
    ReportTitle = GetAttr(element, "ReportTitle", QStringLiteral("No Title"));
    ChartID = GetAttr(element, "ChartID", QStringLiteral("No Charts Defined"));
    OutputFile = GetAttr(element, "OutputFile", QStringLiteral(".\\TEMP.HTML"));
    OutputTemplate = GetAttr(element, "OutputTemplate", QString());
    forEachElement(element, "SCHEDULE", [this](const pugi::xml_node &child) {
        auto schedule = std::make_shared<clsReportSchedule>();
        schedule->ScheduleID = GetAttr(child, "ScheduleID", QString());
        schedule->LastRunDate = XMLToDate(GetAttr(child, "LastRunDate", QString()));
        ReportSchedules.add(schedule->ScheduleID, schedule);
    });
    ReportDevices.clear();
    forEachElement(element, "DEVICE", [this](const pugi::xml_node &child) {
        const std::shared_ptr<clsReportDeviceDef> device = readDevice(child);
        ReportDevices.add(device->MUID, device);
    });
}
