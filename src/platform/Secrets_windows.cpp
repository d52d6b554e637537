#include "base/Error.h"
#include "base/Files.h"
#include "base/WindowsApi_windows.h"
#include "platform/Secrets.h"

#include <QFileInfo>

#include <dpapi.h>

namespace platform {

namespace {

constexpr qint64 maxSecretBytes = 64 * 1024;
constexpr DWORD withoutQuestions = CRYPTPROTECT_UI_FORBIDDEN;

DATA_BLOB blobOf(QByteArray &bytes)
{
    return {static_cast<DWORD>(bytes.size()), reinterpret_cast<BYTE *>(bytes.data())};
}

/// The bytes of a blob that the system has made; releases it.
QByteArray taken(const DATA_BLOB &blob)
{
    QByteArray bytes(reinterpret_cast<const char *>(blob.pbData),
                     static_cast<qsizetype>(blob.cbData));
    ::SecureZeroMemory(blob.pbData, blob.cbData);
    ::LocalFree(blob.pbData);
    return bytes;
}

} // namespace

std::optional<QString> readSecret(const QString &path, const QString & /*credential*/)
{
    if (!QFileInfo::exists(path))
        return std::nullopt;
    QByteArray bytes = readFile(path, maxSecretBytes);
    DATA_BLOB locked = blobOf(bytes);
    DATA_BLOB open{};
    if (!::CryptUnprotectData(&locked, nullptr, nullptr, nullptr, nullptr, withoutQuestions, &open))
        throw Error(PermissionDenied,
                    QStringLiteral("'%1' can only be read by the user who saved the password on "
                                   "this machine; save it again: %2")
                        .arg(path, systemText(::GetLastError())));
    const QString secret = QString::fromUtf8(taken(open));
    if (secret.isEmpty())
        throw Error(InvalidFileFormat, QStringLiteral("'%1' is empty").arg(path));
    return secret;
}

void saveSecret(const QString &path, const QString &secret)
{
    QByteArray bytes = secret.toUtf8();
    DATA_BLOB open = blobOf(bytes);
    DATA_BLOB locked{};
    if (!::CryptProtectData(&open, nullptr, nullptr, nullptr, nullptr, withoutQuestions, &locked))
        throw Error(
            PermissionDenied,
            QStringLiteral("Cannot encrypt for '%1': %2").arg(path, systemText(::GetLastError())));
    savePrivateFile(path, taken(locked));
}

} // namespace platform
