#pragma once

#include "platform/InstanceLock.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

/// One message to one recipient, from the moment in which it is due until the server has taken or
/// refused it, or the tool gives it up.
struct OutboxEntry
{
    QString name;    ///< of its file, without a folder
    QString message; ///< the name of the message's file, which other recipients may share
    QString messageId;
    QString from; ///< addresses in ASCII
    QString recipient;
    QString subject;
    qint64 since = 0;   ///< instants; of the message's making
    qint64 lastTry = 0; ///< 0: none yet
    int tries = 0;
    QString error = {};    ///< why the last try failed
    bool isTrying = false; ///< a try has begun, and its end is not on file
};

inline constexpr qint64 outboxPatience = 48 * 3'600'000; ///< milliseconds: then a mail is given up

/// The mails that wait: a folder with a file for each message, and one for each of its recipients.
///
/// The file of a recipient is there from before the first try until after the last one, and its
/// removal is all that a delivery leaves behind: that needs no room on the disk, and is done at
/// once or not at all. A process that is killed between the server's confirmation and the removal
/// leaves a mail that has arrived and still waits. It is sent again, since who subscribes to
/// reports would rather have one twice than none; its Message-ID stays, by which servers and mail
/// programs drop a second copy.
class Outbox
{
public:
    /// `folder` ends in a separator.
    explicit Outbox(QString folder);

    /// All that waits, the oldest first. A damaged file is left out, and told in `faults` if given.
    std::vector<OutboxEntry> entries(QStringList *faults = nullptr) const;

    /// Makes sure that this process alone changes the outbox until the object ends; waits at most
    /// half a minute for another one, or until `isCancelled`. Throws Error.
    template <typename IsCancelled>
    void lock(const IsCancelled &isCancelled)
    {
        makeFolder();
        for (int tenths = 300; !m_lock.tryLock(); --tenths) {
            if (tenths == 0 || isCancelled())
                throwLocked();
            waitShortly();
        }
    }

    // Under the lock; all throw Error.

    /// Adds a message for its recipients. One of the same name is replaced.
    void add(const std::vector<OutboxEntry> &entries, const QByteArray &message);
    void update(const OutboxEntry &entry);
    /// Removes a recipient, and with the last one the message.
    void remove(const OutboxEntry &entry);
    QByteArray message(const OutboxEntry &entry) const;

    /// Removes messages that have lost all recipients, as killed processes leave them.
    void removeLeftovers();

private:
    void makeFolder() const;
    static void waitShortly();
    [[noreturn]] void throwLocked() const;
    void removeMessage(const QString &name) const;

    QString m_folder;
    platform::InstanceLock m_lock;
};
