#pragma once

#include "mail/MailContent.h"
#include "mail/MailSettings.h"
#include "mail/MailSite.h"

#include <QJsonObject>

#include <optional>

/// What a mail says about a finished report: a function of its files and of its record in the run
/// history. On any thread.

/// "report.json" of the run that the record is of; null when that run wrote none.
std::optional<QJsonObject> reportFigures(const MailSite &site, const ReportRecord &report);

/// Whether a subscriber wants to hear of this result.
bool isOccasion(const MailSubscription &subscription, const ReportRecord &report,
                const std::optional<QJsonObject> &figures);

/// The mail to a report's subscriber.
MailContent reportMail(const MailSite &site, const MailServer &server,
                       const MailSubscription &subscription, const ReportRecord &report,
                       const std::optional<QJsonObject> &figures);

/// The mail to those who hear of failed runs.
MailContent failureMail(const RunRecord &run, const QStringList &troubles);

/// The mail that shows whether mails arrive.
MailContent testMail(const MailServer &server);
