#include "base/Files.h"

#include "base/CodePages.h"
#include "base/Error.h"
#include "base/FileSystem.h"
#include "base/FileWriter.h"
#include "base/Paths.h"
#include "base/ProgramState.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QRegularExpression>
#include <QSet>
#include <QStringDecoder>

#include <atomic>

namespace {

Error fileError(int number, const QString &what, const QString &path, const QString &reason)
{
    return Error(number, what + QLatin1String(" '") + path + QLatin1String("': ") + reason);
}

/// Throws Error when the system does not allow the path.
void requirePossible(const QString &what, const QString &configured)
{
    if (const QString fault = platform::nameFault(configured); !fault.isEmpty())
        throw fileError(BadFileName, what, configured, fault);
}

/// What all threads that write know together.
struct TemporaryFiles
{
    std::atomic<unsigned> count = 0;
    QMutex mutex;
    QSet<QString> cleanFolders; ///< where leftovers have been removed
};

const StatePart<TemporaryFiles> temporaries;

/// A name for a temporary file beside `path` that no other thread or process uses, nor an earlier
/// process of the same number that was stopped in the middle of its work. removeLeftovers() knows
/// this form.
QString temporaryName(const QString &path)
{
    for (;;) {
        QString name = path + u'.' + QString::number(platform::processId()) + u'-' +
                       QString::number(temporaries->count.fetch_add(1)) + QLatin1String(".tmp");
        if (!QFileInfo::exists(name))
            return name;
    }
}

/// Removes the temporary files that killed processes left in a folder; the first time only.
void removeLeftovers(const QString &folder)
{
    {
        const QMutexLocker locker(&temporaries->mutex);
        if (temporaries->cleanFolders.contains(folder))
            return;
        temporaries->cleanFolders.insert(folder);
    }
    constexpr qint64 hour = 3600; // seconds
    static const QRegularExpression form(QStringLiteral(".\\.(\\d{1,9})-\\d+\\.tmp$"));
    QDirIterator files(folder, {QStringLiteral("*.tmp")},
                       QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    while (files.hasNext()) {
        const QString path = files.next();
        const QRegularExpressionMatch name = form.match(files.fileName());
        if (name.hasMatch() &&
            files.fileInfo().lastModified().secsTo(QDateTime::currentDateTime()) > hour)
            platform::removeUnlessOpen(path, name.captured(1).toLongLong());
    }
}

bool isRegular(const QFileInfo &file)
{
    return file.isFile() && !file.isSymLink();
}

enum class Readers { AsBefore, OwnerAlone };

constexpr QFile::Permissions ownerAlone = QFile::ReadOwner | QFile::WriteOwner;

/// The permissions of a file that replaces `old` or is new.
QFile::Permissions permissionsFor(const QFileInfo &old, Readers readers)
{
    if (readers == Readers::OwnerAlone)
        return ownerAlone;
    if (isRegular(old))
        return old.permissions() & (ownerAlone | QFile::ExeOwner | QFile::ReadGroup |
                                    QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther);
    return ownerAlone | QFile::ReadGroup | QFile::ReadOther;
}

QString withOwnFolder(const QString &path)
{
    return programFolder() + pathSeparator + path;
}

#ifndef Q_OS_WIN
/// The whole path with "/" as separator. Null for an empty text and a path of Windows.
QString unixPath(const QString &configured)
{
    if (configured.isEmpty() || !platform::nameFault(configured).isEmpty())
        return QString();
    QString path = configured;
    path.replace(u'\\', u'/');
    return path.startsWith(u'/') ? path : withOwnFolder(path);
}

/// The entry of a folder for a name: the exact one, else the first that differs only in case. Null
/// when there is none.
QString entryOf(const QString &folder, const QString &name)
{
    const QString base = folder.isEmpty() || folder.endsWith(u'/') ? folder : folder + u'/';
    if (name == u"." || name == u".." || QFileInfo::exists(base + name))
        return base + name;
    const QString entry = platform::entryIgnoringCase(base, name);
    return entry.isNull() ? entry : base + entry;
}
#endif

/// A file on its way to its place; its path is the file system's own. What is not committed is
/// removed.
class WrittenFile
{
public:
    explicit WrittenFile(const QString &path, Readers readers = Readers::AsBefore)
        : m_path(path)
    {
        requirePossible(what, path);
        const QFileInfo old(path);
        if (old.exists() && !old.isSymLink() && !old.isFile() && !old.isDir())
            throw fileError(DeviceIO, what, path, QStringLiteral("it is not a regular file"));
        const QFileInfo folder(old.path());
        removeLeftovers(old.path());
        m_file.setFileName(temporaryName(path));
        const QFile::Permissions permissions = permissionsFor(old, readers);
        if (!platform::openToCreate(m_file, permissions)) {
            if (!folder.isDir())
                throw Error(PathNotFound, QStringLiteral("Path not found: '%1'").arg(path));
            throw fileError(folder.isWritable() ? DeviceIO : PermissionDenied, what, path,
                            m_file.errorString());
        }
        m_isThere = true;
        if (isRegular(old)) { // a private file stays private, if the file system supports that
            m_file.setPermissions(permissions);
            m_file.unsetError();
        }
    }
    ~WrittenFile()
    {
        m_file.close();
        if (m_isThere)
            QFile::remove(temporary());
    }
    WrittenFile(const WrittenFile &) = delete;
    WrittenFile &operator=(const WrittenFile &) = delete;

    QString temporary() const { return m_file.fileName(); }

    void write(QByteArrayView content)
    {
        const qint64 taken = m_file.write(content.data(), content.size());
        m_size += content.size();
        if (taken < 0 || !m_file.flush())
            throw fileError(m_file.error() == QFile::ResourceError ? DiskFull : DeviceIO, what,
                            m_path, m_file.errorString());
        m_taken += taken;
        requireSpace(m_taken);
    }

    void commit()
    {
        if (!platform::syncToDisk(m_file.handle()))
            throw Error(DeviceIO, QStringLiteral("Cannot sync '%1' to the disk").arg(m_path));
        const qint64 written = qMin(m_taken, m_file.size());
        m_file.close();
        if (m_file.error() != QFile::NoError)
            throw fileError(DeviceIO, what, m_path, m_file.errorString());
        requireSpace(written);
        QString reason;
        if (!platform::replaceFile(temporary(), m_path, reason))
            throw Error(PermissionDenied,
                        QStringLiteral("Cannot replace '%1': %2").arg(m_path, reason));
        m_isThere = false;
    }

private:
    /// Throws Error unless all bytes were written.
    void requireSpace(qint64 written) const
    {
        if (written != m_size)
            throw Error(DiskFull, QStringLiteral("Only %1 of %2 bytes of '%3' were written")
                                      .arg(written)
                                      .arg(m_size)
                                      .arg(m_path));
    }

    const QString what = QStringLiteral("Cannot write");
    QString m_path;
    QFile m_file;
    qint64 m_size = 0;  ///< bytes to be written
    qint64 m_taken = 0; ///< those that the system has taken
    bool m_isThere = false;
};

void writeFile(const QString &path, QByteArrayView content, Readers readers = Readers::AsBefore)
{
    WrittenFile file(path, readers);
    file.write(content);
    file.commit();
}

} // namespace

QString nativePath(const QString &configured)
{
#ifdef Q_OS_WIN
    const bool isWhole = configured.isEmpty() || isSeparator(configured[0]) ||
                         (configured.size() > 1 && configured[1] == u':');
    return QDir::toNativeSeparators(isWhole ? configured : withOwnFolder(configured));
#else
    const QString path = unixPath(configured);
    if (path.isEmpty())
        return configured;
    if (QFileInfo::exists(path))
        return path;

    QString found = QStringLiteral("/");
    const QStringList parts = path.split(u'/', Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QString entry = entryOf(found, parts[i]);
        if (entry.isNull()) { // the rest stays as written
            const QString rest = parts.mid(i).join(u'/');
            found += found.isEmpty() || found.endsWith(u'/') ? rest : u'/' + rest;
            break;
        }
        found = entry;
    }
    if (path.endsWith(u'/') && !found.endsWith(u'/'))
        found += u'/';
    return found;
#endif
}

QString exactPath(const QString &configured)
{
#ifdef Q_OS_WIN
    return nativePath(configured);
#else
    QString path = unixPath(configured);
    if (path.isEmpty())
        return configured;
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    const qsizetype nameAt = path.lastIndexOf(u'/') + 1;
    return nativePath(path.left(nameAt)) + path.mid(nameAt);
#endif
}

bool fileExists(const QString &configured)
{
    return QFileInfo(nativePath(configured)).isFile();
}

bool folderExists(const QString &configured)
{
    return QFileInfo(nativePath(configured)).isDir();
}

QByteArray readFile(const QString &configured, qint64 maxBytes)
{
    const QString what = QStringLiteral("Cannot open");
    requirePossible(what, configured);
    const QString path = nativePath(configured);
    QFile file(path);
    QString reason;
    if (!platform::openToRead(file, reason)) {
        if (!QFileInfo::exists(path))
            throw Error(FileNotFound, QStringLiteral("File not found: '%1'").arg(path));
        throw fileError(QFileInfo(path).isReadable() ? DeviceIO : PermissionDenied, what, path,
                        reason);
    }
    const qint64 size = file.size();
    if (size > maxBytes)
        throw Error(InvalidFileFormat,
                    QStringLiteral("'%1' has %2 bytes, more than the %3 that such a file may have")
                        .arg(path)
                        .arg(size)
                        .arg(maxBytes));
    QByteArray bytes = file.read(size);
    if (bytes.size() != size)
        throw fileError(DeviceIO, QStringLiteral("Cannot read all of"), path, file.errorString());
    return bytes;
}

QString decodeText(QByteArrayView bytes)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes = bytes.sliced(3);
    QStringDecoder utf8(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
    const QString text = utf8(bytes);
    if (!utf8.hasError())
        return text;
    return *codePageText(bytes, 1252);
}

QString readTextFile(const QString &configured, qint64 maxBytes)
{
    return decodeText(readFile(configured, maxBytes));
}

void saveFile(const QString &configured, QByteArrayView content)
{
    writeFile(nativePath(configured), content);
}

void saveExactFile(const QString &configured, QByteArrayView content)
{
    writeFile(exactPath(configured), content);
}

void savePrivateFile(const QString &configured, QByteArrayView content)
{
    writeFile(nativePath(configured), content, Readers::OwnerAlone);
}

void saveTextFile(const QString &configured, const QString &text)
{
    saveFile(configured, text.toUtf8());
}

void copyFile(const QString &source, const QString &destination)
{
    saveExactFile(destination, readFile(source, std::numeric_limits<int>::max()));
}

void CopyFileQuiet(const QString &source, const QString &destination)
{
    try {
        copyFile(source, destination);
    } catch (const Error &) {
        // The caller finds out by reading the destination.
    }
}

class FileWriter::File : public WrittenFile
{
public:
    using WrittenFile::WrittenFile;
};

FileWriter::FileWriter(const QString &configured)
    : m_file(std::make_unique<File>(exactPath(configured)))
{}

FileWriter::~FileWriter() = default;

void FileWriter::write(QByteArrayView bytes)
{
    m_file->write(bytes);
}

QString FileWriter::temporaryPath() const
{
    return m_file->temporary();
}

void FileWriter::commit()
{
    m_file->commit();
}
