#pragma once

#include "mail/MailRun.h"

#include <QStringList>

/// The options --mail, --mail-test and --outbox. Each gives the program's exit status. Main thread
/// only.

/// Mails the last finished result of each report.
int mailReports(const MailSite &site, const QStringList &reportIds);

/// Sends a test message; to the sender's address if `recipient` is empty.
int testMails(const MailSite &site, const QString &recipient);

/// Lists the mails that wait.
int listOutbox(const MailSite &site);
