#include "definitions/clsReportDef.h"

#include "base/Xml.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// The number that an optional attribute holds; throws Error(TypeMismatch) that says what it is not
/// where it holds another text, or a number outside of the bounds.
std::optional<double> numberAttr(const pugi::xml_node &element, const char *name, double min,
                                 double max, const QString &kind)
{
    const pugi::xml_attribute attribute = element.attribute(name);
    if (attribute.empty())
        return {};
    const QString text = QString::fromUtf8(attribute.value());
    bool isNumber = false;
    const double number = text.trimmed().toDouble(&isNumber);
    if (!isNumber || !(number >= min && number <= max))
        throw Error(TypeMismatch,
                    QStringLiteral("%1 '%2' is not %3").arg(QString::fromLatin1(name), text, kind));
    return number;
}

void setNumberAttr(pugi::xml_node element, const char *name, std::optional<double> number)
{
    if (number)
        setAttr(element, name, QString::number(*number, 'g', QLocale::FloatingPointShortest));
}

std::shared_ptr<clsReportDeviceDef> readDevice(const pugi::xml_node &element)
{
    auto device = std::make_shared<clsReportDeviceDef>();
    device->MUID = GetAttr(element, "MUID", QString());
    device->Target = readTarget(element);
    for (const pugi::xml_node &datum : element.children("DATUM")) {
        auto item = std::make_shared<clsReportDataIdentDef>();
        item->DataIDent = GetAttr(datum, "DataIDent", QString());
        if (item->DataIDent.isEmpty())
            continue;
        if (!isDataIdent(item->DataIDent))
            throw Error(TypeMismatch, QStringLiteral("DataIDent '%1' of the device '%2' is not a "
                                                     "whole number")
                                          .arg(item->DataIDent, device->MUID));
        item->Limit = readLimit(datum);
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

std::optional<double> readTarget(const pugi::xml_node &element)
{
    return numberAttr(element, "Target", 0, 100, QStringLiteral("a percentage from 0 to 100"));
}

std::optional<double> readLimit(const pugi::xml_node &datum)
{
    constexpr double max = std::numeric_limits<double>::max();
    return numberAttr(datum, "Limit", -max, max, QStringLiteral("a number"));
}

int readKeep(const pugi::xml_node &report)
{
    const QString kind = QStringLiteral("a whole number from 0 to 1000");
    const double number = numberAttr(report, "Keep", 0, 1000, kind).value_or(0);
    if (number != std::floor(number))
        throw Error(
            TypeMismatch,
            QStringLiteral("Keep '%1' is not %2").arg(GetAttr(report, "Keep", QString()), kind));
    return static_cast<int>(number);
}

ReportMaintenance readMaintenance(const pugi::xml_node &element)
{
    const auto time = [&element](const char *name) {
        const QString text = GetAttr(element, name, QString());
        if (!isXmlDate(text) || !QDateTime::fromString(text.left(19), Qt::ISODate).isValid())
            throw Error(TypeMismatch, QStringLiteral("MAINTENANCE %1 '%2' is not a valid date")
                                          .arg(QString::fromLatin1(name), text));
        return XMLToDate(text);
    };
    ReportMaintenance maintenance{time("From"), time("To"), GetAttr(element, "Reason", QString())};
    if (maintenance.From >= maintenance.To)
        throw Error(TypeMismatch, QStringLiteral("MAINTENANCE From '%1' is not before its To")
                                      .arg(GetAttr(element, "From", QString())));
    return maintenance;
}

pugi::xml_node clsReportDef::XMLConfigEL(pugi::xml_node parent) const
{
    pugi::xml_node element = parent.append_child("CUSTOMREPORT");
    setAttr(element, "ReportID", ReportID);
    setAttr(element, "ReportTitle", ReportTitle);
    setAttr(element, "ChartID", ChartID);
    setAttr(element, "OutputFile", OutputFile);
    setAttr(element, "OutputTemplate", OutputTemplate);
    setNumberAttr(element, "Target", Target);
    if (!Hours.isEmpty())
        setAttr(element, "ServiceHours", Hours.text());
    if (!Compare)
        setAttr(element, "Compare", xmlBoolean(Compare));
    if (Pdf)
        setAttr(element, "Pdf", xmlBoolean(Pdf));
    if (Keep > 0)
        setAttr(element, "Keep", QString::number(Keep));
    for (const auto &schedule : ReportSchedules) {
        pugi::xml_node child = element.append_child("SCHEDULE");
        setAttr(child, "ScheduleID", schedule->ScheduleID);
        setAttr(child, "LastRunDate", DateToXML(schedule->LastRunDate));
    }
    for (const auto &device : ReportDevices) {
        pugi::xml_node child = element.append_child("DEVICE");
        setAttr(child, "MUID", device->MUID);
        setNumberAttr(child, "Target", device->Target);
        for (const auto &item : device->DataItems) {
            pugi::xml_node datum = child.append_child("DATUM");
            setAttr(datum, "DataIDent", item->DataIDent);
            setNumberAttr(datum, "Limit", item->Limit);
        }
    }
    for (const SelectionRule &rule : Rules)
        appendRule(element, rule);
    for (const ReportMaintenance &maintenance : Maintenance) {
        pugi::xml_node child = element.append_child("MAINTENANCE");
        setAttr(child, "From", DateToXML(maintenance.From));
        setAttr(child, "To", DateToXML(maintenance.To));
        setAttr(child, "Reason", maintenance.Reason);
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
    Target = readTarget(element);
    Hours = ServiceHours(GetAttr(element, "ServiceHours", QString()));
    Compare = xmlBoolean(GetAttr(element, "Compare", QStringLiteral("1")));
    Pdf = xmlBoolean(GetAttr(element, "Pdf", QStringLiteral("0")));
    Keep = readKeep(element);
    Maintenance.clear();
    for (const pugi::xml_node &child : element.children("MAINTENANCE")) {
        Maintenance.push_back(readMaintenance(child));
        const auto begin = GetAttr(child, "From", QString());
        if (std::count_if(Maintenance.begin(), Maintenance.end(), [&](const auto &other) {
                return other.From == Maintenance.back().From;
            }) > 1)
            throw Error(DuplicateKey,
                        QStringLiteral("MAINTENANCE From '%1' comes twice").arg(begin));
    }
    Rules.clear();
    for (const pugi::xml_node &child : element.children()) {
        if (qstrcmp(child.name(), "RULE") != 0 && qstrcmp(child.name(), "EXCEPT") != 0)
            continue;
        const SelectionRule rule = readRule(child);
        if (std::find(Rules.begin(), Rules.end(), rule) == Rules.end())
            Rules.push_back(rule);
    }
    ReportDevices.clear();
    forEachElement(element, "DEVICE", [this](const pugi::xml_node &child) {
        const std::shared_ptr<clsReportDeviceDef> device = readDevice(child);
        ReportDevices.add(device->MUID, device);
    });
}
