#include "mail/SmtpReply.h"

#include "base/OneLine.h"

#include <curl/curl.h>

namespace {

using Stage = SmtpAttempt::Stage;
using Outcome = Delivery::Outcome;

constexpr qsizetype mostReply = 300; ///< characters of a server's answer that are shown

/// ": 550 no such user", for the end of a text.
QString citedReply(const SmtpAttempt &attempt)
{
    if (attempt.replyCode == 0)
        return QString();
    return QLatin1String(": ") + oneLine(attempt.reply).simplified().left(mostReply);
}

QString place(const MailServer &server)
{
    return QStringLiteral("%1, port %2").arg(server.host).arg(server.port);
}

/// Why a certificate is not trusted. OpenSSL tells by numbers, Windows by names.
QString certificateFault(const SmtpAttempt &attempt, const MailServer &server)
{
    constexpr long notYetValid = 9;
    constexpr long expired = 10;
    constexpr long selfSigned = 18;
    constexpr long noIssuer = 20;
    const auto says = [&attempt](const char *text) {
        return attempt.detail.contains(QLatin1String(text), Qt::CaseInsensitive);
    };
    if (attempt.verifyResult == expired || says("expired") || says("NOT_TIME_VALID"))
        return QStringLiteral("The certificate of %1 has expired: the server needs a new one, or "
                              "this machine's clock is wrong")
            .arg(server.host);
    if (attempt.verifyResult == notYetValid || says("not yet valid"))
        return QStringLiteral("The certificate of %1 is not valid yet: this machine's clock is "
                              "probably wrong")
            .arg(server.host);
    if (says("does not match") || says("no alternative certificate") || says("WRONG_PRINCIPAL") ||
        says("failed to match"))
        return QStringLiteral(
                   "The certificate of the server is not one for '%1': enter the name that "
                   "the certificate has as the server")
            .arg(server.host);
    if ((attempt.verifyResult >= selfSigned && attempt.verifyResult <= noIssuer + 1) ||
        says("UNTRUSTED_ROOT") || says("PARTIAL_CHAIN") || says("unable to get local issuer") ||
        says("self"))
        return QStringLiteral(
                   "The certificate of %1 comes from an issuer that is not trusted here: add "
                   "the issuer's certificate to the system, or name its file (CaFile)")
            .arg(server.host);
    return QStringLiteral("The certificate of %1 is not trusted (%2)")
        .arg(server.host, attempt.detail);
}

QString loginFault(const SmtpAttempt &attempt, const MailServer &server)
{
    if (attempt.replyCode < 400)
        return QStringLiteral(
                   "%1 offers no way to log in that is understood here%2; another port or "
                   "Auth may do")
            .arg(place(server), citedReply(attempt));
    return server.authentication == MailAuthentication::XOAuth2
               ? QStringLiteral(
                     "%1 does not accept the access token of '%2': get a new one, they expire%3")
                     .arg(server.host, server.user, citedReply(attempt))
               : QStringLiteral(
                     "%1 does not accept the user '%2' with this password: check both; some "
                     "providers want a password for this program alone%3")
                     .arg(server.host, server.user, citedReply(attempt));
}

QString timeoutFault(const SmtpAttempt &attempt, const MailServer &server)
{
    const QString text = QStringLiteral("%1 did not answer within %2 seconds")
                             .arg(place(server))
                             .arg(server.timeout);
    if (attempt.stage == Stage::Connecting && server.port == 465 &&
        server.security != MailSecurity::Tls)
        return text + QStringLiteral("; port 465 usually wants TLS");
    return text;
}

/// What keeps a connection from being made, or ends it.
QString connectionFault(const SmtpAttempt &attempt, const MailServer &server)
{
    switch (attempt.code) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return QStringLiteral("There is no server '%1': check its name, and the network")
            .arg(server.host);
    case CURLE_COULDNT_CONNECT:
        return QStringLiteral("Nothing answers at %1: check the port, and firewalls")
            .arg(place(server));
    case CURLE_OPERATION_TIMEDOUT:
        return timeoutFault(attempt, server);
    case CURLE_USE_SSL_FAILED:
        return QStringLiteral(
                   "%1 offers no encryption (STARTTLS), and nothing was sent without it: try "
                   "TLS, usually on port 465")
            .arg(place(server));
    case CURLE_SSL_CONNECT_ERROR:
        return QStringLiteral("%1 and this machine agree on no encryption (%2)%3")
            .arg(place(server), attempt.detail,
                 server.security == MailSecurity::Tls
                     ? QStringLiteral("; if the server wants STARTTLS, its port is usually 587")
                     : QString());
    case CURLE_PEER_FAILED_VERIFICATION:
        return certificateFault(attempt, server);
    case CURLE_SSL_CACERT_BADFILE:
        return QStringLiteral("The certificates in '%1' (CaFile) cannot be read")
            .arg(server.caFile);
    case CURLE_LOGIN_DENIED:
        return loginFault(attempt, server);
    default:
        break;
    }
    return QStringLiteral("The connection to %1 broke off (%2)%3")
        .arg(place(server), attempt.detail, citedReply(attempt));
}

} // namespace

Delivery deliveryOf(const SmtpAttempt &attempt, const MailServer &server, const QString &recipient)
{
    if (attempt.code == CURLE_OK)
        return {Outcome::Sent, QString()};
    const bool isRefused = attempt.replyCode >= 500 && attempt.replyCode < 600;
    const bool isAnswer = attempt.replyCode >= 400 && attempt.code != CURLE_OPERATION_TIMEDOUT;
    if (isAnswer && attempt.stage == Stage::Recipient)
        return {isRefused ? Outcome::Refused : Outcome::Failed,
                QStringLiteral("%1 takes no mail for %2%3%4")
                    .arg(server.host, recipient,
                         isRefused ? QString() : QStringLiteral(" at present"),
                         citedReply(attempt))};
    if (isAnswer && attempt.stage == Stage::Message)
        return {isRefused ? Outcome::Refused : Outcome::Failed,
                QStringLiteral("%1 does not take this message%2%3")
                    .arg(server.host, isRefused ? QString() : QStringLiteral(" at present"),
                         citedReply(attempt))};
    if (isAnswer && attempt.stage == Stage::Sender) // a matter of the settings: they may be changed
        return {
            Outcome::Unusable,
            QStringLiteral("%1 takes no mail from '%2': check the sender, and whether the server "
                           "wants a user and a password%3")
                .arg(server.host, server.from, citedReply(attempt))};
    if (attempt.stage == Stage::Message)
        return {Outcome::Failed, connectionFault(attempt, server) +
                                     QStringLiteral(" before it confirmed the message")};
    return {Outcome::Unusable, connectionFault(attempt, server)};
}
