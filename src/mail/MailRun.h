#pragma once

#include "config/Status.h"
#include "mail/MailSite.h"
#include "mail/SmtpSender.h"

#include <QStringList>

#include <functional>

/// The sending of mails. All functions work on any thread, one at a time; they end early when
/// `CancelRequested` is set, and what was not sent then waits. The observer takes a status line for
/// each mail, and `trouble` for each that was not sent.

struct MailResult
{
    int sent = 0;
    int waiting = 0;   ///< those that are tried again
    int lost = 0;      ///< those that were refused for good, or given up after two days
    QStringList lines; ///< what became of each
    QString error;     ///< what kept mails from being made or sent at all; empty: nothing
    bool cancelled = false;

    /// Whether somebody will not get a mail, or may not.
    bool failed() const { return lost > 0 || !error.isEmpty(); }
};

/// After a run by schedule: makes the mails that its results call for, and those of earlier runs
/// that were broken off before they came to it, and sends all that waits. What happened is put into
/// the run history, and failures into the event log, the same one once a day. Nothing happens
/// where there is no MailSettings.XML.
MailResult mailAfterRun(const MailSite &site, const Observer &watcher);

/// How many mails wait to be sent.
qsizetype waitingMails(const MailSite &site);

/// Sends a report's last finished result to all its subscribers now, whatever it is like. What
/// cannot be sent waits.
MailResult mailReport(const MailSite &site, const QString &reportId, const QString &title,
                      const Observer &watcher);

/// Sends a test message past the outbox. The settings need not be saved. The last two are as for
/// SmtpSender.
Delivery sendTestMail(const MailServer &server, const std::optional<QString> &secret,
                      const QString &recipient, std::function<bool()> isCancelled,
                      std::function<void()> onTalk = {});
