#pragma once

#include "mail/SmtpSender.h"

#include <QString>

/// Where an attempt to send stood when it ended.
struct SmtpAttempt
{
    enum class Stage { Connecting, LoggingIn, Sender, Recipient, Message };

    int code = 0; ///< CURLcode
    Stage stage = Stage::Connecting;
    int replyCode = 0;     ///< of the server's last answer; 0: none
    QString reply;         ///< that answer, untrusted
    QString detail;        ///< libcurl's own text
    long verifyResult = 0; ///< why a certificate was not trusted: X509_V_ERR_... of OpenSSL
};

/// What the end of an attempt means, in words that say what to do. Pure.
Delivery deliveryOf(const SmtpAttempt &attempt, const MailServer &server, const QString &recipient);
