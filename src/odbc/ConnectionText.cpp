#include "odbc/ConnectionText.h"

#include "base/Error.h"

#include <QRegularExpression>

#include <algorithm>
#include <vector>

namespace {

const QString mask = QStringLiteral("***");

/// One "keyword=value" between two semicolons.
struct Setting
{
    QString before; ///< keyword, equal sign and blanks as written; everything if there is no "="
    QString keyword;
    QString value;    ///< without its quotes
    QChar quote;      ///< '{', an apostrophe or a quotation mark; null for a bare value
    QString trailing; ///< after the closing quote
    bool hasValue = false;

    /// Blanks count within quotes only.
    QString meaning() const { return quote.isNull() ? value.trimmed() : value; }
};

QChar closing(QChar quote)
{
    return quote == u'{' ? QChar(u'}') : quote;
}

/// OLE DB knows three kinds of quotes, ODBC braces only.
enum class Syntax { OleDb, Odbc };

bool isQuote(QChar character, Syntax syntax)
{
    return character == u'{' ||
           (syntax == Syntax::OleDb && (character == u'\'' || character == u'"'));
}

/// Reads a quoted value whose opening quote is at `at`; moves past the closing one. An unclosed
/// value reaches to the end.
QString quotedValue(const QString &text, qsizetype &at)
{
    const QChar end = closing(text[at++]);
    QString value;
    for (; at < text.size(); ++at) {
        if (text[at] != end) {
            value += text[at];
        } else if (at + 1 < text.size() && text[at + 1] == end) {
            value += text[++at];
        } else {
            ++at;
            break;
        }
    }
    return value;
}

qsizetype orEnd(qsizetype found, const QString &text)
{
    return found < 0 ? text.size() : found;
}

Setting readSetting(const QString &text, qsizetype &at, Syntax syntax = Syntax::OleDb)
{
    Setting setting;
    const qsizetype begin = at;
    const qsizetype semicolon = orEnd(text.indexOf(u';', at), text);
    const qsizetype equal = text.indexOf(u'=', at);
    setting.hasValue = equal >= 0 && equal < semicolon;
    if (!setting.hasValue) {
        at = semicolon;
        setting.before = text.mid(begin, at - begin);
        return setting;
    }
    setting.keyword = text.mid(begin, equal - begin).simplified();
    at = equal + 1;
    while (at < text.size() && text[at].isSpace())
        ++at;
    setting.before = text.mid(begin, at - begin);
    if (at < text.size() && isQuote(text[at], syntax)) {
        setting.quote = text[at];
        setting.value = quotedValue(text, at);
    }
    const qsizetype end = orEnd(text.indexOf(u';', at), text);
    (setting.quote.isNull() ? setting.value : setting.trailing) = text.mid(at, end - at);
    at = end;
    return setting;
}

std::vector<Setting> readSettings(const QString &text)
{
    std::vector<Setting> settings;
    for (qsizetype at = 0; at < text.size(); ++at) // over the semicolon
        settings.push_back(readSetting(text, at));
    return settings;
}

bool is(const Setting &setting, QLatin1String keyword)
{
    return setting.keyword.compare(keyword, Qt::CaseInsensitive) == 0;
}

bool has(const std::vector<Setting> &settings, std::initializer_list<QLatin1String> keywords)
{
    return std::any_of(settings.begin(), settings.end(), [&](const Setting &setting) {
        return std::any_of(keywords.begin(), keywords.end(),
                           [&](QLatin1String keyword) { return is(setting, keyword); });
    });
}

/// "PWD", "Password" and keywords that end in them ("SSLKeyPassword", "Database Password").
bool isPassword(const Setting &setting)
{
    return setting.keyword.endsWith(u"pwd", Qt::CaseInsensitive) ||
           setting.keyword.endsWith(u"password", Qt::CaseInsensitive);
}

QString quoted(QString value, QChar quote)
{
    const QChar end = closing(quote);
    return quote + value.replace(end, QString(2, end)) + end;
}

/// A value as ODBC reads it, in braces if necessary.
QString odbcValue(const QString &value)
{
    static const QRegularExpression special(QStringLiteral("[\\[\\]{}(),;?*=!@]|^\\s|\\s$"));
    return value.contains(special) ? quoted(value, u'{') : value;
}

class Translation
{
public:
    void add(const QString &keyword, const QString &value)
    {
        m_text += keyword + u'=' + odbcValue(value) + u';';
    }
    void splice(const QString &text)
    {
        const QString trimmed = text.trimmed();
        m_text += trimmed;
        if (!trimmed.isEmpty() && !trimmed.endsWith(u';'))
            m_text += u';';
    }
    const QString &text() const { return m_text; }

private:
    QString m_text;
};

/// ODBC's names for OLE DB's keywords; an empty name drops the keyword.
struct Keyword
{
    QLatin1String oleDb;
    QLatin1String odbc;
};

constexpr QLatin1String server("SERVER");

const Keyword commonKeywords[] = {
    {QLatin1String("Provider"), {}},
    {QLatin1String("Persist Security Info"), {}},
    {QLatin1String("PersistSecurityInfo"), {}},
    {QLatin1String("Connect Timeout"), {}}, // the tool has its own setting
    {QLatin1String("Connection Timeout"), {}},
    {QLatin1String("Timeout"), {}},
    {QLatin1String("General Timeout"), {}},
    {QLatin1String("Mode"), {}},
    {QLatin1String("OLE DB Services"), {}},
    {QLatin1String("Prompt"), {}},
    {QLatin1String("User ID"), QLatin1String("UID")},
    {QLatin1String("User"), QLatin1String("UID")},
    {QLatin1String("User Name"), QLatin1String("UID")},
    {QLatin1String("UID"), QLatin1String("UID")},
    {QLatin1String("Password"), QLatin1String("PWD")},
    {QLatin1String("PWD"), QLatin1String("PWD")},
    {QLatin1String("Initial Catalog"), QLatin1String("DATABASE")},
    {QLatin1String("Database"), QLatin1String("DATABASE")},
};

const Keyword serverKeywords[] = {
    {QLatin1String("Data Source"), server},
    {QLatin1String("Server"), server},
    {QLatin1String("Address"), server},
    {QLatin1String("Addr"), server},
    {QLatin1String("Network Address"), server},
    {QLatin1String("Integrated Security"), QLatin1String("Trusted_Connection")},
    {QLatin1String("Trusted_Connection"), QLatin1String("Trusted_Connection")},
    {QLatin1String("Use Encryption for Data"), QLatin1String("Encrypt")},
    {QLatin1String("Encrypt"), QLatin1String("Encrypt")},
    {QLatin1String("Trust Server Certificate"), QLatin1String("TrustServerCertificate")},
    {QLatin1String("TrustServerCertificate"), QLatin1String("TrustServerCertificate")},
    {QLatin1String("Application Name"), QLatin1String("APP")},
    {QLatin1String("Workstation ID"), QLatin1String("WSID")},
    {QLatin1String("Current Language"), QLatin1String("LANGUAGE")},
    {QLatin1String("Application Intent"), QLatin1String("ApplicationIntent")},
    {QLatin1String("Failover Partner"), QLatin1String("Failover_Partner")},
    {QLatin1String("MARS Connection"), QLatin1String("MARS_Connection")},
    {QLatin1String("MultipleActiveResultSets"), QLatin1String("MARS_Connection")},
    {QLatin1String("Packet Size"), {}},
    {QLatin1String("Auto Translate"), {}},
    {QLatin1String("AutoTranslate"), {}},
    {QLatin1String("Use Procedure for Prepare"), {}},
    {QLatin1String("Tag with column collation when possible"), {}},
    {QLatin1String("DataTypeCompatibility"), {}},
    {QLatin1String("Network Library"), {}},
};

template <size_t count>
const Keyword *find(const Keyword (&keywords)[count], const Setting &setting)
{
    const auto found = std::find_if(std::begin(keywords), std::end(keywords),
                                    [&](const Keyword &known) { return is(setting, known.oleDb); });
    return found == std::end(keywords) ? nullptr : found;
}

/// The value of a name, without regard to case; null when there is none.
const QString *find(const QMap<QString, QString> &values, const QString &name)
{
    for (auto each = values.begin(); each != values.end(); ++each) {
        if (each.key().compare(name, Qt::CaseInsensitive) == 0)
            return &each.value();
    }
    return nullptr;
}

/// Yes and no as the drivers write them; other values ("Strict") stay.
QString switchValue(const QString &value)
{
    const QString word = value.trimmed().toLower();
    if (word == u"sspi" || word == u"true" || word == u"yes" || word == u"1" ||
        word == u"mandatory")
        return QStringLiteral("Yes");
    if (word == u"false" || word == u"no" || word == u"0" || word == u"optional")
        return QStringLiteral("No");
    return value;
}

/// A server's name; the names for this machine that only Windows' libraries know become
/// "localhost".
QString serverName(QString name, bool isFreeTds)
{
    name = name.trimmed();
    if (isFreeTds && name.startsWith(u"tcp:", Qt::CaseInsensitive))
        name = name.mid(4);
    static const QRegularExpression local(QStringLiteral("^(\\.|\\(local\\))(?=$|[\\\\,])"),
                                          QRegularExpression::CaseInsensitiveOption);
    return name.replace(local, QStringLiteral("localhost"));
}

bool isSwitch(QLatin1String keyword)
{
    return keyword == QLatin1String("Trusted_Connection") || keyword == QLatin1String("Encrypt") ||
           keyword == QLatin1String("TrustServerCertificate") ||
           keyword == QLatin1String("MARS_Connection");
}

QString serverDriver(const OdbcNames &names)
{
    for (const char *name : {"ODBC Driver 18 for SQL Server", "ODBC Driver 17 for SQL Server",
                             "ODBC Driver 13 for SQL Server", "FreeTDS", "SQL Server"}) {
        const QString driver = QString::fromLatin1(name);
        if (find(names.drivers, driver))
            return driver;
    }
    throw Error(DatabaseError,
                QStringLiteral("No ODBC driver for SQL Server is installed: neither \"ODBC Driver "
                               "18 for SQL Server\" nor \"FreeTDS\" (package tdsodbc)"));
}

QString serverText(const std::vector<Setting> &settings, const OdbcNames &names)
{
    const QString driver = serverDriver(names);
    const bool isFreeTds = driver == u"FreeTDS";
    Translation translation;
    translation.splice(QLatin1String("DRIVER={") + driver + u'}');
    for (const Setting &setting : settings) {
        if (!setting.hasValue)
            continue;
        const Keyword *known = find(commonKeywords, setting);
        if (!known)
            known = find(serverKeywords, setting);
        if (!known)
            translation.add(setting.keyword, setting.meaning());
        else if (known->odbc == server)
            translation.add(known->odbc, serverName(setting.meaning(), isFreeTds));
        else if (isSwitch(known->odbc))
            translation.add(known->odbc, switchValue(setting.meaning()));
        else if (!known->odbc.isEmpty())
            translation.add(known->odbc, setting.meaning());
    }
    if (isFreeTds) {
        // Its defaults are an old protocol and an 8-bit character set.
        translation.splice(QStringLiteral("TDS_Version=7.4;ClientCharset=UTF-8"));
    }
    return translation.text();
}

/// Texts for OLE DB's provider for ODBC wrap an ODBC text.
QString unwrappedText(const std::vector<Setting> &settings)
{
    Translation translation;
    for (const Setting &setting : settings) {
        if (!setting.hasValue)
            continue;
        const Keyword *known = find(commonKeywords, setting);
        if (is(setting, QLatin1String("Extended Properties")))
            translation.splice(setting.meaning());
        else if (is(setting, QLatin1String("Data Source")))
            translation.add(QStringLiteral("DSN"), setting.meaning());
        else if (!known)
            translation.splice(setting.keyword + u'=' +
                               (setting.quote == u'{' ? quoted(setting.meaning(), u'{')
                                                      : odbcValue(setting.meaning())));
        else if (!known->odbc.isEmpty())
            translation.add(known->odbc, setting.meaning());
    }
    return translation.text();
}

/// A driver's own setting for "encrypt or fail".
struct DriverWords
{
    const char *names;   ///< one of these is in the driver's name or library, in lower case
    const char *keyword; ///< null: it understands Encrypt
    const char *value;
};

constexpr DriverWords driverWords[] = {
    {"odbc driver|msodbcsql", nullptr, nullptr},
    {"freetds|tdsodbc", "Encryption", "require"},
    {"mariadb|maodbc", "FORCETLS", "1;SSLVERIFY=1"}, // alone, the first lets the server decide
    {"mysql|myodbc", "SSLMODE", "REQUIRED"},
};

/// Null for a driver that is not known.
const DriverWords *wordsOf(const std::vector<Setting> &settings, const OdbcNames &names)
{
    QString known;
    for (const Setting &setting : settings) {
        const QString value = setting.meaning().trimmed();
        const bool isSource = is(setting, QLatin1String("DSN"));
        if (!isSource && !is(setting, QLatin1String("DRIVER")))
            continue;
        const QString *target = find(isSource ? names.dataSources : names.drivers, value);
        known += u' ' + (isSource ? QString() : value) + u' ' + (target ? *target : QString());
        // A data source names its driver, which has a library in turn.
        if (const QString *library = isSource && target ? find(names.drivers, *target) : nullptr)
            known += u' ' + *library;
    }
    for (const DriverWords &words : driverWords) {
        const QStringList parts = QString::fromLatin1(words.names).split(u'|');
        for (const QString &part : parts) {
            if (known.contains(part, Qt::CaseInsensitive))
                return &words;
        }
    }
    return nullptr;
}

/// An ODBC text with the driver's own keyword for encryption. Drivers ignore unknown keywords: one
/// that ignores "Encrypt=Yes" would send the password in the clear. Throws Error where the driver
/// does not support it.
QString withDriverWords(const QString &text, const OdbcNames &names)
{
    std::vector<Setting> settings;
    QString rest;
    QString wish;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const qsizetype begin = at;
        const Setting setting = readSetting(text, at, Syntax::Odbc);
        settings.push_back(setting);
        if (is(setting, QLatin1String("Encrypt")) ||
            is(setting, QLatin1String("Use Encryption for Data")))
            wish = switchValue(setting.meaning());
        else if (!is(setting, QLatin1String("TrustServerCertificate")))
            rest += text.mid(begin, at - begin) + u';';
    }
    const DriverWords *words = wordsOf(settings, names);
    const bool isStrict = wish.compare(u"Strict", Qt::CaseInsensitive) == 0;
    if (wish.isEmpty() || !words || !words->keyword)
        return text;
    if (isStrict)
        throw Error(DatabaseError,
                    QStringLiteral("Encrypt=Strict needs Microsoft's ODBC Driver 18 for SQL "
                                   "Server; with another driver ask for Encrypt=Mandatory"));
    if (wish == u"No")
        return rest;
    // Of repeated keywords some drivers use the first one, others the last one.
    QString own;
    for (qsizetype at = 0; at < rest.size(); ++at) {
        const qsizetype begin = at;
        if (!is(readSetting(rest, at, Syntax::Odbc), QLatin1String(words->keyword)))
            own += rest.mid(begin, at - begin) + u';';
    }
    return own + QLatin1String(words->keyword) + u'=' + QLatin1String(words->value) + u';';
}

bool isServerProvider(const QString &provider)
{
    return provider.startsWith(u"SQLOLEDB", Qt::CaseInsensitive) ||
           provider.startsWith(u"SQLNCLI", Qt::CaseInsensitive) ||
           provider.startsWith(u"MSOLEDBSQL", Qt::CaseInsensitive);
}

/// An ODBC text with the keywords of Microsoft's driver.
QString translated(const QString &connectionText, const OdbcNames &names)
{
    const std::vector<Setting> settings = readSettings(connectionText);
    const auto provider = std::find_if(settings.begin(), settings.end(), [](const Setting &each) {
        return is(each, QLatin1String("Provider"));
    });
    if (provider == settings.end())
        return has(settings,
                   {QLatin1String("DRIVER"), QLatin1String("DSN"), QLatin1String("FILEDSN")})
                   ? connectionText
                   : serverText(settings, names);
    const QString name = provider->meaning();
    if (name.startsWith(u"MSDASQL", Qt::CaseInsensitive))
        return unwrappedText(settings);
    if (isServerProvider(name))
        return serverText(settings, names);
    throw Error(DatabaseError,
                QStringLiteral("The provider '%1' has no counterpart in ODBC").arg(name));
}

} // namespace

QString odbcText(const QString &connectionText, const OdbcNames &names)
{
    return withDriverWords(translated(connectionText, names), names);
}

QString connectionText(const ConnectionForm &form)
{
    QString text;
    const auto add = [&text](const char *keyword, const QString &value) {
        // Both syntaxes take braces for quotes.
        static const QRegularExpression special(QStringLiteral("[\\[\\]{}(),;?*=!@'\"]|^\\s|\\s$"));
        if (!value.isEmpty())
            text += QLatin1String(keyword) + u'=' +
                    (value.contains(special) ? quoted(value, u'{') : value) + u';';
    };
    if (form.dataSource.isEmpty()) {
        if (!form.driver.isEmpty())
            text += QLatin1String("DRIVER=") + quoted(form.driver, u'{') + u';';
        add("SERVER", form.server);
        add("DATABASE", form.database);
    } else {
        add("DSN", form.dataSource);
    }
    if (form.isIntegrated) {
        add("Trusted_Connection", QStringLiteral("Yes"));
    } else {
        add("UID", form.user);
        add("PWD", form.password);
    }
    add("Encrypt", form.isEncrypted ? QStringLiteral("Yes") : QStringLiteral("No"));
    if (form.isEncrypted && form.acceptsAnyCertificate)
        add("TrustServerCertificate", QStringLiteral("Yes"));
    return text;
}

std::optional<ConnectionForm> connectionForm(const QString &connectionText)
{
    ConnectionForm form;
    form.isEncrypted = false;
    const std::vector<Setting> settings = readSettings(connectionText);
    const struct
    {
        const char *keyword;
        QString *text;
        bool *flag;
    } fields[] = {
        {"DSN", &form.dataSource, nullptr},
        {"DRIVER", &form.driver, nullptr},
        {"SERVER", &form.server, nullptr},
        {"DATABASE", &form.database, nullptr},
        {"UID", &form.user, nullptr},
        {"PWD", &form.password, nullptr},
        {"Trusted_Connection", nullptr, &form.isIntegrated},
        {"Encrypt", nullptr, &form.isEncrypted},
        {"TrustServerCertificate", nullptr, &form.acceptsAnyCertificate},
    };
    for (const Setting &setting : settings) {
        if (!setting.hasValue && setting.before.trimmed().isEmpty())
            continue;
        const auto *field =
            std::find_if(std::begin(fields), std::end(fields), [&](const auto &each) {
                return is(setting, QLatin1String(each.keyword));
            });
        if (!setting.hasValue || field == std::end(fields))
            return {};
        const QString word = switchValue(setting.meaning());
        if (field->text)
            *field->text = setting.meaning();
        else if (word == u"Yes" || word == u"No")
            *field->flag = word == u"Yes";
        else
            return {};
    }
    const bool hasPlace = form.dataSource.isEmpty() != form.server.isEmpty();
    const bool isMixed = !form.dataSource.isEmpty() && !(form.driver + form.database).isEmpty();
    if (!hasPlace || isMixed || (form.isIntegrated && !(form.user + form.password).isEmpty()))
        return {};
    return form;
}

QString maskPasswords(const QString &connectionText)
{
    QStringList shown;
    bool isMasked = false;
    for (const Setting &setting : readSettings(connectionText)) {
        if (!setting.hasValue) {
            // Perhaps the rest of a password with a semicolon.
            if (!isMasked || setting.before.trimmed().isEmpty())
                shown.append(setting.before);
            continue;
        }
        isMasked = isPassword(setting);
        if (isMasked) {
            shown.append(setting.before + mask);
            continue;
        }
        if (setting.quote.isNull()) {
            shown.append(setting.before + setting.value);
            continue;
        }
        shown.append(setting.before + quoted(maskPasswords(setting.value), setting.quote) +
                     setting.trailing);
    }
    return shown.join(u';') + (connectionText.endsWith(u';') ? QStringLiteral(";") : QString());
}

QStringList passwordsIn(const QString &connectionText)
{
    QStringList passwords;
    for (const Setting &setting : readSettings(connectionText)) {
        if (isPassword(setting) && !setting.meaning().isEmpty())
            passwords.append(setting.meaning());
        else if (!setting.quote.isNull())
            passwords += passwordsIn(setting.value);
    }
    return passwords;
}

QString withoutSecrets(const QString &message, const QStringList &passwords)
{
    static const QRegularExpression assignment(
        QStringLiteral("((?:pwd|password)\\s*=\\s*)(?:\\{(?:[^}]|\\}\\})*\\}?|[^;'\"\\]]+)"),
        QRegularExpression::CaseInsensitiveOption);
    QString shown = message;
    shown.replace(assignment, QLatin1String("\\1") + mask);
    for (const QString &password : passwords) {
        const QRegularExpression whole(QLatin1String("(?<!\\w)") +
                                           QRegularExpression::escape(password) +
                                           QLatin1String("(?!\\w)"),
                                       QRegularExpression::UseUnicodePropertiesOption);
        shown.replace(whole, mask);
    }
    return shown;
}
