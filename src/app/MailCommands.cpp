#include "app/MailCommands.h"

#include "app/Application.h"
#include "app/RunDisplay.h"
#include "base/Error.h"
#include "base/OneLine.h"
#include "base/Paths.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "definitions/Definitions.h"
#include "mail/MailSettings.h"
#include "mail/Outbox.h"
#include "platform/Terminal.h"

namespace {

QString timeText(qint64 instant)
{
    return instant == 0 ? QStringLiteral("never")
                        : wallTime(instant).toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

QString outboxLine(const OutboxEntry &entry)
{
    return QStringList{QLatin1String("since ") + timeText(entry.since),
                       QStringLiteral("tried %1 times, last %2")
                           .arg(entry.tries)
                           .arg(timeText(entry.lastTry)),
                       oneLine(entry.recipient), oneLine(entry.subject),
                       entry.isTrying ? QStringLiteral("the last try was broken off, or goes on")
                                      : oneLine(entry.error)}
               .join(u'\t') +
           u'\n';
}

void cancelOnRequest()
{
    platform::onCancelRequest([] { program().CancelRequested = true; });
}

} // namespace

int mailReports(const MailSite &site, const QStringList &reportIds)
{
    program().gStartupDone = true;
    const RunDisplay display(stdout, stderr);
    cancelOnRequest();
    bool isDone = true;
    for (const QString &id : reportIds) {
        const auto report = definitions().gReportDefs.find(id);
        const MailResult result =
            mailReport(site, id, report ? report->ReportTitle : id, observer());
        if (result.cancelled)
            return ExitStatus::Cancelled;
        isDone = isDone && !result.failed() && result.waiting == 0;
    }
    return isDone ? ExitStatus::Done : ExitStatus::ReportFailed;
}

int testMails(const MailSite &site, const QString &recipient)
{
    const MailSettings settings = MailSettings::load(site.settings);
    const MailServer &server = settings.server;
    const std::optional<QString> secret =
        server.authentication == MailAuthentication::None ? std::nullopt : readMailSecret(site);
    const QString to = recipient.isEmpty() ? server.from : recipient;
    cancelOnRequest();
    const Delivery delivery =
        sendTestMail(server, secret, to, [] { return bool(program().CancelRequested); });
    if (delivery.outcome == Delivery::Outcome::Cancelled)
        return ExitStatus::Cancelled;
    if (!delivery.isSent()) {
        refuse(delivery.text);
        return ExitStatus::ReportFailed;
    }
    return printText(
        QStringLiteral("%1 has accepted a test message to %2.\n").arg(server.host, oneLine(to)));
}

int listOutbox(const MailSite &site)
{
    const Outbox outbox(site.outbox());
    QStringList faults;
    QString text;
    const std::vector<OutboxEntry> entries = outbox.entries(&faults);
    for (const OutboxEntry &entry : entries)
        text += outboxLine(entry);
    for (const QString &fault : faults)
        refuse(fault);
    const int shown = printText(text.isEmpty() ? QStringLiteral("The outbox is empty.\n") : text);
    return faults.isEmpty() ? shown : ExitStatus::ReportFailed;
}
