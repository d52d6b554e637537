#include "definitions/DefinitionStores.h"

#include "core/Error.h"
#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/Status.h"
#include "core/Xml.h"
#include "core/XmlPatch.h"
#include "core/platform/EventLog.h"
#include "definitions/Merge.h"

#include <QSet>

#include <optional>

Collection<clsGraphDef> gChartDefs;
Collection<clsScheduleDef> gScheduleDefs;
Collection<clsReportDef> gReportDefs;

namespace {

/// A definition file, and what this process knows of it.
struct DefinitionFile
{
    const char *root;
    const char *child;
    const char *id;
    const char *title;
    const char *name;
    const char *factory; ///< null: it has none
    bool factoryTried = false;
    QSet<QString> known = {};  ///< ids, in lower case, that were loaded from it or saved to it
    QStringList givenIds = {}; ///< ids that the last load gave to elements without one, in order
    QString fileError = {};    ///< why the last load could read nothing
    QStringList errors = {};   ///< why it could not read single definitions
    QSet<QString> logged = {}; ///< what the event log knows already

    QString path() const { return configurationFolder() + QLatin1String(name); }
};

struct DefinitionFiles
{
    DefinitionFile charts{"CHARTDEFS", "CHART",         "ChartID",
                          "Title",     "ChartDefs.XML", "ChartDefs.FAC"};
    DefinitionFile schedules{"SCHEDULES",    "SCHEDULE",           "ScheduleID",
                             "ScheduleName", "ChartSchedules.XML", "ChartSchedules.FAC"};
    DefinitionFile reports{"REPORTDEFINITIONS", "CUSTOMREPORT",       "ReportID",
                           "ReportTitle",       "ChartSelection.XML", nullptr};
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

void showError(const char *what, const Error &error)
{
    ShowStatus(QStringLiteral("Error %1 ").arg(QLatin1String(what)) + errorTail(error));
}

void log(DefinitionFile &file, const QString &error)
{
    if (file.logged.contains(error))
        return; // a run loads its definitions many times
    file.logged.insert(error);
    LogEvent(runEvent, EventWarning, QLatin1String("Error reading definitions ") + error);
}

/// Throws Error when the document is no definition file of this kind.
void requireRoot(const DefinitionFile &file, const pugi::xml_document &document)
{
    const char *root = document.document_element().name();
    if (qstrcmp(root, file.root) != 0)
        throw Error(InvalidFileFormat,
                    file.path() + QStringLiteral(": the root element is '%1', not '%2'")
                                      .arg(QString::fromUtf8(root), QLatin1String(file.root)));
}

/// Does something with the file's content; an Error then names the file.
template <typename Action>
void withPath(const DefinitionFile &file, Action action)
{
    try {
        action();
    } catch (const Error &error) {
        throw Error(error.number, file.path() + u':' + error.description);
    }
}

/// Throws Error(FileNotFound) when there is no file, and Error naming the place when it cannot be
/// read.
void readDocument(const DefinitionFile &file, pugi::xml_document &document)
{
    const QByteArray bytes = readFile(file.path());
    withPath(file, [&] { parseXml(document, bytes); });
    requireRoot(file, document);
}

bool isIncluded(const pugi::xml_node &element)
{
    return qstrcmp(element.name(), "CHART") != 0 ||
           xmlBoolean(GetAttr(element, "Include", QStringLiteral("1")));
}

QString faultText(const DefinitionFile &file, const pugi::xml_node &element, int number,
                  const Error &error)
{
    const QString title = GetAttr(element, file.title, QString());
    return QStringLiteral("%1 (%2 number %3%4 of '%5')")
        .arg(error.description, QLatin1String(file.child), QString::number(number),
             title.isEmpty() ? title : QLatin1String(" '") + title + u'\'', file.path());
}

struct NoTemplates
{
    void operator()(clsGraphDef &chart, const pugi::xml_node &element) const
    {
        chart.readAttributes(element);
    }
    template <typename T>
    void operator()(T &definition, const pugi::xml_node &element) const
    {
        definition.readElement(element);
    }
};

struct Whole
{
    template <typename T>
    void operator()(T &definition, const pugi::xml_node &element) const
    {
        definition.readElement(element);
    }
};

/// The definitions of a document, each with its element. One that cannot be read is passed over:
/// `onFault(error)` names it.
template <typename T, typename Read, typename OnFault>
std::vector<KeyedElement> readDefinitions(const DefinitionFile &file,
                                          const pugi::xml_document &document,
                                          Collection<T> &definitions, Read read, OnFault onFault)
{
    std::vector<KeyedElement> elements;
    int number = 0;
    forEachElement(document, file.child, [&](const pugi::xml_node &element) {
        ++number;
        if (!isIncluded(element))
            return;
        try {
            const auto definition = std::make_shared<T>();
            read(*definition, element);
            definitions.add(idOf(*definition), definition);
            elements.push_back({element, idOf(*definition)});
        } catch (const Error &error) {
            onFault(Error(error.number, faultText(file, element, number, error)));
        }
    });
    return elements;
}

/// The elements of a document that the collections know as definitions, under their ids there.
template <typename T>
std::vector<KeyedElement> elementsOf(const DefinitionFile &file, const pugi::xml_document &document)
{
    Collection<T> definitions;
    std::vector<KeyedElement> elements =
        readDefinitions(file, document, definitions, NoTemplates(), [](const Error &) {});
    qsizetype without = 0;
    for (KeyedElement &each : elements) {
        if (!each.node.attribute(file.id) && without < file.givenIds.size())
            each.key = file.givenIds[without++];
    }
    return elements;
}

/// `what`: null for a load that shows no status line.
template <typename T>
void load(DefinitionFile &file, Collection<T> &definitions, const char *what)
{
    copyFactoryFile(file);
    definitions.clear();
    file.known.clear();
    file.givenIds.clear();
    file.fileError.clear();
    file.errors.clear();
    pugi::xml_document document;
    try {
        readDocument(file, document);
    } catch (const Error &error) {
        if (error.number == FileNotFound)
            return;
        file.fileError = error.description;
        log(file, error.description);
        return;
    }
    const auto onFault = [&](const Error &error) {
        file.errors.append(error.description);
        log(file, error.description);
        if (what)
            showError(what, error);
    };
    const std::vector<KeyedElement> elements =
        readDefinitions(file, document, definitions, Whole(), onFault);
    for (const KeyedElement &each : elements) {
        file.known.insert(each.key.toLower());
        if (!each.node.attribute(file.id))
            file.givenIds.append(each.key);
    }
}

/// Puts definitions into the file as it stands now, and takes out those with the ids `removed` (in
/// lower case). Whatever else the file holds stays: what could not be read, what was written into
/// it meanwhile, comments. Throws Error, also when the file cannot be read: nothing is lost then.
template <typename T>
void changeFile(DefinitionFile &file, const std::vector<std::shared_ptr<T>> &changed,
                const QSet<QString> &removed)
{
    pugi::xml_document document;
    const bool isThere = fileExists(file.path());
    if (isThere)
        readDocument(file, document);
    else
        document.append_child(file.root);
    const QByteArray before = isThere ? documentBytes(document) : QByteArray();

    pugi::xml_document written;
    const pugi::xml_node writtenRoot = written.append_child(file.root);
    std::vector<KeyedElement> fresh;
    QSet<QString> ids;
    for (const auto &definition : changed) {
        fresh.push_back({definition->XMLConfigEL(writtenRoot), idOf(*definition)});
        ids.insert(idOf(*definition).toLower());
    }
    std::vector<KeyedElement> present = elementsOf<T>(file, document);
    std::erase_if(present, [&](const KeyedElement &each) {
        if (removed.contains(each.key.toLower()))
            each.node.parent().remove_child(each.node);
        return !ids.contains(each.key.toLower());
    });
    mergeElements(document.document_element(), present, fresh);

    const QByteArray after = documentBytes(document);
    if (after != before)
        saveFile(file.path(), after);
    file.known.unite(ids).subtract(removed);
}

/// Runs what saves; a failure becomes a status line and is returned.
template <typename Save>
std::optional<Error> saved(const char *what, Save save)
{
    try {
        save();
    } catch (const Error &error) {
        showError(what, error);
        return error;
    }
    return std::nullopt;
}

template <typename T>
std::optional<Error> saveAll(DefinitionFile &file, const Collection<T> &definitions,
                             const char *what)
{
    return saved(what, [&] {
        QSet<QString> gone = file.known;
        for (const auto &definition : definitions)
            gone.remove(idOf(*definition).toLower());
        changeFile(file, std::vector(definitions.begin(), definitions.end()), gone);
    });
}

void throwIf(const std::optional<Error> &error)
{
    if (error)
        throw *error;
}

template <typename T>
void store(DefinitionFile &file, Collection<T> &definitions, const std::shared_ptr<T> &definition,
           const char *what)
{
    throwIf(saved(what, [&] { changeFile<T>(file, {definition}, {}); }));
    definitions.replace(idOf(*definition), definition);
}

/// Sets attributes in the file as it stands now, and nothing else: `choose(patch, element)` is
/// called with the element of the definition with that id, if there is one. Throws Error.
template <typename T, typename Choose>
void patchFile(const DefinitionFile &file, const QString &id, Choose choose)
{
    const QByteArray bytes = readFile(file.path());
    std::optional<XmlPatch> patch;
    withPath(file, [&] { patch.emplace(bytes); });
    requireRoot(file, patch->document());
    for (const KeyedElement &each : elementsOf<T>(file, patch->document())) {
        if (each.key.compare(id, Qt::CaseInsensitive) == 0)
            choose(*patch, each.node);
    }
    const QByteArray changed = patch->bytes();
    if (changed != bytes)
        saveFile(file.path(), changed);
}

constexpr const char *savingCharts = "saving chart definitions";
constexpr const char *savingSchedules = "saving schedule definitions";
constexpr const char *savingReports = "saving report selections";

void showSavingCharts()
{
    ShowStatus(QStringLiteral("Saving chart definitions."));
}

void showSavingSchedules()
{
    ShowStatus(QStringLiteral("Saving schedule definitions."));
}

void showSavingReports()
{
    ShowStatus(QStringLiteral("Saving report definition."));
}

} // namespace

QStringList definitionFileErrors()
{
    QStringList errors = {files.charts.fileError, files.schedules.fileError,
                          files.reports.fileError};
    errors.removeAll(QString());
    return errors;
}

QStringList definitionErrors()
{
    return files.charts.errors + files.schedules.errors + files.reports.errors;
}

void LoadChartDefs()
{
    ShowStatus(QStringLiteral("Loading chart definitions."));
    load(files.charts, gChartDefs, "loading chart definitions");
    gChartDefs.sortByText([](const clsGraphDef &chart) { return chart.ChartTitle; });
}

void LoadScheduleDefs()
{
    ShowStatus(QStringLiteral("Loading schedule definitions."));
    load(files.schedules, gScheduleDefs, nullptr);
}

void LoadReportDefs()
{
    ShowStatus(QStringLiteral("Loading report selections."));
    load(files.reports, gReportDefs, "loading report selections");
    gReportDefs.sortByText([](const clsReportDef &report) { return report.ReportTitle; });
}

std::optional<Error> SaveChartDefs()
{
    showSavingCharts();
    return saveAll(files.charts, gChartDefs, savingCharts);
}

std::optional<Error> SaveScheduleDefs()
{
    showSavingSchedules();
    return saveAll(files.schedules, gScheduleDefs, savingSchedules);
}

std::optional<Error> SaveReportDefs()
{
    showSavingReports();
    return saveAll(files.reports, gReportDefs, savingReports);
}

std::optional<Error> saveLastRunDates(const clsReportDef &report)
{
    showSavingReports();
    const auto setDates = [&report](XmlPatch &patch, const pugi::xml_node &element) {
        forEachElement(element, "SCHEDULE", [&](const pugi::xml_node &entry) {
            const auto schedule =
                report.ReportSchedules.find(GetAttr(entry, "ScheduleID", QString()));
            if (schedule)
                patch.set(entry, "LastRunDate", DateToXML(schedule->LastRunDate));
        });
    };
    return saved(savingReports,
                 [&] { patchFile<clsReportDef>(files.reports, report.ReportID, setDates); });
}

std::optional<Error> saveChartPeriods(const std::vector<std::shared_ptr<clsGraphDef>> &charts)
{
    showSavingCharts();
    return saved(savingCharts, [&charts] {
        for (const auto &chart : charts) {
            const auto setPeriod = [&chart](XmlPatch &patch, const pugi::xml_node &element) {
                patch.set(element, "StartTime", DateToXML(chart->StartTime));
                patch.set(element, "EndTime", DateToXML(chart->EndTime));
            };
            patchFile<clsGraphDef>(files.charts, chart->ChartID, setPeriod);
        }
    });
}

void storeDefinition(const std::shared_ptr<clsGraphDef> &chart)
{
    showSavingCharts();
    store(files.charts, gChartDefs, chart, savingCharts);
}

void storeDefinition(const std::shared_ptr<clsScheduleDef> &schedule)
{
    showSavingSchedules();
    store(files.schedules, gScheduleDefs, schedule, savingSchedules);
}

void storeDefinition(const std::shared_ptr<clsReportDef> &report)
{
    showSavingReports();
    store(files.reports, gReportDefs, report, savingReports);
}

void removeReportDef(const QString &reportId)
{
    showSavingReports();
    throwIf(saved(savingReports, [&reportId] {
        changeFile<clsReportDef>(files.reports, {}, {reportId.toLower()});
    }));
    gReportDefs.remove(reportId);
}

void resetDefinitions()
{
    gChartDefs.clear();
    gScheduleDefs.clear();
    gReportDefs.clear();
    files = DefinitionFiles();
}
