#pragma once

#include "mail/MailSettings.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <optional>

/// How the delivery of one message to one recipient ended.
struct Delivery
{
    enum class Outcome {
        Sent,
        Refused,  ///< by the server, for good: another try would end the same
        Failed,   ///< another try may succeed. Rarely the message has been taken all the same: when
                  ///< the connection breaks before the server confirms
        Unusable, ///< so is the server at present: other messages would fare alike
        Cancelled
    };
    Outcome outcome = Outcome::Failed;
    QString text; ///< what is wrong and what to do, in one line; never has the secret

    bool isSent() const { return outcome == Outcome::Sent; }
};

/// A mail server, and the connection to it, which lasts for several messages. Encryption that the
/// settings ask for is never done without, and the server has to prove its name. Used on one
/// thread; several may have one each.
class SmtpSender
{
public:
    /// `isCancelled` is asked at least ten times a second; `onTalk`, if given, is called whenever
    /// something passes, which is when the time-out starts anew. Nothing connects yet.
    SmtpSender(MailServer server, const std::optional<QString> &secret,
               std::function<bool()> isCancelled, std::function<void()> onTalk = {});
    ~SmtpSender();
    SmtpSender(const SmtpSender &) = delete;
    SmtpSender &operator=(const SmtpSender &) = delete;

    /// Hands a message of mailMessage() to the server. `from` and `to` are addresses in ASCII.
    /// Takes no longer than the time-out without progress, and 15 minutes in all.
    Delivery send(const QByteArray &message, const QString &from, const QString &to);

private:
    class Connection;
    std::unique_ptr<Connection> m_connection;
};
