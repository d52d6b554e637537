#include "mail/MailSite.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "config/Program.h"
#include "config/clsGrapherConfig.h"
#include "mail/MailSettings.h"
#include "platform/Secrets.h"

#include <QFile>

namespace {

QString secretPath(const MailSite &site)
{
    return nativePath(site.folder + QLatin1String("MailSecret"));
}

/// Homes that an earlier version has filled do not have the file.
QString templatePath()
{
    const QString name = QStringLiteral("Mail.HTML");
    const QString own = configurationFolder() + name;
    if (fileExists(own))
        return own;
    try {
        return shareFolder() + pathSeparator + QLatin1String("Config") + pathSeparator + name;
    } catch (const Error &) {
        return own; // whoever reads it says that it is not there
    }
}

} // namespace

MailSite mailSite()
{
    return {mailSettingsPath(), program().gGraphDataPath + QLatin1String("Mail") + pathSeparator,
            templatePath(), OutputTree(gConfig()), runHistory()};
}

std::optional<QString> readMailSecret(const MailSite &site)
{
    return platform::readSecret(secretPath(site), QStringLiteral("vantrel-mail"));
}

void saveMailSecret(const MailSite &site, const QString &secret)
{
    QString message; // if the folder cannot be created, the save fails
    EnsureFolder(site.folder, message);
    platform::saveSecret(secretPath(site), secret);
}

void removeMailSecret(const MailSite &site)
{
    const QString path = secretPath(site);
    if (QFile::exists(path) && !QFile::remove(path))
        throw Error(PermissionDenied, QStringLiteral("Cannot remove '%1'").arg(path));
}
