#include "mail/MailRun.h"

#include "base/Clock.h"
#include "base/Error.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "config/RunLog.h"
#include "definitions/TemplateFile.h"
#include "mail/MailMessage.h"
#include "mail/MailsDue.h"
#include "mail/Outbox.h"
#include "mail/ReportMail.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace {

bool isCancelled()
{
    return program().CancelRequested;
}

/// Which runs have been told, in the file "told.json" of the mails' folder.
class ToldRuns
{
public:
    explicit ToldRuns(const MailSite &site)
        : m_path(site.folder + QLatin1String("told.json"))
    {}

    /// Null when there is no file, or a damaged one.
    std::optional<qint64> until() const
    {
        if (!fileExists(m_path))
            return std::nullopt;
        const QJsonValue value =
            QJsonDocument::fromJson(readFile(m_path)).object()[QLatin1String("until")];
        return value.isDouble() ? std::optional(value.toInteger()) : std::nullopt;
    }

    /// Throws Error.
    void save(qint64 until) const
    {
        saveFile(m_path, QJsonDocument(QJsonObject{{QStringLiteral("until"), until}}).toJson());
    }

private:
    QString m_path;
};

/// A name for a mail that is the same whenever the same one is made: a process that was killed
/// while it made mails makes them again.
QString stemOf(qint64 instant, const QString &what)
{
    return QDateTime::fromMSecsSinceEpoch(instant, Qt::UTC)
               .toString(QStringLiteral("yyyyMMdd-HHmmss-zzz-")) +
           QString::fromLatin1(QCryptographicHash::hash(what.toUtf8(), QCryptographicHash::Sha256)
                                   .toHex()
                                   .left(16));
}

/// The making and sending of mails of one site, under the lock of its outbox.
class MailRun
{
public:
    MailRun(const MailSite &site, RunLog &log)
        : m_site(site)
        , m_log(log)
        , m_outbox(site.outbox())
    {
        m_outbox.lock(isCancelled);
        m_settings = MailSettings::load(site.settings);
        if (const QStringList faults = faultsOf(m_settings.server); !faults.isEmpty())
            throw Error(InvalidFileFormat,
                        QStringLiteral("%1: %2").arg(nativePath(site.settings), faults.join(u';')));
        for (const QString &error : m_settings.errors)
            noteError(error);
        m_outbox.removeLeftovers();
    }

    /// Puts a mail into the outbox. Throws Error.
    void add(const QString &stem, const MailContent &content, const QString &recipients)
    {
        const MailEnvelope envelope{mailAddress(m_settings.server.from), mailAddresses(recipients),
                                    newMessageId(mailAddress(m_settings.server.from)),
                                    currentInstant()};
        std::vector<OutboxEntry> entries;
        for (const MailAddress &to : envelope.to) {
            OutboxEntry entry;
            entry.name = QStringLiteral("%1-%2.json").arg(stem).arg(entries.size() + 1);
            entry.message = stem + QLatin1String(".eml");
            entry.messageId = envelope.messageId;
            entry.from = envelope.from.address;
            entry.recipient = to.address;
            entry.subject = content.subject;
            entry.since = envelope.instant;
            entries.push_back(entry);
        }
        m_outbox.add(entries, mailMessage(content, envelope, htmlTemplate()));
        m_added.insert(m_added.end(), entries.begin(), entries.end());
    }

    /// The mails that the runs since the last time call for.
    void addDue(const std::vector<RunRecord> &runs)
    {
        const ToldRuns told(m_site);
        const std::optional<qint64> until = told.until();
        const MailsDue due = mailsDue(runs, until);
        if (due.until == until.value_or(0))
            return;
        try {
            for (const ReportRecord *report : due.reports)
                addSubscribed(*report);
            if (due.failedRun && !m_settings.failureRecipients.isEmpty())
                add(stemOf(due.failedRun->start, QStringLiteral("failed")),
                    failureMail(*due.failedRun, due.troubles), m_settings.failureRecipients);
            told.save(due.until);
        } catch (const Error &error) {
            // They are made again at the next run, so none may go out now.
            for (const OutboxEntry &entry : m_added)
                m_outbox.remove(entry);
            noteError(QLatin1String("Mails could not be put into the outbox: ") +
                      error.description);
        }
    }

    /// Sends to all subscribers of a report. Throws Error.
    void addForAll(const ReportRecord &report)
    {
        const std::optional<QJsonObject> figures = reportFigures(m_site, report);
        const QString now = QString::number(currentInstant());
        for (const MailSubscription &subscription : m_settings.subscriptions) {
            if (subscription.reportId.compare(report.id, Qt::CaseInsensitive) == 0)
                add(stemOf(report.start, now + subscription.id),
                    reportMail(m_site, m_settings.server, subscription, report, figures),
                    subscription.recipients);
        }
        if (m_added.empty())
            throw Error(ItemNotFound,
                        QStringLiteral("Nobody gets the report '%1' by mail: %2 has no "
                                       "subscription to it")
                            .arg(report.title, nativePath(m_site.settings)));
    }

    /// Sends what waits, the oldest first.
    void send()
    {
        QStringList faults;
        std::vector<OutboxEntry> entries = m_outbox.entries(&faults);
        for (const QString &fault : faults)
            noteError(fault);
        if (entries.empty())
            return;
        SmtpSender sender(m_settings.server, secret(), isCancelled);
        QString unusable; // why the server is, at present
        for (OutboxEntry &entry : entries) {
            if (isCancelled())
                break;
            if (unusable.isEmpty()) {
                const Delivery delivery = attempt(sender, entry);
                if (delivery.outcome == Delivery::Outcome::Unusable)
                    unusable = delivery.text;
                conclude(entry, delivery);
            } else {
                conclude(entry, {Delivery::Outcome::Unusable, unusable});
            }
        }
        m_result.cancelled = isCancelled();
    }

    /// Throws Error where the settings need a secret and there is none.
    std::optional<QString> secret() const
    {
        if (m_settings.server.authentication == MailAuthentication::None)
            return std::nullopt;
        const std::optional<QString> found = readMailSecret(m_site);
        if (!found)
            throw Error(ItemNotFound, QStringLiteral("No password for the mail server is saved"));
        return found;
    }

    void noteError(const QString &text)
    {
        m_result.error += (m_result.error.isEmpty() ? QString() : QStringLiteral("; ")) + text;
        m_log.status(text);
        m_log.trouble(text);
        m_log.unattendedEvent(EventError, text);
        m_result.lines.append(text);
    }

    MailResult &result() { return m_result; }

private:
    void addSubscribed(const ReportRecord &report)
    {
        const std::optional<QJsonObject> figures = reportFigures(m_site, report);
        for (const MailSubscription &subscription : m_settings.subscriptions) {
            if (subscription.reportId.compare(report.id, Qt::CaseInsensitive) == 0 &&
                isOccasion(subscription, report, figures))
                add(stemOf(report.start, subscription.id),
                    reportMail(m_site, m_settings.server, subscription, report, figures),
                    subscription.recipients);
        }
    }

    /// Mails go without their HTML part rather than not at all.
    QString htmlTemplate()
    {
        if (m_htmlTemplate.isNull()) {
            try {
                m_htmlTemplate = readTemplate(m_site.htmlTemplate);
            } catch (const Error &error) {
                m_htmlTemplate = QLatin1String("");
                noteError(QLatin1String("Mails are plain text: ") + error.description);
            }
        }
        return m_htmlTemplate;
    }

    /// One try, with its beginning on file.
    Delivery attempt(SmtpSender &sender, OutboxEntry &entry)
    {
        const QString which = mailText(entry);
        if (entry.isTrying)
            m_log.status(which +
                         QLatin1String(": the last try was broken off; should it have arrived, "
                                       "it arrives twice"));
        m_log.status(QLatin1String("Sending ") + which);
        try {
            const QByteArray message = m_outbox.message(entry);
            ++entry.tries;
            entry.lastTry = currentInstant();
            entry.isTrying = true;
            update(entry);
            return sender.send(message, entry.from, entry.recipient);
        } catch (const Error &error) {
            return {Delivery::Outcome::Failed, error.description};
        }
    }

    /// The state is for people; on a full disk the mail is sent all the same.
    void update(const OutboxEntry &entry)
    {
        try {
            m_outbox.update(entry);
        } catch (const Error &error) {
            if (!m_result.error.contains(error.description))
                noteError(error.description);
        }
    }

    void conclude(OutboxEntry &entry, const Delivery &delivery)
    {
        using Outcome = Delivery::Outcome;
        const bool isOver = currentInstant() - entry.since >= outboxPatience;
        if (delivery.isSent()) {
            remove(entry);
            ++m_result.sent;
            say(entry, QStringLiteral("was sent"), EventInformation);
        } else if (delivery.outcome == Outcome::Refused) {
            remove(entry);
            ++m_result.lost;
            say(entry, QLatin1String("was refused: ") + delivery.text, EventError);
        } else if (delivery.outcome == Outcome::Cancelled) {
            keep(entry, delivery.text);
        } else if (isOver) {
            remove(entry);
            ++m_result.lost;
            say(entry, QLatin1String("is given up after two days: ") + delivery.text, EventError);
        } else {
            keep(entry, delivery.text);
            say(entry, QLatin1String("waits: ") + delivery.text, EventWarning);
        }
    }

    void keep(OutboxEntry &entry, const QString &error)
    {
        entry.error = error;
        entry.isTrying = false;
        ++m_result.waiting;
        update(entry);
    }

    void remove(const OutboxEntry &entry)
    {
        try {
            m_outbox.remove(entry);
        } catch (const Error &error) {
            noteError(error.description);
        }
    }

    static QString mailText(const OutboxEntry &entry)
    {
        return QStringLiteral("mail '%1' to %2").arg(entry.subject, entry.recipient);
    }

    /// A failure is told to those who watch, and the event log; a success to the history alone.
    void say(const OutboxEntry &entry, const QString &what, EventType type)
    {
        QString text = mailText(entry) + u' ' + what;
        text[0] = text[0].toUpper();
        m_result.lines.append(text);
        m_log.status(text);
        if (type == EventInformation)
            return;
        m_log.trouble(text);
        m_log.unattendedEvent(type == EventError ? EventError : EventWarning, text);
    }

    const MailSite &m_site;
    RunLog &m_log;
    Outbox m_outbox;
    MailSettings m_settings;
    QString m_htmlTemplate;
    std::vector<OutboxEntry> m_added;
    MailResult m_result;
};

/// Puts what happened on record with the newest run that has ended.
void record(const RunHistory &history, const QStringList &lines, RunLog &log)
{
    if (lines.isEmpty())
        return;
    std::vector<RunRecord> runs = history.runs();
    const auto run =
        std::find_if(runs.begin(), runs.end(), [](const RunRecord &each) { return each.end != 0; });
    if (run == runs.end())
        return;
    run->mails.append(lines);
    try {
        history.amend(*run);
    } catch (const Error &error) {
        const QString text = QLatin1String("Error saving run history ") + errorTail(error);
        log.status(text);
        log.trouble(text);
        log.unattendedEvent(EventError, text);
    }
}

/// Does `work` with a run; what keeps it from working becomes the result's error.
template <typename Work>
MailResult sending(const MailSite &site, RunLog &log, Work work)
{
    const auto fail = [&log](MailResult result, const Error &error) {
        const QString text = QLatin1String("Mails cannot be sent: ") + error.description;
        log.status(text);
        log.trouble(text);
        log.unattendedEvent(EventError, text);
        result.lines.append(text);
        result.error += (result.error.isEmpty() ? QString() : QStringLiteral("; ")) + text;
        return result;
    };
    try {
        MailRun run(site, log);
        try {
            work(run);
        } catch (const std::exception &exception) {
            return fail(std::move(run.result()), errorOf(exception));
        }
        return std::move(run.result());
    } catch (const std::exception &exception) {
        return fail({}, errorOf(exception));
    }
}

} // namespace

MailResult mailAfterRun(const MailSite &site, const Observer &watcher)
{
    if (!fileExists(site.settings))
        return {};
    const std::vector<RunRecord> runs = site.history.runs();
    RunLog log(watcher, Attendance::Unattended, troublesOfToday(runs));
    MailResult result = sending(site, log, [&runs](MailRun &run) {
        run.addDue(runs);
        run.send();
    });
    record(site.history, result.lines, log);
    return result;
}

qsizetype waitingMails(const MailSite &site)
{
    return static_cast<qsizetype>(Outbox(site.outbox()).entries().size());
}

MailResult mailReport(const MailSite &site, const QString &reportId, const QString &title,
                      const Observer &watcher)
{
    RunLog log(watcher);
    return sending(site, log, [&](MailRun &run) {
        const std::vector<RunRecord> runs = site.history.runs();
        for (const RunRecord &each : runs) {
            for (const ReportRecord &report : each.reports) {
                const bool isFinished = report.result == ReportResult::Ok ||
                                        report.result == ReportResult::Partial ||
                                        report.result == ReportResult::NoData;
                if (!isFinished || report.id.compare(reportId, Qt::CaseInsensitive) != 0)
                    continue;
                run.addForAll(report);
                run.send();
                return;
            }
        }
        throw Error(ItemNotFound,
                    QStringLiteral("No finished run of the report '%1' is on record").arg(title));
    });
}

Delivery sendTestMail(const MailServer &server, const std::optional<QString> &secret,
                      const QString &recipient, std::function<bool()> isCancelled,
                      std::function<void()> onTalk)
{
    if (const QStringList faults = faultsOf(server); !faults.isEmpty())
        return {Delivery::Outcome::Unusable, faults.join(QLatin1String("; "))};
    if (server.authentication != MailAuthentication::None && !secret)
        return {Delivery::Outcome::Unusable,
                QStringLiteral("No password for the mail server is saved")};
    try {
        const MailAddress from = mailAddress(server.from);
        const MailAddress to = mailAddress(recipient);
        const MailEnvelope envelope{from, {to}, newMessageId(from), currentInstant()};
        SmtpSender sender(server, secret, std::move(isCancelled), std::move(onTalk));
        return sender.send(mailMessage(testMail(server), envelope, QString()), from.address,
                           to.address);
    } catch (const Error &error) {
        return {Delivery::Outcome::Failed, error.description};
    }
}
