#include "demo/PageFile.h"

#include "base/Error.h"
#include "base/FileSystem.h"
#include "base/Files.h"

#include <QDir>
#include <QFileInfo>

#include <atomic>

namespace demo {

namespace {

QString temporaryName(const QString &path)
{
    static std::atomic<unsigned> count = 0;
    return QStringLiteral("%1.%2-%3.tmp")
        .arg(path)
        .arg(platform::processId())
        .arg(count.fetch_add(1));
}

} // namespace

PageFile::PageFile(const QString &path)
    : m_path(nativePath(path))
    , m_file(temporaryName(m_path))
{
    // Pages are large enough; a second buffer would only cost a copy.
    if (m_file.open(QIODevice::ReadWrite | QIODevice::NewOnly | QIODevice::Unbuffered))
        return;
    if (!QFileInfo(m_path).dir().exists())
        throw Error(PathNotFound, QStringLiteral("Path not found: '%1'").arg(m_path));
    fail(QStringLiteral("Cannot write"));
}

PageFile::~PageFile()
{
    if (m_file.isOpen())
        m_file.remove();
}

void PageFile::write(int page, const Page &bytes)
{
    if (!m_file.seek(qint64(page) * pageSize) ||
        m_file.write(reinterpret_cast<const char *>(bytes.data()), pageSize) != pageSize)
        fail(QStringLiteral("Cannot write page %1 of").arg(page));
}

void PageFile::read(int page, Page &bytes)
{
    if (!m_file.seek(qint64(page) * pageSize) ||
        m_file.read(reinterpret_cast<char *>(bytes.data()), pageSize) != pageSize)
        fail(QStringLiteral("Cannot read page %1 of").arg(page));
}

void PageFile::commit()
{
    if (m_file.size() != qint64(m_pages) * pageSize)
        throw Error(DiskFull, QStringLiteral("'%1' has %2 bytes instead of %3 pages")
                                  .arg(m_path)
                                  .arg(m_file.size())
                                  .arg(m_pages));
    m_file.close();
    QString reason;
    if (!platform::replaceFile(m_file.fileName(), m_path, reason)) {
        m_file.remove();
        throw Error(PermissionDenied,
                    QStringLiteral("Cannot replace '%1': %2").arg(m_path, reason));
    }
}

void PageFile::fail(const QString &what) const
{
    const int number = m_file.error() == QFile::ResourceError ? DiskFull : DeviceIO;
    throw Error(number, QStringLiteral("%1 '%2': %3").arg(what, m_path, m_file.errorString()));
}

} // namespace demo
