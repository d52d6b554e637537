#include "app/Check.h"

#include "app/CheckedFile.h"
#include "app/MailCheck.h"
#include "base/Clock.h"
#include "base/Error.h"
#include "base/FileSystem.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/Xml.h"
#include "charts/ImageFile.h"
#include "config/HostSettings.h"
#include "config/Program.h"
#include "config/clsGrapherConfig.h"
#include "database/Connection.h"
#include "database/RuleMatches.h"
#include "definitions/Advice.h"
#include "definitions/TemplateFile.h"
#include "definitions/clsReportDef.h"
#include "report/ReportPlan.h"
#include "report/TemplateNames.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <limits>

namespace {

constexpr int any = NumberRule::any;
constexpr std::array chartNumbers = {
    NumberRule{"Frequency", 0, 4},
    NumberRule{"SubFreq", 0, any},
    NumberRule{"MinuteInterval", 0, any},
    NumberRule{"IntervalCount", 0, any},
    NumberRule{"ChartDuration", 0, AfterLastDuration - 1},
    NumberRule{"ChartQuality", 0, any},
    NumberRule{"DetailCount", 0, any},
};
constexpr std::array scheduleNumbers = {
    NumberRule{"SchedInterval", 0, 5},
    NumberRule{"RescheduleTime", 0, std::numeric_limits<qint16>::max()},
};
constexpr std::array scheduleLists = {
    NumberRule{"HourList", 0, 23},
    NumberRule{"WeekDayList", 0, 7}, // old files have a 0, which never matches
    NumberRule{"MonthDayList", 1, 32},
    NumberRule{"MonthList", 1, 12},
};
constexpr std::array imageSizes = {
    NumberRule{"IMG_Width", 1, 16384},
    NumberRule{"IMG_Height", 1, 16384},
};

/// A definition file, or the factory copy that will become it.
QString definitionFile(const QString &name)
{
    const QString path = configurationFolder() + name;
    const QString working = path + QLatin1String(".XML");
    const QString factory = path + QLatin1String(".FAC");
    return !fileExists(working) && fileExists(factory) ? factory : working;
}

template <typename Read>
bool isReadable(Read read)
{
    try {
        read();
        return true;
    } catch (const Error &) {
        return false;
    }
}

class Check
{
public:
    explicit Check(QString &note)
        : m_note(note)
    {}

    Findings run()
    {
        checkProductConfiguration();
        checkGrapherConfiguration();
        checkCharts();
        checkSchedules();
        checkReports();
        checkMails(m_findings, m_reports);
        return m_findings;
    }

private:
    void checkProductConfiguration()
    {
        const QString path = WithBackslash(GetAppPath()) + QLatin1String("VantrelV6.Config");
        CheckedFile file(m_findings, path);
        if (!file.isRead())
            return;
        for (const char *folder : {"DataPath", "GraphDataPath"}) {
            const QString name = GetAttr(file.root(), folder, QString()).trimmed();
            if (!name.isEmpty())
                checkFolder(file, folder, name);
        }
        for (const char *number : {"GraphDataCommandTimeout", "GraphDataConnectionTimeout"})
            file.requireNumber(file.root(), {number, 0, any});
        const auto isSet = [&](const char *name) {
            return xmlBoolean(GetAttr(file.root(), name, QStringLiteral("0")));
        };
        if (!GetAttr(file.root(), "GraphDataSQLConnect", QString()).trimmed().isEmpty())
            return;
        for (const char *flag : {"GraphDataSQL", "GraphDataDSN"}) {
            if (isSet(flag))
                file.add(file.root(), flag,
                         QStringLiteral("a server is chosen, but GraphDataSQLConnect is empty: "
                                        "the Access file is used instead"));
        }
    }

    /// The folder in an attribute of the root has to exist.
    static void checkFolder(CheckedFile &file, const char *attribute, const QString &name)
    {
        const QString fault = platform::nameFault(name);
        if (!fault.isEmpty())
            file.add(file.root(), attribute, QStringLiteral("'%1': %2").arg(name, fault));
        else if (!folderExists(name))
            file.add(file.root(), attribute, QStringLiteral("there is no folder '%1'").arg(name));
    }

    void checkGrapherConfiguration()
    {
        CheckedFile file(m_findings,
                         WithBackslash(programFolder()) + QLatin1String("VTRGConfigV6.XML"));
        if (!file.isRead())
            return;
        checkFolder(file, "PTH_Config", configurationFolder());
        if (const QString output = gConfig().PTH_Output(); !platform::nameFault(output).isEmpty())
            checkFolder(file, "PTH_Output", output); // a run creates it if necessary
        for (const TemplateNames &kind : pageTemplateNames())
            checkTemplate(file, file.root(), kind, QString());
        for (const char *output :
             {"TOU_TOC", "TOU_REPORT", "TOU_REP_Top", "TOU_REP_TOC", "TOU_REP_Summary"}) {
            if (GetAttr(file.root(), output, QString()).trimmed().isEmpty())
                file.add(file.root(), output,
                         QStringLiteral("%1 names no file").arg(QLatin1String(output)));
        }
        if (!isImageFormat(gConfig().IMG_Format))
            file.add(file.root(), "IMG_Format",
                     QStringLiteral("IMG_Format '%1' is not PNG, JPEG or BMP: charts are written "
                                    "as PNG")
                         .arg(gConfig().IMG_Format));
        for (const NumberRule &rule : imageSizes)
            file.requireNumber(file.root(), rule);
        forEachElement(file.document(), "COPYFILE", [&](const pugi::xml_node &copy) {
            const QString name = GetAttr(copy, "Name", QString());
            if (const QString fault = companionFault(name); !fault.isEmpty())
                file.add(copy, "Name", fault);
        });
    }

    /// Reads the template in an attribute, once however often it occurs.
    void checkTemplate(CheckedFile &file, const pugi::xml_node &element, const TemplateNames &kind,
                       const QString &fallback)
    {
        const QByteArray attribute(kind.attribute.data(), kind.attribute.size());
        const QString name = GetAttr(element, attribute.constData(), fallback);
        if (name.isEmpty()) {
            file.add(element, attribute.constData(),
                     QStringLiteral("%1 names no template").arg(kind.attribute));
            return;
        }
        // A chart may name its template by a full path.
        const QString path =
            fallback.isNull() ? configurationFolder() + name : chartTemplatePath(name);
        if (!fileExists(path)) {
            file.add(element, attribute.constData(),
                     QStringLiteral("there is no template '%1'").arg(name));
            return;
        }
        if (const QString fault = templateFault(path); !fault.isEmpty()) {
            file.add(element, attribute.constData(), fault);
            return;
        }
        const QString key = kind.attribute + u' ' + path;
        if (m_templates.contains(key))
            return;
        m_templates.insert(key);
        checkTemplateText(m_findings, path, kind);
    }

    void checkCharts()
    {
        CheckedFile file(m_findings, definitionFile(QStringLiteral("ChartDefs")));
        m_chartsRead = file.isRead();
        file.requireRoot("CHARTDEFS");
        Ids titles;
        forEachElement(file.document(), "CHART", [&](const pugi::xml_node &chart) {
            if (!xmlBoolean(GetAttr(chart, "Include", QStringLiteral("1"))))
                return; // never loaded, so never referred to
            file.requireNewId(chart, "ChartID", m_charts);
            file.requireNewTitle(chart, "Title", titles);
            keep(chart, m_chartDefs);
            checkIntervals(file, chart);
            for (const NumberRule &rule : chartNumbers)
                file.requireNumber(chart, rule);
            file.requireDate(chart, "StartTime");
            file.requireDate(chart, "EndTime");
            const std::array defaults = {QStringLiteral("StateChart.HTML"),
                                         QStringLiteral("CountChart.HTML")};
            for (size_t i = 0; i < defaults.size(); ++i)
                checkTemplate(file, chart, chartTemplateNames()[i], defaults[i]);
        });
    }

    /// Checks that a run that starts now could draw the chart.
    void checkIntervals(CheckedFile &file, const pugi::xml_node &element) const
    {
        const auto chart = m_chartDefs.value(GetAttr(element, "ChartID", QString()).toLower());
        if (!chart)
            return;
        const PlannedReport plan = plannedReport(clsReportDef(), chart.get(), currentInstant());
        if (!plan.axisError || plan.axisError->number != Overflow)
            return;
        const bool isCounted = chart->SubFrequency == LastIntervals;
        file.add(element, isCounted ? "IntervalCount" : nullptr, plan.axisError->description);
    }

    void checkSchedules()
    {
        CheckedFile file(m_findings, definitionFile(QStringLiteral("ChartSchedules")));
        m_schedulesRead = file.isRead();
        file.requireRoot("SCHEDULES");
        Ids titles;
        forEachElement(file.document(), "SCHEDULE", [&](const pugi::xml_node &schedule) {
            file.requireNewId(schedule, "ScheduleID", m_schedules);
            file.requireNewTitle(schedule, "ScheduleName", titles);
            keep(schedule, m_scheduleDefs);
            for (const NumberRule &rule : scheduleNumbers)
                file.requireNumber(schedule, rule);
            for (const NumberRule &rule : scheduleLists)
                file.requireNumberList(schedule, rule);
            const auto plan =
                m_scheduleDefs.value(GetAttr(schedule, "ScheduleID", QString()).toLower());
            if (const QString why = plan ? whyItNeverRuns(*plan) : QString(); !why.isEmpty())
                file.add(schedule, nullptr, QLatin1String("the schedule never runs: ") + why);
        });
    }

    void checkReports()
    {
        const QString path = configurationFolder() + QLatin1String("ChartSelection.XML");
        if (!fileExists(path)) {
            m_findings.add(nativePath(path), QStringLiteral("there is no such file: no report is "
                                                            "defined, and no run begins"));
            return;
        }
        CheckedFile file(m_findings, path);
        if (!file.isRead())
            return;
        file.requireRoot("REPORTDEFINITIONS");
        readDatabase();
        Ids titles;
        forEachElement(file.document(), "CUSTOMREPORT", [&](const pugi::xml_node &report) {
            file.requireNewId(report, "ReportID", m_reports);
            file.requireNewTitle(report, "ReportTitle", titles);
            if (m_chartsRead)
                file.requireKnown(report, "ChartID", m_charts, QStringLiteral("chart definition"));
            checkFigures(file, report);
            Ids schedules;
            for (const pugi::xml_node &schedule : report.children("SCHEDULE")) {
                file.requireNewId(schedule, "ScheduleID", schedules);
                checkLastRun(file, schedule);
                checkPeriod(file, report, schedule);
                if (m_schedulesRead)
                    file.requireKnown(schedule, "ScheduleID", m_schedules,
                                      QStringLiteral("schedule"));
            }
            Ids devices;
            for (const pugi::xml_node &device : report.children("DEVICE")) {
                file.requireNewId(device, "MUID", devices);
                checkDevice(file, device);
            }
            if (!checkRules(file, report) && devices.isEmpty())
                file.add(report, nullptr, QStringLiteral("the report has no device"));
        });
    }

    /// Whether the report has rules. Each should find something.
    bool checkRules(CheckedFile &file, const pugi::xml_node &report)
    {
        std::vector<SelectionRule> rules;
        for (const pugi::xml_node &element : report.children()) {
            const bool isException = qstrcmp(element.name(), "EXCEPT") == 0;
            if (!isException && qstrcmp(element.name(), "RULE") != 0)
                continue;
            try {
                SelectionRule rule = readRule(element);
                rules.push_back(rule);
                rule.isException = false;
                if (m_inventory && ruleMatches({rule}, *m_inventory).empty())
                    file.add(
                        element, nullptr,
                        QStringLiteral("the %1 finds nothing in the database: %2")
                            .arg(isException ? QLatin1String("exception") : QLatin1String("rule"),
                                 ruleInWords(rule)));
            } catch (const Error &error) {
                file.add(element, "Kind", error.description);
                rules.emplace_back();
            }
        }
        const bool findsNothing =
            m_inventory && !rules.empty() && ruleMatches(rules, *m_inventory).empty();
        if (findsNothing && report.child("DEVICE").empty())
            file.add(report, nullptr, QStringLiteral("the report's rules find no device"));
        return !rules.empty();
    }

    /// What the figures of a report are held against.
    static void checkFigures(CheckedFile &file, const pugi::xml_node &report)
    {
        const auto check = [&file](const pugi::xml_node &element, const char *attribute,
                                   const std::function<void()> &read) {
            try {
                read();
            } catch (const Error &error) {
                file.add(element, attribute, error.description);
            }
        };
        check(report, "Target", [&] { readTarget(report); });
        check(report, "Keep", [&] { readKeep(report); });
        check(report, "ServiceHours",
              [&] { ServiceHours(GetAttr(report, "ServiceHours", QString())); });
        Ids begins;
        for (const pugi::xml_node &maintenance : report.children("MAINTENANCE")) {
            check(maintenance, "From", [&] { readMaintenance(maintenance); });
            file.requireNewId(maintenance, "From", begins);
        }
        for (const pugi::xml_node &device : report.children("DEVICE")) {
            check(device, "Target", [&] { readTarget(device); });
            for (const pugi::xml_node &datum : device.children("DATUM"))
                check(datum, "Limit", [&] { readLimit(datum); });
        }
    }

    static void checkLastRun(CheckedFile &file, const pugi::xml_node &schedule)
    {
        file.requireDate(schedule, "LastRunDate");
        clsReportSchedule entry;
        entry.LastRunDate = XMLToDate(GetAttr(schedule, "LastRunDate", QString()));
        if (ranInFuture(entry))
            file.add(schedule, "LastRunDate",
                     QStringLiteral("LastRunDate '%1' is in the future: the report counts as never "
                                    "run")
                         .arg(GetAttr(schedule, "LastRunDate", QString())));
    }

    void checkPeriod(CheckedFile &file, const pugi::xml_node &report,
                     const pugi::xml_node &schedule) const
    {
        const auto chart = m_chartDefs.value(GetAttr(report, "ChartID", QString()).toLower());
        const auto plan =
            m_scheduleDefs.value(GetAttr(schedule, "ScheduleID", QString()).toLower());
        const QString warning = chart && plan ? samePeriodWarning(*chart, *plan) : QString();
        if (!warning.isEmpty())
            file.add(schedule, "ScheduleID", warning);
    }

    /// Stores a definition by its id; one that cannot be read has a finding already.
    static void keep(const pugi::xml_node &element,
                     QHash<QString, std::shared_ptr<clsGraphDef>> &definitions)
    {
        const auto chart = std::make_shared<clsGraphDef>();
        if (isReadable([&] { chart->readAttributes(element); }))
            definitions.insert(chart->ChartID.toLower(), chart);
    }
    static void keep(const pugi::xml_node &element,
                     QHash<QString, std::shared_ptr<clsScheduleDef>> &definitions)
    {
        const auto schedule = std::make_shared<clsScheduleDef>();
        if (isReadable([&] { schedule->readElement(element); }))
            definitions.insert(schedule->ScheduleID.toLower(), schedule);
    }

    void checkDevice(CheckedFile &file, const pugi::xml_node &device)
    {
        const QString muid = GetAttr(device, "MUID", QString());
        const DeviceRow *row = m_inventory ? m_inventory->device(muid) : nullptr;
        if (m_inventory && !row)
            file.add(device, "MUID", QStringLiteral("the database has no device '%1'").arg(muid));
        Ids items;
        for (const pugi::xml_node &datum : device.children("DATUM")) {
            file.requireNewId(datum, "DataIDent", items);
            const QString item = GetAttr(datum, "DataIDent", QString());
            if (!item.isEmpty() && !isDataIdent(item))
                file.add(datum, "DataIDent",
                         QStringLiteral("DataIDent '%1' is not a whole number").arg(item));
            if (!row)
                continue;
            const ItemRow *known = m_inventory->item(item.toLongLong());
            if (!known)
                file.add(datum, "DataIDent",
                         QStringLiteral("the database has no data item '%1'").arg(item));
            else if (known->deviceIdent != row->ident)
                file.add(datum, "DataIDent",
                         QStringLiteral("data item '%1' belongs to another device").arg(item));
        }
    }

    void readDatabase()
    {
        const QString notChecked = QStringLiteral("Devices and data items were not checked: ");
        RunLog log(observer());
        DatabaseConnection connection(databaseSource());
        try {
            MonitoringDatabase &database = connection.open(log);
            m_inventory = database.inventory();
            const QStringList faults = database.verify();
            for (const QString &fault : faults)
                m_findings.add(nativePath(program().gDataPath + QLatin1String("VTRGData.MDB")),
                               fault);
        } catch (const ShownError &error) {
            m_note = notChecked + error.description;
        } catch (const Error &error) {
            m_note = notChecked + errorTail(error);
        }
    }

    Findings m_findings;
    QString &m_note;
    Ids m_charts;
    Ids m_schedules;
    Ids m_reports;
    bool m_chartsRead = false;
    bool m_schedulesRead = false;
    QHash<QString, std::shared_ptr<clsGraphDef>> m_chartDefs; ///< by id in lower case
    QHash<QString, std::shared_ptr<clsScheduleDef>> m_scheduleDefs;
    QSet<QString> m_templates;                    ///< "attribute path" of those that were read
    std::shared_ptr<const Inventory> m_inventory; ///< null: not known
};

} // namespace

Findings checkEverything(QString &note)
{
    return Check(note).run();
}
