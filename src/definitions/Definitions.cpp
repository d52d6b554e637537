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

/// Saves a file, and keeps a version of what it replaces. A version that cannot be kept, in a
/// folder without permission for one, does not keep the user from saving.
void replaceFile(const DefinitionFile &file, const QByteArray &content)
{
    try {
        if (fileExists(file.path()))
            keepVersion(file.path(), readFile(file.path()));
    } catch (const Error &error) {
        showError("keeping the former version", error);
    }
    saveFile(file.path(), content);
}

/// Of the definitions that a change writes.
enum class Order { File, Given };

/// Writes definitions into the current file and removes those with the ids `removed` (in lower
/// case). Everything else in the file stays: what could not be read, what was added in the
/// meantime, comments. Throws Error, also when the file cannot be read, and then does not change
/// it. Returns what changed.
template <typename T>
std::vector<ElementChange> changeFile(DefinitionFile &file,
                                      const std::vector<std::shared_ptr<T>> &changed,
                                      const QSet<QString> &removed, Order order = Order::File)
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
    std::vector<ElementChange> changes = elementsBefore(existing, ids | removed);
    std::erase_if(existing, [&](const KeyedElement &each) {
        if (removed.contains(each.key.toLower()))
            each.node.parent().remove_child(each.node);
        return !ids.contains(each.key.toLower());
    });
    if (order == Order::Given) {
        mergeElements(document.document_element(), existing, fresh);
    } else {
        QHash<QString, KeyedElement> own;
        for (const KeyedElement &each : existing)
            own.insert(each.key.toLower(), each);
        for (const KeyedElement &each : fresh) {
            const auto found = own.constFind(each.key.toLower());
            mergeElements(document.document_element(),
                          found == own.cend() ? std::vector<KeyedElement>() : std::vector{*found},
                          {each});
        }
    }

    const QByteArray after = documentBytes(document);
    if (after == before)
        changes.clear();
    else
        replaceFile(file, after);
    file.known.unite(ids).subtract(removed);
    // They have an id in the file by now.
    file.givenIds.removeIf([&ids](const QString &id) { return ids.contains(id.toLower()); });
    return changes;
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
    changeFile(file, std::vector(definitions.begin(), definitions.end()), gone, Order::Given);
}

template <typename T>
std::vector<ElementChange> store(DefinitionFile &file, Collection<T> &definitions,
                                 const std::vector<std::shared_ptr<T>> &changed)
{
    std::vector<ElementChange> changes = changeFile<T>(file, changed, {});
    for (const auto &definition : changed)
        definitions.replace(idOf(*definition), definition);
    return changes;
}

template <typename T>
std::vector<ElementChange> remove(DefinitionFile &file, Collection<T> &definitions,
                                  const QStringList &ids)
{
    QSet<QString> removed;
    for (const QString &id : ids)
        removed.insert(id.toLower());
    std::vector<ElementChange> changes = changeFile<T>(file, {}, removed);
    for (const QString &id : ids)
        definitions.remove(id);
    return changes;
}

template <typename T>
void takeBackIn(DefinitionFile &file, std::span<const ElementChange> changes)
{
    pugi::xml_document document;
    readDocument(file, document);
    ::takeBack(document, elementsOf<T>(file, document), file.id, changes);
    replaceFile(file, documentBytes(document));
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

/// Parses a version of a file. Throws Error that names it.
void readVersion(const DefinitionFile &file, const QString &version, const QByteArray &bytes,
                 pugi::xml_document &document)
{
    try {
        parseXml(document, bytes);
    } catch (const Error &error) {
        throw Error(error.number, version + u':' + error.description);
    }
    requireRoot(file, document);
}

/// The elements of a document by their ids, in lower case.
QHash<QString, pugi::xml_node> elementsById(const DefinitionFile &file,
                                            const pugi::xml_document &document)
{
    QHash<QString, pugi::xml_node> elements;
    forEachElement(document, file.child, [&](const pugi::xml_node &element) {
        elements.insert(GetAttr(element, file.id, QString()).toLower(), element);
    });
    return elements;
}

/// The present file; an empty document where it cannot be read.
void readPresent(const DefinitionFile &file, pugi::xml_document &document)
{
    try {
        readDocument(file, document);
    } catch (const Error &) {
        document.reset();
    }
}

/// A version as it is, but for the run dates that are later in the present file.
void restore(const DefinitionFile &file, const QString &version)
{
    pugi::xml_document document;
    QByteArray restored = readFile(version);
    readVersion(file, version, restored, document);
    pugi::xml_document present;
    readPresent(file, present);
    const QHash<QString, pugi::xml_node> elements = elementsById(file, present);
    const QByteArray before = documentBytes(document);
    forEachElement(document, file.child, [&](const pugi::xml_node &element) {
        keepLaterRuns(element, elements.value(GetAttr(element, file.id, QString()).toLower()));
    });
    if (const QByteArray merged = documentBytes(document); merged != before)
        restored = merged;
    replaceFile(file, restored);
}

/// An element's text without what a run writes.
QString textWithoutDates(const pugi::xml_node &element)
{
    pugi::xml_document copy;
    const pugi::xml_node root = copy.append_copy(element);
    forEachElement(root, "SCHEDULE",
                   [](pugi::xml_node entry) { entry.remove_attribute("LastRunDate"); });
    return elementText(root);
}

QStringList differences(const DefinitionFile &file, const QString &version)
{
    pugi::xml_document document;
    readVersion(file, version, readFile(version), document);
    pugi::xml_document present;
    readPresent(file, present);
    const QHash<QString, pugi::xml_node> now = elementsById(file, present);
    const QHash<QString, pugi::xml_node> then = elementsById(file, document);
    QStringList lines;
    const auto add = [&](const char *verb, const pugi::xml_node &element) {
        lines.append(QStringLiteral("%1 \u201c%2\u201d")
                         .arg(QLatin1String(verb), GetAttr(element, file.title, QString())));
    };
    for (auto each = then.cbegin(); each != then.cend(); ++each) {
        if (!now.contains(each.key()))
            add("brings back", each.value());
        else if (textWithoutDates(now.value(each.key())) != textWithoutDates(each.value()))
            add("changes", each.value());
    }
    for (auto each = now.cbegin(); each != now.cend(); ++each) {
        if (!then.contains(each.key()))
            add("removes", each.value());
    }
    lines.sort();
    return lines;
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

void Definitions::note(DefinitionFile &file, std::vector<ElementChange> changes)
{
    for (ElementChange &change : changes)
        m_changes.push_back({&file, std::move(change)});
}

void Definitions::store(const std::shared_ptr<clsGraphDef> &chart)
{
    savingCharts(m_mutex, [&] { note(m_charts, ::store(m_charts, gChartDefs, {chart})); });
}

void Definitions::store(const std::shared_ptr<clsScheduleDef> &schedule)
{
    savingSchedules(m_mutex,
                    [&] { note(m_schedules, ::store(m_schedules, gScheduleDefs, {schedule})); });
}

void Definitions::store(const std::shared_ptr<clsReportDef> &report)
{
    store(std::vector{report});
}

void Definitions::store(const std::vector<std::shared_ptr<clsReportDef>> &reports)
{
    savingReports(m_mutex, [&] { note(m_reports, ::store(m_reports, gReportDefs, reports)); });
}

void Definitions::removeChartDef(const QString &chartId)
{
    savingCharts(m_mutex, [&] { note(m_charts, remove(m_charts, gChartDefs, {chartId})); });
}

void Definitions::removeScheduleDef(const QString &scheduleId)
{
    savingSchedules(m_mutex,
                    [&] { note(m_schedules, remove(m_schedules, gScheduleDefs, {scheduleId})); });
}

void Definitions::removeReportDefs(const QStringList &reportIds)
{
    savingReports(m_mutex, [&] { note(m_reports, remove(m_reports, gReportDefs, reportIds)); });
}

void Definitions::takeBack(qsizetype count)
{
    while (changeCount() > count) {
        DefinitionFile &file = *m_changes.back().file;
        std::vector<ElementChange> latest; // those of one file, which is written once
        for (qsizetype i = changeCount(); i-- > count && m_changes[size_t(i)].file == &file;)
            latest.insert(latest.begin(), m_changes[size_t(i)].element);
        saving("taking back a change", m_mutex, [&] {
            if (&file == &m_charts)
                takeBackIn<clsGraphDef>(file, latest);
            else if (&file == &m_schedules)
                takeBackIn<clsScheduleDef>(file, latest);
            else
                takeBackIn<clsReportDef>(file, latest);
        });
        m_changes.resize(m_changes.size() - latest.size());
        loadAgain(file);
    }
}

void Definitions::loadAgain(const DefinitionFile &file)
{
    if (&file == &m_charts)
        LoadChartDefs();
    else if (&file == &m_schedules)
        LoadScheduleDefs();
    else
        LoadReportDefs();
}

QStringList Definitions::files() const
{
    return {m_reports.path(), m_charts.path(), m_schedules.path()};
}

const DefinitionFile &Definitions::fileOf(const QString &path) const
{
    for (const DefinitionFile *file : {&m_charts, &m_schedules, &m_reports}) {
        if (file->path() == path)
            return *file;
    }
    throw Error(FileNotFound, QStringLiteral("'%1' is no definition file").arg(path));
}

QStringList Definitions::whatRestoring(const QString &path, const QString &version) const
{
    return differences(fileOf(path), version);
}

void Definitions::restoreVersion(const QString &path, const QString &version)
{
    const DefinitionFile &file = fileOf(path);
    saving("restoring an earlier version", m_mutex, [&] { restore(file, version); });
    m_changes.clear();
    loadAgain(file);
}
