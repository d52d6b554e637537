#include "app/MailCheck.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Xml.h"
#include "definitions/TemplateFile.h"
#include "mail/MailMessage.h"
#include "mail/MailSettings.h"
#include "mail/MailSite.h"

namespace {

void checkServer(CheckedFile &file, const MailSite &site)
{
    const pugi::xml_node element = file.root().child("SERVER");
    if (!element) {
        file.add(file.root(), nullptr, QStringLiteral("there is no SERVER: no mail is sent"));
        return;
    }
    const MailServer server =
        readMailServer(element, [&](const char *attribute, const QString &fault) {
            file.add(element, attribute, fault);
        });
    if (!server.caFile.isEmpty() && !fileExists(server.caFile))
        file.add(element, "CaFile", QStringLiteral("there is no file '%1'").arg(server.caFile));
    if (server.authentication == MailAuthentication::None)
        return;
    try {
        if (!readMailSecret(site))
            file.add(element, "User",
                     QStringLiteral("no password of '%1' is saved").arg(server.user));
    } catch (const Error &error) {
        file.add(element, "User", error.description);
    }
}

void checkSubscriptions(CheckedFile &file, const Ids &reports)
{
    Ids ids;
    for (const pugi::xml_node &element : file.root().children("SUBSCRIPTION")) {
        const MailSubscription subscription =
            readMailSubscription(element, [&](const char *attribute, const QString &fault) {
                file.add(element, attribute, fault);
            });
        if (!subscription.id.isEmpty())
            file.requireNewId(element, "SubscriptionID", ids);
        if (!subscription.reportId.isEmpty())
            file.requireKnown(element, "ReportID", reports, QStringLiteral("report"));
    }
    for (const pugi::xml_node &element : file.root().children("FAILURES")) {
        const QStringList faults = recipientFaults(GetAttr(element, "To", QString()));
        for (const QString &fault : faults)
            file.add(element, "To", fault);
    }
}

} // namespace

void checkMails(Findings &findings, const Ids &reports)
{
    const MailSite site = mailSite();
    if (!fileExists(site.settings))
        return;
    CheckedFile file(findings, site.settings);
    if (!file.isRead())
        return;
    file.requireRoot("MAILSETTINGS");
    checkServer(file, site);
    checkSubscriptions(file, reports);
    if (const QString fault = templateFault(site.htmlTemplate); !fault.isEmpty())
        findings.add(nativePath(site.htmlTemplate), fault);
    else
        checkTemplateText(findings, site.htmlTemplate, mailTemplate);
}
