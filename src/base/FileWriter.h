#pragma once

#include <QByteArrayView>
#include <QString>

#include <memory>

/// A file that is written bit by bit, because it would not fit into memory; else as saveFile: the
/// bytes go to a temporary file beside the target, and replace it with commit(). Used by one thread
/// at a time.
class FileWriter
{
public:
    /// Under exactly this name (exactPath). Throws Error that names the file.
    explicit FileWriter(const QString &configured);
    /// Without a commit() nothing is left, and an old file stays as it was.
    ~FileWriter();
    FileWriter(const FileWriter &) = delete;
    FileWriter &operator=(const FileWriter &) = delete;

    /// Appends some bytes. Throws Error.
    void write(QByteArrayView bytes);

    /// The temporary file, for those who have to read again what they wrote.
    QString temporaryPath() const;

    /// Flushes and syncs what was written, and puts it in the target's place. Throws Error. Once.
    void commit();

private:
    class File;
    std::unique_ptr<File> m_file;
};
