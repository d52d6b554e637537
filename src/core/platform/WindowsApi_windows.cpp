#include "core/platform/WindowsApi_windows.h"

#include <QDir>

#include <vector>

namespace platform {

QString longPath(const QString &path)
{
    const QString absolute =
        QDir::toNativeSeparators(QDir::cleanPath(QDir().absoluteFilePath(path)));
    if (absolute.startsWith(QLatin1String("\\\\?\\")) ||
        absolute.startsWith(QLatin1String("\\\\.\\")))
        return absolute;
    if (absolute.startsWith(QLatin1String("\\\\")))
        return QLatin1String("\\\\?\\UNC\\") + absolute.mid(2);
    return QLatin1String("\\\\?\\") + absolute;
}

QString systemText(DWORD error)
{
    wchar_t *buffer = nullptr;
    const DWORD size = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, error, 0, reinterpret_cast<wchar_t *>(&buffer), 0, nullptr);
    const QString text = QString::fromWCharArray(buffer, static_cast<int>(size)).trimmed();
    ::LocalFree(buffer);
    return QStringLiteral("%1 [%2]").arg(text).arg(error).trimmed();
}

QString programFile()
{
    std::vector<wchar_t> buffer(32768); // no path is longer
    const DWORD size =
        ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    return QString::fromWCharArray(buffer.data(), static_cast<int>(size));
}

} // namespace platform
