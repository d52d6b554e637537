#include "mail/MailSettings.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Xml.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Merge.h"

#include <QLocale>
#include <QRegularExpression>
#include <QUrl>

#include <array>

namespace {

constexpr char rootName[] = "MAILSETTINGS";

constexpr std::array<std::pair<MailSecurity, QLatin1String>, 3> securities = {{
    {MailSecurity::StartTls, QLatin1String("STARTTLS")},
    {MailSecurity::Tls, QLatin1String("TLS")},
    {MailSecurity::None, QLatin1String("NONE")},
}};

constexpr std::array<std::pair<MailAuthentication, QLatin1String>, 3> authentications = {{
    {MailAuthentication::None, QLatin1String("NONE")},
    {MailAuthentication::Password, QLatin1String("PASSWORD")},
    {MailAuthentication::XOAuth2, QLatin1String("XOAUTH2")},
}};

constexpr std::array<std::pair<MailWhen, QLatin1String>, 4> occasions = {{
    {MailWhen::Always, QLatin1String("ALWAYS")},
    {MailWhen::Trouble, QLatin1String("TROUBLE")},
    {MailWhen::TargetMissed, QLatin1String("TARGET")},
    {MailWhen::Worse, QLatin1String("WORSE")},
}};

template <typename Table, typename Code>
QString nameOf(const Table &table, Code code)
{
    for (const auto &[value, name] : table) {
        if (value == code)
            return name;
    }
    return QString();
}

/// The attributes of one element, read one by one; what is wrong goes to onFault.
class Reader
{
public:
    Reader(const pugi::xml_node &element, const OnMailFault &onFault)
        : m_element(element)
        , m_onFault(onFault)
    {}

    QString text(const char *name) const { return GetAttr(m_element, name, QString()).trimmed(); }

    template <typename Table, typename Code>
    void code(const char *name, const Table &table, Code &value) const
    {
        const QString given = text(name);
        QStringList names;
        for (const auto &[code, codeName] : table) {
            if (given.compare(codeName, Qt::CaseInsensitive) == 0)
                value = code;
            names.append(codeName);
        }
        if (!given.isEmpty() && !names.contains(given, Qt::CaseInsensitive))
            fault(name, QStringLiteral("%1 '%2' is none of %3")
                            .arg(QLatin1String(name), given, names.join(QLatin1String(", "))));
    }

    void number(const char *name, int min, int max, int &value) const
    {
        const QString given = text(name);
        bool isNumber = false;
        const int number = given.toInt(&isNumber);
        if (given.isEmpty())
            return;
        if (isNumber && number >= min && number <= max)
            value = number;
        else
            fault(name, QStringLiteral("%1 '%2' is not a whole number from %3 to %4")
                            .arg(QLatin1String(name), given)
                            .arg(min)
                            .arg(max));
    }

    bool flag(const char *name) const { return xmlBoolean(text(name)); }

    /// Tells what `check` throws.
    template <typename Check>
    void require(const char *name, Check check) const
    {
        try {
            check();
        } catch (const Error &error) {
            fault(name, QLatin1String(name) + QLatin1String(": ") + error.description);
        }
    }

    void fault(const char *name, const QString &why) const { m_onFault(name, why); }

private:
    const pugi::xml_node m_element;
    const OnMailFault &m_onFault;
};

void writeServer(pugi::xml_node parent, const MailServer &server)
{
    pugi::xml_node element = parent.append_child("SERVER");
    setAttr(element, "Host", server.host);
    setAttr(element, "Port", server.port);
    setAttr(element, "Security", nameOf(securities, server.security));
    setAttr(element, "Auth", nameOf(authentications, server.authentication));
    setAttr(element, "User", server.user);
    setAttr(element, "From", server.from);
    setAttr(element, "Timeout", server.timeout);
    setAttr(element, "SizeLimit", server.sizeLimit);
    setAttr(element, "CaFile", server.caFile);
    setAttr(element, "PagesUrl", server.pagesUrl);
}

void writeSubscription(pugi::xml_node parent, const MailSubscription &subscription)
{
    pugi::xml_node element = parent.append_child("SUBSCRIPTION");
    setAttr(element, "SubscriptionID", subscription.id);
    setAttr(element, "ReportID", subscription.reportId);
    setAttr(element, "To", subscription.recipients);
    setAttr(element, "When", nameOf(occasions, subscription.when));
    setAttr(element, "Points",
            QString::number(subscription.points, 'g', QLocale::FloatingPointShortest));
    setAttr(element, "Pdf", xmlBoolean(subscription.pdf));
    setAttr(element, "Csv", xmlBoolean(subscription.csv));
}

void requireRecipients(const QString &text)
{
    if (mailAddresses(text).empty())
        throw Error(TypeMismatch, QStringLiteral("no recipient is named"));
}

/// Merges one element that occurs once; it is added where it is missing.
void mergeSingle(pugi::xml_node root, const pugi::xml_node &fresh)
{
    const pugi::xml_node own = root.child(fresh.name());
    if (own)
        mergeElement(own, fresh);
    else
        root.append_copy(fresh);
}

/// The subscriptions of a file, by their ids; one without an id is known by its place.
std::vector<KeyedElement> subscriptionElements(const pugi::xml_node &root)
{
    std::vector<KeyedElement> elements;
    for (const pugi::xml_node &element : root.children("SUBSCRIPTION")) {
        const QString id = GetAttr(element, "SubscriptionID", QString()).trimmed();
        elements.push_back({element, id.isEmpty() ? QString::number(elements.size() + 1) : id});
    }
    return elements;
}

/// Throws Error that names the file when it cannot be read.
void readDocument(const QString &path, pugi::xml_document &document)
{
    const QByteArray bytes = readFile(path);
    try {
        parseXml(document, bytes);
    } catch (const Error &error) {
        throw Error(error.number, nativePath(path) + u':' + error.description);
    }
    const char *root = document.document_element().name();
    if (qstrcmp(root, rootName) != 0)
        throw Error(InvalidFileFormat,
                    QStringLiteral("%1: the root element is '%2', not '%3'")
                        .arg(nativePath(path), QString::fromUtf8(root), QLatin1String(rootName)));
}

template <typename Write, typename Read>
QStringList faultsByReading(Write write, Read read)
{
    pugi::xml_document document;
    const pugi::xml_node root = document.append_child(rootName);
    write(root);
    QStringList faults;
    read(root.first_child(), [&faults](const char *, const QString &why) { faults.append(why); });
    return faults;
}

} // namespace

MailServer readMailServer(const pugi::xml_node &element, const OnMailFault &onFault)
{
    const Reader reader(element, onFault);
    MailServer server;
    server.host = reader.text("Host");
    server.user = reader.text("User");
    server.from = reader.text("From");
    server.caFile = reader.text("CaFile");
    server.pagesUrl = reader.text("PagesUrl");
    reader.number("Port", 1, 65535, server.port);
    reader.number("Timeout", 1, 600, server.timeout);
    reader.number("SizeLimit", 1, 100, server.sizeLimit);
    reader.code("Security", securities, server.security);
    reader.code("Auth", authentications, server.authentication);
    static const QRegularExpression hostForm(QStringLiteral("^[A-Za-z0-9.:_-]+$"));
    if (server.host.isEmpty())
        reader.fault("Host", QStringLiteral("Host names no server"));
    else if (!hostForm.match(QString::fromLatin1(QUrl::toAce(server.host))).hasMatch() &&
             !hostForm.match(server.host).hasMatch())
        reader.fault("Host",
                     QStringLiteral("Host '%1' is not the name of a server").arg(server.host));
    reader.require("From", [&] { mailAddress(server.from); });
    if (server.authentication != MailAuthentication::None) {
        if (server.user.isEmpty())
            reader.fault("User", QStringLiteral("User names nobody: Auth needs a user"));
        if (server.security == MailSecurity::None)
            reader.fault("Security", QStringLiteral("Security NONE would send the password "
                                                    "readable: use STARTTLS or TLS, or Auth NONE"));
    }
    if (!server.pagesUrl.isEmpty()) {
        const QUrl url(server.pagesUrl, QUrl::StrictMode);
        if (!url.isValid() || (url.scheme() != u"https" && url.scheme() != u"http"))
            reader.fault("PagesUrl", QStringLiteral("PagesUrl '%1' is not an address that begins "
                                                    "with https:// or http://")
                                         .arg(server.pagesUrl));
    }
    return server;
}

MailSubscription readMailSubscription(const pugi::xml_node &element, const OnMailFault &onFault)
{
    const Reader reader(element, onFault);
    MailSubscription subscription;
    subscription.id = reader.text("SubscriptionID");
    subscription.reportId = reader.text("ReportID");
    subscription.recipients = reader.text("To");
    if (subscription.reportId.isEmpty())
        reader.fault("ReportID", QStringLiteral("ReportID names no report"));
    reader.require("To", [&] { requireRecipients(subscription.recipients); });
    reader.code("When", occasions, subscription.when);
    const QString points = reader.text("Points");
    if (!points.isEmpty()) {
        bool isNumber = false;
        const double number = points.toDouble(&isNumber);
        if (isNumber && number > 0 && number <= 100)
            subscription.points = number;
        else
            reader.fault(
                "Points",
                QStringLiteral("Points '%1' is not a number above 0, at most 100").arg(points));
    }
    subscription.pdf = reader.flag("Pdf");
    subscription.csv = reader.flag("Csv");
    return subscription;
}

QStringList faultsOf(const MailServer &server)
{
    return faultsByReading([&](pugi::xml_node root) { writeServer(root, server); }, readMailServer);
}

QStringList faultsOf(const MailSubscription &subscription)
{
    return faultsByReading([&](pugi::xml_node root) { writeSubscription(root, subscription); },
                           readMailSubscription);
}

QStringList recipientFaults(const QString &recipients)
{
    try {
        mailAddresses(recipients);
    } catch (const Error &error) {
        return {error.description};
    }
    return {};
}

bool MailSettings::isUsable() const
{
    return faultsOf(server).isEmpty();
}

MailSettings MailSettings::load(const QString &path)
{
    MailSettings settings;
    if (!fileExists(path))
        return settings;
    pugi::xml_document document;
    readDocument(path, document);
    const pugi::xml_node root = document.document_element();
    const auto note = [&](const QString &what) {
        return [&settings, &path, what](const char *, const QString &why) {
            settings.errors.append(nativePath(path) + QLatin1String(": ") + what + why);
        };
    };
    if (const pugi::xml_node element = root.child("SERVER"))
        settings.server = readMailServer(element, note(QString()));
    settings.failureRecipients = GetAttr(root.child("FAILURES"), "To", QString()).trimmed();
    const QStringList failures = recipientFaults(settings.failureRecipients);
    for (const QString &fault : failures)
        note(QStringLiteral("FAILURES To: "))("To", fault);
    if (!failures.isEmpty())
        settings.failureRecipients.clear();
    for (const KeyedElement &each : subscriptionElements(root)) {
        const qsizetype before = settings.errors.size();
        const QString what = QStringLiteral("subscription '%1': ").arg(each.key);
        MailSubscription subscription = readMailSubscription(each.node, note(what));
        subscription.id = each.key;
        if (settings.m_known.contains(each.key.toLower()))
            note(what)("SubscriptionID", QStringLiteral("the SubscriptionID is there twice"));
        if (settings.errors.size() > before)
            continue;
        settings.m_known.insert(each.key.toLower());
        settings.subscriptions.push_back(std::move(subscription));
    }
    return settings;
}

void MailSettings::save(const QString &path)
{
    pugi::xml_document document;
    const bool isThere = fileExists(path);
    if (isThere)
        readDocument(path, document);
    else
        document.append_child(rootName);
    const QByteArray before = isThere ? documentBytes(document) : QByteArray();
    pugi::xml_node root = document.document_element();

    pugi::xml_document written;
    pugi::xml_node fresh = written.append_child(rootName);
    writeServer(fresh, server);
    mergeSingle(root, fresh.first_child());
    if (!failureRecipients.isEmpty() || root.child("FAILURES")) {
        pugi::xml_node failures = fresh.append_child("FAILURES");
        setAttr(failures, "To", failureRecipients);
        mergeSingle(root, failures);
    }
    QSet<QString> ids;
    std::vector<KeyedElement> wanted;
    for (const MailSubscription &subscription : subscriptions) {
        writeSubscription(fresh, subscription);
        wanted.push_back({fresh.last_child(), subscription.id});
        ids.insert(subscription.id.toLower());
    }
    std::vector<KeyedElement> existing = subscriptionElements(root);
    std::erase_if(existing, [&](const KeyedElement &each) {
        const QString id = each.key.toLower();
        if (m_known.contains(id) && !ids.contains(id))
            root.remove_child(each.node);
        return !ids.contains(id);
    });
    mergeElements(root, existing, wanted);

    const QByteArray after = documentBytes(document);
    if (after != before)
        saveFile(path, after);
    m_known = ids;
}

QString mailSettingsPath()
{
    return configurationFolder() + QLatin1String("MailSettings.XML");
}
