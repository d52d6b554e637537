#pragma once

#include "mail/MailAddress.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <pugixml.hpp>
#include <vector>

/// What the tool sends by mail, to whom and how: the file "MailSettings.XML" of the configuration
/// folder. The password is not in it: mail/MailSecret.h.

enum class MailSecurity {
    StartTls, ///< begins readable, and goes on only encrypted
    Tls,      ///< encrypted from the first byte
    None
};

enum class MailAuthentication {
    None,
    Password,
    XOAuth2 ///< the secret is an access token
};

struct MailServer
{
    QString host;
    int port = 587;
    MailSecurity security = MailSecurity::StartTls;
    MailAuthentication authentication = MailAuthentication::Password;
    QString user;
    QString from;       ///< an address of mailAddress()
    int timeout = 60;   ///< seconds without progress after which a server counts as stalled
    int sizeLimit = 10; ///< megabytes of a whole message; what does not fit is not attached
    QString caFile;   ///< certificates (PEM) to trust instead of the system's; empty: the system's
    QString pagesUrl; ///< where readers find the output folder: "https://..."; empty: its path
};

enum class MailWhen {
    Always,
    Trouble,      ///< the report failed, or lacks charts
    TargetMissed, ///< at least one device missed its target
    Worse         ///< the success rate fell by at least `points` against the preceding period
};

struct MailSubscription
{
    QString id; ///< as of other definitions: "{...}"
    QString reportId;
    QString recipients; ///< of mailAddresses()
    MailWhen when = MailWhen::Always;
    double points = 1; ///< percentage points, above 0 to 100; for Worse
    bool pdf = false;  ///< with REPORT.PDF
    bool csv = false;  ///< with repsum.csv
};

/// A value. All functions on any thread.
class MailSettings
{
public:
    MailServer server;
    std::vector<MailSubscription> subscriptions; ///< in the file's order
    QString failureRecipients; ///< who hears of every run that failed; empty: nobody

    /// What could not be read: a subscription is left out, a value of the server has its default.
    QStringList errors;

    /// Whether mails can be sent: a server and a sender are named, and nothing is wrong with them.
    bool isUsable() const;

    /// Reads a file; without one all is as above. Throws Error that names file and place when it is
    /// malformed or has another root element.
    static MailSettings load(const QString &path);

    /// Writes into the file's current text, where everything else stays: comments, unknown
    /// attributes, subscriptions that could not be read or were added since load(). Throws Error
    /// and changes nothing when the file cannot be read or written.
    void save(const QString &path);

private:
    QSet<QString> m_known; ///< ids, in lower case, of the subscriptions read or saved
};

/// "MailSettings.XML" in the configuration folder. Main thread only.
QString mailSettingsPath();

/// Takes what is wrong: the attribute, and why.
using OnMailFault = std::function<void(const char *attribute, const QString &fault)>;

/// Read an element of the file; a wrong value is told and has its default.
MailServer readMailServer(const pugi::xml_node &element, const OnMailFault &onFault);
MailSubscription readMailSubscription(const pugi::xml_node &element, const OnMailFault &onFault);

/// What is wrong with a value, as the file's reader would say it; for the window. Empty: nothing.
QStringList faultsOf(const MailServer &server);
QStringList faultsOf(const MailSubscription &subscription);
QStringList recipientFaults(const QString &recipients);
