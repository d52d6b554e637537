#pragma once

#include "base/Paths.h"
#include "report/OutputTree.h"
#include "scheduling/RunHistory.h"

#include <QString>

#include <optional>

/// Where everything is that mails are made of, as it stood when this was asked for. A value: made
/// on the main thread, used on any.
struct MailSite
{
    QString settings;     ///< path of MailSettings.XML
    QString folder;       ///< of outbox and secret, in the tool's data folder; ends in a separator
    QString htmlTemplate; ///< path of Mail.HTML: the user's, else the factory's
    OutputTree tree;
    RunHistory history;

    QString outbox() const { return folder + QLatin1String("Outbox") + pathSeparator; }
};

/// Main thread only.
MailSite mailSite();

/// The password, or access token, for the mail server. Null: none is saved. Throw Error, which
/// never cites it.
std::optional<QString> readMailSecret(const MailSite &site);
void saveMailSecret(const MailSite &site, const QString &secret);
/// Removes it from the file; nothing happens where there is none.
void removeMailSecret(const MailSite &site);
