#include "base/Error.h"
#include "base/Files.h"
#include "platform/Secrets.h"

#include <QFileInfo>

namespace platform {

namespace {

constexpr qint64 maxSecretBytes = 64 * 1024;

/// The text of a file without the line break that an editor leaves at its end.
QString textOf(const QString &path)
{
    QString text = readTextFile(path, maxSecretBytes);
    while (text.endsWith(u'\n') || text.endsWith(u'\r'))
        text.chop(1);
    if (text.isEmpty())
        throw Error(InvalidFileFormat, QStringLiteral("'%1' is empty").arg(path));
    return text;
}

} // namespace

std::optional<QString> readSecret(const QString &path, const QString &credential)
{
    if (const QString folder = qEnvironmentVariable("CREDENTIALS_DIRECTORY"); !folder.isEmpty()) {
        const QString handed = folder + u'/' + credential;
        if (QFileInfo::exists(handed))
            return textOf(handed); // the system sees to its permissions
    }
    const QFileInfo file(path);
    if (!file.exists())
        return std::nullopt;
    constexpr QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                          QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    if (file.permissions() & others)
        throw Error(PermissionDenied,
                    QStringLiteral("'%1' holds a password, and other users have access to it: "
                                   "chmod 600, and change the password")
                        .arg(path));
    return textOf(path);
}

void saveSecret(const QString &path, const QString &secret)
{
    savePrivateFile(path, secret.toUtf8());
}

} // namespace platform
