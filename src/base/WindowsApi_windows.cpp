#include "base/WindowsApi_windows.h"

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

QString commandLine(const QStringList &arguments)
{
    // The rules of CommandLineToArgvW: backslashes count as themselves unless a quote follows.
    QStringList words;
    for (const QString &argument : arguments) {
        if (!argument.isEmpty() && !argument.contains(u' ') && !argument.contains(u'\t') &&
            !argument.contains(u'"')) {
            words.append(argument);
            continue;
        }
        QString word(u'"');
        qsizetype backslashes = 0;
        for (const QChar character : argument) {
            if (character == u'"')
                word += QString(backslashes + 1, u'\\');
            backslashes = character == u'\\' ? backslashes + 1 : 0;
            word += character;
        }
        words.append(word + QString(backslashes, u'\\') + u'"');
    }
    return words.join(u' ');
}

QString programFile()
{
    std::vector<wchar_t> buffer(32768); // the maximum length of a path
    const DWORD size =
        ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    return QString::fromWCharArray(buffer.data(), static_cast<int>(size));
}

} // namespace platform
