#include "definitions/DefinitionStores.h"

#include "core/Error.h"
#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/Status.h"
#include "core/Xml.h"
#include "core/platform/EventLog.h"

Collection<clsGraphDef> gChartDefs;
Collection<clsScheduleDef> gScheduleDefs;
Collection<clsReportDef> gReportDefs;

namespace {

/// A definition file, and what this process did with it.
struct DefinitionFile
{
    const char *root;
    const char *child;
    const char *name;
    const char *factory; ///< null: it has none
    bool factoryTried = false;
    QString readWhole =
        QString(); ///< the path from which everything was read, or to which it was written

    QString error = QString(); ///< why the last load could not read it whole

    QString path() const { return configurationFolder() + QLatin1String(name); }
};

struct DefinitionFiles
{
    DefinitionFile charts{"CHARTDEFS", "CHART", "ChartDefs.XML", "ChartDefs.FAC"};
    DefinitionFile schedules{"SCHEDULES", "SCHEDULE", "ChartSchedules.XML", "ChartSchedules.FAC"};
    DefinitionFile reports{"REPORTDEFINITIONS", "CUSTOMREPORT", "ChartSelection.XML", nullptr};
};

DefinitionFiles files;

const QString &idOf(const clsGraphDef &chart)
{
    return chart.ChartID;
}

const QString &idOf(const clsScheduleDef &schedule)
{
    return schedule.ScheduleID;
}

const QString &idOf(const clsReportDef &report)
{
    return report.ReportID;
}

void copyFactoryFile(DefinitionFile &file)
{
    if (!file.factory || file.factoryTried)
        return;
    file.factoryTried = true;
    if (!fileExists(file.path()))
        CopyFileQuiet(configurationFolder() + QLatin1String(file.factory), file.path());
}

/// Makes it known that a file could not be read whole; `error` names the place.
void noteFault(DefinitionFile &file, const QString &error)
{
    file.error = error;
    LogEvent(runEvent, EventWarning, QLatin1String("Error reading definitions ") + error);
}

/// False when the file is missing, unreadable or malformed.
bool readDocument(DefinitionFile &file, pugi::xml_document &document)
{
    file.error.clear();
    try {
        parseXml(document, readFile(file.path()));
        return true;
    } catch (const Error &error) {
        if (error.number != FileNotFound)
            noteFault(file, file.path() + u':' + error.description);
        return false;
    }
}

bool isIncluded(const pugi::xml_node &element)
{
    return qstrcmp(element.name(), "CHART") != 0 ||
           xmlBoolean(GetAttr(element, "Include", QStringLiteral("1")));
}

/// Throws Error that names the element at fault; `definitions` then holds those before it.
template <typename T>
void load(DefinitionFile &file, Collection<T> &definitions)
{
    copyFactoryFile(file);
    definitions.clear();
    file.readWhole.clear();
    pugi::xml_document document;
    if (!readDocument(file, document))
        return;
    int count = 0;
    forEachElement(document, file.child, [&](const pugi::xml_node &element) {
        ++count;
        if (!isIncluded(element))
            return;
        try {
            const auto definition = std::make_shared<T>();
            definition->readElement(element);
            definitions.add(idOf(*definition), definition);
        } catch (const Error &error) {
            const QString text = QStringLiteral("%1 (%2 number %3 of '%4')")
                                     .arg(error.description, QLatin1String(file.child),
                                          QString::number(count), file.path());
            noteFault(file, text);
            throw Error(error.number, text);
        }
    });
    file.readWhole = file.path();
}

/// What the user wrote into a file that could not be read whole must outlive the save.
void keepUnreadFile(const DefinitionFile &file)
{
    const QString path = file.path();
    if (path == file.readWhole || !fileExists(path))
        return;
    const QString kept = path + QLatin1String(".bad");
    copyFile(path, kept);
    ShowStatus(QStringLiteral("'%1' could not be read whole and is kept as '%2'.").arg(path, kept));
}

template <typename T>
void save(DefinitionFile &file, const Collection<T> &definitions)
{
    pugi::xml_document document;
    const pugi::xml_node root = document.append_child(file.root);
    for (const auto &definition : definitions)
        definition->XMLConfigEL(root);
    keepUnreadFile(file);
    saveFile(file.path(), documentBytes(document));
    file.readWhole = file.path();
}

void showError(const char *what, const Error &error)
{
    ShowStatus(QStringLiteral("Error %1 ").arg(QLatin1String(what)) + errorTail(error));
}

template <typename T>
std::optional<Error> saved(DefinitionFile &file, const Collection<T> &definitions, const char *what)
{
    try {
        save(file, definitions);
    } catch (const Error &error) {
        showError(what, error);
        return error;
    }
    return std::nullopt;
}

template <typename T, typename Change>
void changeAndSave(Collection<T> &definitions, std::optional<Error> (*saveAll)(), Change change)
{
    const Collection<T> before = definitions;
    change();
    if (const std::optional<Error> error = saveAll()) {
        definitions = before;
        throw *error;
    }
}

} // namespace

QStringList definitionFileErrors()
{
    QStringList errors = {files.charts.error, files.schedules.error, files.reports.error};
    errors.removeAll(QString());
    return errors;
}

void LoadChartDefs()
{
    ShowStatus(QStringLiteral("Loading chart definitions."));
    try {
        load(files.charts, gChartDefs);
        gChartDefs.sortByText([](const clsGraphDef &chart) { return chart.ChartTitle; });
    } catch (const Error &error) {
        showError("loading chart definitions", error);
    }
}

void LoadScheduleDefs()
{
    ShowStatus(QStringLiteral("Loading schedule definitions."));
    try {
        load(files.schedules, gScheduleDefs);
    } catch (const Error &) {
        // Schedules have no message of their own; a later save keeps the file.
    }
}

void LoadReportDefs()
{
    ShowStatus(QStringLiteral("Loading report selections."));
    try {
        load(files.reports, gReportDefs);
        gReportDefs.sortByText([](const clsReportDef &report) { return report.ReportTitle; });
    } catch (const Error &error) {
        showError("loading report selections", error);
    }
}

std::optional<Error> SaveChartDefs()
{
    ShowStatus(QStringLiteral("Saving chart definitions."));
    return saved(files.charts, gChartDefs, "saving chart definitions");
}

std::optional<Error> SaveScheduleDefs()
{
    ShowStatus(QStringLiteral("Saving schedule definitions."));
    return saved(files.schedules, gScheduleDefs, "saving schedule definitions");
}

std::optional<Error> SaveReportDefs()
{
    ShowStatus(QStringLiteral("Saving report definition."));
    return saved(files.reports, gReportDefs, "saving report selections");
}

void storeDefinition(const std::shared_ptr<clsGraphDef> &chart)
{
    changeAndSave(gChartDefs, SaveChartDefs,
                  [&chart] { gChartDefs.replace(chart->ChartID, chart); });
}

void storeDefinition(const std::shared_ptr<clsScheduleDef> &schedule)
{
    changeAndSave(gScheduleDefs, SaveScheduleDefs,
                  [&schedule] { gScheduleDefs.replace(schedule->ScheduleID, schedule); });
}

void storeDefinition(const std::shared_ptr<clsReportDef> &report)
{
    changeAndSave(gReportDefs, SaveReportDefs,
                  [&report] { gReportDefs.replace(report->ReportID, report); });
}

void removeReportDef(const QString &reportId)
{
    changeAndSave(gReportDefs, SaveReportDefs, [&reportId] { gReportDefs.remove(reportId); });
}

void resetDefinitions()
{
    gChartDefs.clear();
    gScheduleDefs.clear();
    gReportDefs.clear();
    files = DefinitionFiles();
}
