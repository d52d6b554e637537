#include "definitions/Definitions.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/ProgramState.h"
#include "base/Xml.h"
#include "base/XmlPatch.h"
#include "config/Status.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Merge.h"
#include "platform/EventLog.h"

#include <optional>

namespace {

const StatePart<Definitions> currentDefinitions;

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

/// Throws Error when the document is not a definition file of this kind.
void requireRoot(const DefinitionFile &file, const pugi::xml_document &document)
{
    const char *root = document.document_element().name();
    if (qstrcmp(root, file.root) != 0)
        throw Error(InvalidFileFormat,
                    file.path() + QStringLiteral(": the root element is '%1', not '%2'")
                                      .arg(QString::fromUtf8(root), QLatin1String(file.root)));
}

/// Handles the file's content; an Error then names the file.
template <typename Action>
void withPath(const DefinitionFile &file, Action action)
{
    try {
        action();
    } catch (const Error &error) {
        throw Error(error.number, file.path() + u':' + error.description);
    }
}

/// Throws Error(FileNotFound) when there is no file, and Error saying where when it cannot be
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

/// The definitions of a document, each with its element. One that cannot be read is skipped and
/// reported to `onFault(error)`.
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

/// The elements of a document that are definitions in the collections, by their ids there.
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

/// Replaces a collection by the file's content. Returns the errors of skipped definitions.
template <typename T>
std::vector<Error> load(DefinitionFile &file, Collection<T> &definitions)
{
    copyFactoryFile(file);
    definitions.clear();
    file.known.clear();
    file.givenIds.clear();
    file.fileError.clear();
    file.errors.clear();
    std::vector<Error> faults;
    pugi::xml_document document;
    try {
        readDocument(file, document);
    } catch (const Error &error) {
        if (error.number == FileNotFound)
            return faults;
        file.fileError = error.description;
        log(file, error.description);
        return faults;
    }
    const auto onFault = [&](const Error &error) {
        file.errors.append(error.description);
        log(file, error.description);
        faults.push_back(error);
    };
    const std::vector<KeyedElement> elements =
        readDefinitions(file, document, definitions, Whole(), onFault);
    for (const KeyedElement &each : elements) {
        file.known.insert(each.key.toLower());
        if (!each.node.attribute(file.id))
            file.givenIds.append(each.key);
    }
    return faults;
}

/// Writes definitions into the current file and removes those with the ids `removed` (in lower
/// case). Everything else in the file stays: what could not be read, what was added in the
/// meantime, comments. Throws Error, also when the file cannot be read, and then does not change
/// it.
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
    std::vector<KeyedElement> existing = elementsOf<T>(file, document);
    std::erase_if(existing, [&](const KeyedElement &each) {
        if (removed.contains(each.key.toLower()))
            each.node.parent().remove_child(each.node);
        return !ids.contains(each.key.toLower());
    });
    mergeElements(document.document_element(), existing, fresh);

    const QByteArray after = documentBytes(document);
    if (after != before)
        saveFile(file.path(), after);
    file.known.unite(ids).subtract(removed);
}

/// Runs a save; a failure also becomes a status line.
template <typename Save>
void saving(const char *what, QMutex &mutex, Save save)
{
    try {
        const QMutexLocker locker(&mutex);
        save();
    } catch (const Error &error) {
        showError(what, error);
        throw;
    }
}

template <typename T>
void saveAll(DefinitionFile &file, const Collection<T> &definitions)
{
    QSet<QString> gone = file.known;
    for (const auto &definition : definitions)
        gone.remove(idOf(*definition).toLower());
    changeFile(file, std::vector(definitions.begin(), definitions.end()), gone);
}

template <typename T>
void store(DefinitionFile &file, Collection<T> &definitions, const std::shared_ptr<T> &definition)
{
    changeFile<T>(file, {definition}, {});
    definitions.replace(idOf(*definition), definition);
}

/// Sets attributes in the current file, and nothing else: `choose(patch, element)` is
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

template <typename T>
void loadShowingFaults(const char *what, QMutex &mutex, DefinitionFile &file,
                       Collection<T> &definitions)
{
    QMutexLocker locker(&mutex);
    const std::vector<Error> faults = load(file, definitions);
    locker.unlock();
    for (const Error &error : faults)
        showError(what, error);
}

template <typename Save>
void savingCharts(QMutex &mutex, Save save)
{
    ShowStatus(QStringLiteral("Saving chart definitions."));
    saving("saving chart definitions", mutex, save);
}

template <typename Save>
void savingSchedules(QMutex &mutex, Save save)
{
    ShowStatus(QStringLiteral("Saving schedule definitions."));
    saving("saving schedule definitions", mutex, save);
}

template <typename Save>
void savingReports(QMutex &mutex, Save save)
{
    ShowStatus(QStringLiteral("Saving report definition."));
    saving("saving report selections", mutex, save);
}

} // namespace

Definitions &definitions()
{
    return *currentDefinitions;
}

QString DefinitionFile::path() const
{
    return configurationFolder() + QLatin1String(name);
}

QStringList Definitions::fileErrors() const
{
    QStringList errors = {m_charts.fileError, m_schedules.fileError, m_reports.fileError};
    errors.removeAll(QString());
    return errors;
}

QStringList Definitions::errors() const
{
    return m_charts.errors + m_schedules.errors + m_reports.errors;
}

void Definitions::LoadChartDefs()
{
    ShowStatus(QStringLiteral("Loading chart definitions."));
    loadShowingFaults("loading chart definitions", m_mutex, m_charts, gChartDefs);
    gChartDefs.sortByText([](const clsGraphDef &chart) { return chart.ChartTitle; });
}

void Definitions::LoadScheduleDefs()
{
    ShowStatus(QStringLiteral("Loading schedule definitions."));
    const QMutexLocker locker(&m_mutex);
    load(m_schedules, gScheduleDefs);
}

void Definitions::LoadReportDefs()
{
    ShowStatus(QStringLiteral("Loading report selections."));
    loadShowingFaults("loading report selections", m_mutex, m_reports, gReportDefs);
    gReportDefs.sortByText([](const clsReportDef &report) { return report.ReportTitle; });
}

void Definitions::SaveChartDefs()
{
    savingCharts(m_mutex, [&] { saveAll(m_charts, gChartDefs); });
}

void Definitions::SaveScheduleDefs()
{
    savingSchedules(m_mutex, [&] { saveAll(m_schedules, gScheduleDefs); });
}

void Definitions::SaveReportDefs()
{
    savingReports(m_mutex, [&] { saveAll(m_reports, gReportDefs); });
}

void Definitions::saveLastRunDates(const QString &reportId, const QStringList &scheduleIds,
                                   const QDateTime &runDate)
{
    const auto setDates = [&](XmlPatch &patch, const pugi::xml_node &element) {
        forEachElement(element, "SCHEDULE", [&](const pugi::xml_node &entry) {
            const QString id = GetAttr(entry, "ScheduleID", QString());
            if (scheduleIds.contains(id, Qt::CaseInsensitive))
                patch.set(entry, "LastRunDate", DateToXML(runDate));
        });
    };
    const QMutexLocker locker(&m_mutex);
    patchFile<clsReportDef>(m_reports, reportId, setDates);
}

void Definitions::saveChartPeriods(const std::vector<std::shared_ptr<clsGraphDef>> &charts)
{
    savingCharts(m_mutex, [&] {
        for (const auto &chart : charts) {
            const auto setPeriod = [&chart](XmlPatch &patch, const pugi::xml_node &element) {
                patch.set(element, "StartTime", DateToXML(chart->StartTime));
                patch.set(element, "EndTime", DateToXML(chart->EndTime));
            };
            patchFile<clsGraphDef>(m_charts, chart->ChartID, setPeriod);
        }
    });
}

void Definitions::store(const std::shared_ptr<clsGraphDef> &chart)
{
    savingCharts(m_mutex, [&] { ::store(m_charts, gChartDefs, chart); });
}

void Definitions::store(const std::shared_ptr<clsScheduleDef> &schedule)
{
    savingSchedules(m_mutex, [&] { ::store(m_schedules, gScheduleDefs, schedule); });
}

void Definitions::store(const std::shared_ptr<clsReportDef> &report)
{
    savingReports(m_mutex, [&] { ::store(m_reports, gReportDefs, report); });
}

void Definitions::removeReportDef(const QString &reportId)
{
    savingReports(m_mutex, [&] {
        changeFile<clsReportDef>(m_reports, {}, {reportId.toLower()});
        gReportDefs.remove(reportId);
    });
}
