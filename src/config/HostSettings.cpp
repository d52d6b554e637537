#include "config/HostSettings.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/ProgramState.h"
#include "base/Xml.h"
#include "base/XmlPatch.h"
#include "config/Program.h"
#include "platform/EventLog.h"
#include "platform/ProductSettings.h"

#include <QFileInfo>

namespace {

struct HostSettings
{
    QString ProductKey = QStringLiteral("VantrelV6");
    QString AppPath;
    bool AppPathRead = false;
    QString DataPath;
    QString GraphDataPath;
};

const StatePart<HostSettings> settings;

const QString defaultDataFolder = QStringLiteral("VTRDataRoot");

void warn(const QString &text, const Error &error)
{
    LogEvent(runEvent, EventWarning, text + u' ' + errorTail(error));
}

/// Throws Error that names the file: not found, not readable, or "<file>:line:column: what".
void readConfiguration(pugi::xml_document &document, const QString &path)
{
    const QByteArray bytes = readFile(path);
    try {
        parseXml(document, bytes);
    } catch (const Error &error) {
        throw Error(error.number, nativePath(path) + u':' + error.description);
    }
}

QString configurationPath()
{
    return WithBackslash(GetAppPath()) + QLatin1String("VantrelV6.Config");
}

/// The product's configuration. If there is none, an older version's file or the factory file is
/// copied first; a failure to write the copy goes to the event log. Empty if there is none of the
/// three. Throws Error when the file cannot be read: another one might mean another database.
pugi::xml_node productRoot(pugi::xml_document &document)
{
    const QString folder = WithBackslash(GetAppPath());
    const QString present = configurationPath();
    if (QFileInfo::exists(nativePath(present))) {
        readConfiguration(document, present);
        return document.document_element();
    }
    QString source = folder + QLatin1String("VantrelV5.Config");
    if (!fileExists(source))
        source = folder + QLatin1String("VantrelV6.Config.FAC");
    try {
        readConfiguration(document, source);
    } catch (const Error &error) {
        if (error.number != FileNotFound)
            throw;
        warn(QStringLiteral("Error reading the product configuration in '%1'").arg(GetAppPath()),
             error);
        return {};
    }
    try {
        savePrivateFile(present, documentBytes(document)); // it may hold a password
    } catch (const Error &error) {
        warn(QStringLiteral("Error writing the product configuration in '%1'").arg(GetAppPath()),
             error);
    }
    return document.document_element();
}

QString folderAttribute(const pugi::xml_node &root, const char *name)
{
    const QString fallback = WithBackslash(GetAppPath()) + defaultDataFolder;
    const QString value = GetAttr(root, name, fallback);
    return value.trimmed().isEmpty() ? fallback : value;
}

bool flagAttribute(const pugi::xml_node &root, const char *name)
{
    return xmlBoolean(GetAttr(root, name, QStringLiteral("0")));
}

qint32 secondsAttribute(const pugi::xml_node &root, const char *name, qint32 fallback)
{
    try {
        return leadingInteger(GetAttr(root, name, QString::number(fallback)));
    } catch (const Error &error) {
        warn(QStringLiteral("Error reading %1").arg(QLatin1String(name)), error);
        return fallback;
    }
}

void ensureFolder(const QString &path)
{
    QString message;
    if (const int status = EnsureFolder(path, message))
        LogEvent(runEvent, EventWarning,
                 QStringLiteral("Error creating folder '%1' [%2] %3")
                     .arg(withOwnSeparators(path))
                     .arg(status)
                     .arg(message));
}

} // namespace

QString GetProductKey()
{
    return settings->ProductKey;
}

void SetProductKey(const QString &key)
{
    settings->ProductKey = key;
}

QString GetAppPath()
{
    if (settings->AppPathRead && !settings->AppPath.isEmpty())
        return settings->AppPath;
    settings->AppPathRead = true;
    const QString stored =
        platform::productSetting(settings->ProductKey, QStringLiteral("AppPath"));
    settings->AppPath = stored.isEmpty() ? programFolder().trimmed() : stored;
    return settings->AppPath;
}

QString GetDataPath()
{
    if (settings->DataPath.isEmpty()) {
        pugi::xml_document document;
        settings->DataPath = folderAttribute(productRoot(document), "DataPath");
    }
    return settings->DataPath;
}

void SetDataPath(const QString &path)
{
    const QString folder = path.isEmpty() ? GetDataPath() : path;
    ensureFolder(folder);
    settings->DataPath = folder;
}

QString GetGraphDataPath()
{
    if (!settings->GraphDataPath.isEmpty())
        return settings->GraphDataPath;
    pugi::xml_document document;
    const pugi::xml_node root = productRoot(document);
    settings->GraphDataPath = folderAttribute(root, "GraphDataPath");
    program().gUseClientCursor = flagAttribute(root, "UseClientCursor");
    program().gGraphDataDSN = flagAttribute(root, "GraphDataDSN");
    program().gSQLConnect.clear();
    program().gGraphDataSQL = flagAttribute(root, "GraphDataSQL");
    program().gCommandTimeout = secondsAttribute(root, "GraphDataCommandTimeout", 60);
    program().gConnectionTimeout = secondsAttribute(root, "GraphDataConnectionTimeout", 30);
    program().gGraphDataGroups = flagAttribute(root, "GraphDataGroups");
    if (program().gGraphDataSQL || program().gGraphDataDSN) {
        const QString connect = GetAttr(root, "GraphDataSQLConnect", QString());
        if (connect.trimmed().isEmpty())
            program().gGraphDataSQL = program().gGraphDataDSN = false; // back to the Access file
        else
            program().gSQLConnect = connect;
    }
    return settings->GraphDataPath;
}

void SetGraphDataPath(const QString &path)
{
    const QString folder = path.isEmpty() ? GetGraphDataPath() : path;
    ensureFolder(folder);
    settings->GraphDataPath = folder;
}

DatabaseSettings databaseSettings()
{
    DatabaseSettings settings{program().gDataPath, program().gGraphDataSQL, program().gGraphDataDSN,
                              program().gSQLConnect};
    if (!settings.isServer()) { // a text that is not in use may be in the file
        pugi::xml_document document;
        settings.connectionText = GetAttr(productRoot(document), "GraphDataSQLConnect", QString());
    }
    return settings;
}

void saveDatabaseSettings(const DatabaseSettings &wanted)
{
    pugi::xml_document present; // makes sure that there is a file if another one can be copied
    const QByteArray bytes = productRoot(present) && fileExists(configurationPath())
                                 ? readFile(configurationPath())
                                 : QByteArray("<VANTREL />\n");
    XmlPatch patch(bytes);
    const pugi::xml_node root = patch.document().document_element();
    const auto set = [&patch, &root](const char *name, const QString &value) {
        if (GetAttr(root, name, QString()) != value)
            patch.set(root, name, value);
    };
    const auto setFlag = [&set, &root](const char *name, bool flag) {
        if (flagAttribute(root, name) != flag)
            set(name, QString::number(flag ? 1 : 0));
    };
    if (!wanted.isServer() &&
        NormalizeFolder(folderAttribute(root, "DataPath")) != NormalizeFolder(wanted.dataPath))
        set("DataPath", wanted.dataPath);
    setFlag("GraphDataSQL", wanted.isSqlServer);
    setFlag("GraphDataDSN", wanted.isDataSource);
    if (wanted.isServer())
        set("GraphDataSQLConnect", wanted.connectionText);
    savePrivateFile(configurationPath(), patch.bytes()); // it may hold a password

    program().gGraphDataSQL = wanted.isSqlServer;
    program().gGraphDataDSN = wanted.isDataSource;
    program().gSQLConnect = wanted.isServer() ? wanted.connectionText : QString();
    if (!wanted.isServer()) {
        settings->DataPath = wanted.dataPath;
        program().gDataPath = NormalizeFolder(wanted.dataPath);
    }
}
