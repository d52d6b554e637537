#include "mail/Outbox.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Paths.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <chrono>
#include <thread>

namespace {

constexpr qint64 mostEntryBytes = 64 * 1024;
constexpr qint64 mostMessageBytes = 256 * 1024 * 1024;

const QString entryEnding = QStringLiteral(".json");
const QString messageEnding = QStringLiteral(".eml");

QByteArray jsonOf(const OutboxEntry &entry)
{
    return QJsonDocument(QJsonObject{
                             {QStringLiteral("message"), entry.message},
                             {QStringLiteral("messageId"), entry.messageId},
                             {QStringLiteral("from"), entry.from},
                             {QStringLiteral("to"), entry.recipient},
                             {QStringLiteral("subject"), entry.subject},
                             {QStringLiteral("since"), entry.since},
                             {QStringLiteral("lastTry"), entry.lastTry},
                             {QStringLiteral("tries"), entry.tries},
                             {QStringLiteral("error"), entry.error},
                             {QStringLiteral("trying"), entry.isTrying},
                         })
        .toJson();
}

/// Throws Error(InvalidFileFormat) when a needed value is missing.
OutboxEntry entryOf(const QString &name, const QJsonObject &object)
{
    OutboxEntry entry;
    entry.name = name;
    entry.message = object[QLatin1String("message")].toString();
    entry.messageId = object[QLatin1String("messageId")].toString();
    entry.from = object[QLatin1String("from")].toString();
    entry.recipient = object[QLatin1String("to")].toString();
    entry.subject = object[QLatin1String("subject")].toString();
    entry.since = object[QLatin1String("since")].toInteger();
    entry.lastTry = object[QLatin1String("lastTry")].toInteger();
    entry.tries = object[QLatin1String("tries")].toInt();
    entry.error = object[QLatin1String("error")].toString();
    entry.isTrying = object[QLatin1String("trying")].toBool();
    const bool isWhole = !entry.recipient.isEmpty() && !entry.from.isEmpty() && entry.since > 0 &&
                         entry.message.endsWith(messageEnding) && !entry.message.contains(u'/') &&
                         !entry.message.contains(u'\\');
    if (!isWhole)
        throw Error(InvalidFileFormat, QStringLiteral("it is damaged"));
    return entry;
}

void removeFile(const QString &path)
{
    QFile file(path);
    if (file.exists() && !file.remove())
        throw Error(PermissionDenied,
                    QStringLiteral("Cannot remove '%1': %2").arg(path, file.errorString()));
}

} // namespace

Outbox::Outbox(QString folder)
    : m_folder(nativePath(folder))
    , m_lock(m_folder + QLatin1String("outbox.lock"))
{}

void Outbox::makeFolder() const
{
    QString message;
    if (const int number = EnsureFolder(m_folder, message))
        throw Error(number, message);
}

void Outbox::waitShortly()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

void Outbox::throwLocked() const
{
    throw Error(PermissionDenied,
                QStringLiteral("Another process is sending mails from '%1'").arg(m_folder));
}

std::vector<OutboxEntry> Outbox::entries(QStringList *faults) const
{
    std::vector<OutboxEntry> found;
    const QStringList names =
        QDir(m_folder).entryList({u'*' + entryEnding}, QDir::Files, QDir::Name);
    for (const QString &name : names) {
        try {
            const QByteArray bytes = readFile(m_folder + name, mostEntryBytes);
            found.push_back(entryOf(name, QJsonDocument::fromJson(bytes).object()));
        } catch (const Error &error) {
            if (faults)
                faults->append(QStringLiteral("The mail in '%1' cannot be read: %2")
                                   .arg(m_folder + name, error.description));
        }
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const OutboxEntry &a, const OutboxEntry &b) { return a.since < b.since; });
    return found;
}

void Outbox::add(const std::vector<OutboxEntry> &entries, const QByteArray &message)
{
    try {
        savePrivateFile(m_folder + entries.front().message, message);
        for (const OutboxEntry &entry : entries)
            update(entry);
    } catch (const Error &) {
        for (const OutboxEntry &entry : entries)
            QFile::remove(m_folder + entry.name);
        QFile::remove(m_folder + entries.front().message);
        throw;
    }
}

void Outbox::update(const OutboxEntry &entry)
{
    savePrivateFile(m_folder + entry.name, jsonOf(entry));
}

void Outbox::remove(const OutboxEntry &entry)
{
    removeFile(m_folder + entry.name);
    removeMessage(entry.message);
}

QByteArray Outbox::message(const OutboxEntry &entry) const
{
    return readFile(m_folder + entry.message, mostMessageBytes);
}

void Outbox::removeMessage(const QString &name) const
{
    const QString stem = name.chopped(messageEnding.size());
    if (QDir(m_folder).entryList({stem + u'*' + entryEnding}, QDir::Files).isEmpty())
        QFile::remove(m_folder + name); // one that stays is removed as a leftover
}

void Outbox::removeLeftovers()
{
    const QStringList messages = QDir(m_folder).entryList({u'*' + messageEnding}, QDir::Files);
    for (const QString &name : messages)
        removeMessage(name);
}
