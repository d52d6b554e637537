#include "base/FileSystem.h"
#include "base/WindowsApi_windows.h"

#include <QStringList>

#include <aclapi.h>
#include <fcntl.h>
#include <io.h>

namespace platform {

namespace {

constexpr DWORD maxWait = 2000; // milliseconds

/// Whether the error may be temporary: scanners, indexers and backups open new files for a moment,
/// and browsers the page that they show.
bool mayPass(DWORD error)
{
    return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION ||
           error == ERROR_ACCESS_DENIED || error == ERROR_USER_MAPPED_FILE;
}

/// Gives a file the access rights of another one, if allowed; a new file has those of its folder.
void copyRights(const QString &from, const QString &to)
{
    PACL rights = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (::GetNamedSecurityInfoW(wide(from), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                nullptr, &rights, nullptr, &descriptor) != ERROR_SUCCESS)
        return;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    ::GetSecurityDescriptorControl(descriptor, &control, &revision);
    const SECURITY_INFORMATION inheritance = control & SE_DACL_PROTECTED
                                                 ? PROTECTED_DACL_SECURITY_INFORMATION
                                                 : UNPROTECTED_DACL_SECURITY_INFORMATION;
    std::wstring target = to.toStdWString();
    ::SetNamedSecurityInfoW(target.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | inheritance,
                            nullptr, nullptr, rights, nullptr);
    ::LocalFree(descriptor);
}

/// Whether a name means a device in every folder, whatever its extension.
bool isDevice(const QString &name)
{
    const QString base = name.section(u'.', 0, 0).trimmed().toUpper();
    if (base.size() == 4 &&
        (base.startsWith(QLatin1String("COM")) || base.startsWith(QLatin1String("LPT"))))
        return base[3].isDigit() && base[3] != u'0';
    return base == u"CON" || base == u"PRN" || base == u"AUX" || base == u"NUL" ||
           base == u"CONIN$" || base == u"CONOUT$";
}

bool holdsForbidden(const QString &name)
{
    for (const QChar character : name) {
        if (character < u' ' || QStringLiteral("<>:\"|?*").contains(character))
            return true;
    }
    return false;
}

} // namespace

qint64 processId()
{
    return ::GetCurrentProcessId();
}

bool syncToDisk(int fileHandle)
{
    return ::FlushFileBuffers(reinterpret_cast<HANDLE>(::_get_osfhandle(fileHandle)));
}

bool replaceFile(const QString &from, const QString &to, QString &reason)
{
    const QString source = longPath(from);
    const QString target = longPath(to);
    const DWORD attributes = ::GetFileAttributesW(wide(target));
    const bool replaces = attributes != INVALID_FILE_ATTRIBUTES;
    if (replaces)
        copyRights(target, source);
    // Waiting does not help for a read-only file or a folder.
    if (replaces && (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY))) {
        reason = systemText(ERROR_ACCESS_DENIED);
        return false;
    }
    DWORD waited = 0;
    for (DWORD pause = 10;; pause *= 2) {
        if (::MoveFileExW(wide(source), wide(target),
                          MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return true;
        const DWORD error = ::GetLastError();
        if (!mayPass(error) || waited >= maxWait) {
            reason = systemText(error);
            return false;
        }
        ::Sleep(pause);
        waited += pause;
    }
}

bool openToRead(QFile &file, QString &reason)
{
    const HANDLE handle = ::CreateFileW(wide(longPath(file.fileName())), GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, 0, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        reason = systemText(::GetLastError());
        return false;
    }
    if (::GetFileType(handle) != FILE_TYPE_DISK) {
        ::CloseHandle(handle);
        reason = QStringLiteral("it is not a regular file");
        return false;
    }
    const int number = ::_open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_RDONLY | _O_BINARY);
    return file.open(number, QIODevice::ReadOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle);
}

bool openToCreate(QFile &file, QFile::Permissions)
{
    return file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered);
}

void removeUnlessOpen(const QString &path, qint64)
{
    QFile::remove(path); // fails while a program has it open
}

QString entryIgnoringCase(const QString &, const QString &)
{
    return QString();
}

QString nameFault(const QString &path)
{
    QString rest = path;
    rest.replace(u'/', u'\\');
    if (rest.startsWith(QLatin1String("\\\\?\\")))
        rest.remove(0, 4);
    if (rest.size() >= 2 && rest[0].isLetter() && rest[1] == u':')
        rest.remove(0, 2);
    const QStringList names = rest.split(u'\\', Qt::SkipEmptyParts);
    for (const QString &name : names) {
        if (name == u"." || name == u"..")
            continue;
        if (isDevice(name))
            return QStringLiteral("'%1' is the name of a device").arg(name);
        if (holdsForbidden(name))
            return QStringLiteral("'%1' holds one of the characters < > : \" | ? *").arg(name);
        if (name.endsWith(u'.') || name.endsWith(u' '))
            return QStringLiteral("'%1' ends in a point or a blank").arg(name);
    }
    return QString();
}

} // namespace platform
