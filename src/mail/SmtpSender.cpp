#include "mail/SmtpSender.h"

#include "base/Error.h"
#include "base/Files.h"
#include "mail/SmtpReply.h"

#include <QUrl>

#include <algorithm>
#include <array>
#include <cstring>
#include <curl/curl.h>

namespace {

constexpr long mostSeconds = 15 * 60; ///< of one delivery
constexpr int pollMilliseconds = 100;

/// Once for the process, before the first thread uses it.
void startLibrary()
{
    static const CURLcode result = ::curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK)
        throw Error(OutOfMemory, QString::fromUtf8(::curl_easy_strerror(result)));
}

struct ListDeleter
{
    void operator()(curl_slist *list) const { ::curl_slist_free_all(list); }
};

QByteArray urlOf(const MailServer &server)
{
    QByteArray host = QUrl::toAce(server.host);
    if (server.host.contains(u':'))
        host = '[' + server.host.toLatin1() + ']'; // IPv6
    else if (host.isEmpty())
        host = server.host.toLatin1();
    return (server.security == MailSecurity::Tls ? "smtps://" : "smtp://") + host + ':' +
           QByteArray::number(server.port);
}

/// What passes while one message is sent.
struct Transfer
{
    QByteArrayView message;
    qsizetype sent = 0;
    SmtpAttempt::Stage stage = SmtpAttempt::Stage::Connecting;
    QByteArray reply;    ///< of the server, to the last command
    int replyCode = 0;   ///< of its last line
    bool isOver = false; ///< only the farewell follows
    const std::function<void()> *onTalk = nullptr;

    void noteCommand(QByteArrayView line)
    {
        using Stage = SmtpAttempt::Stage;
        isOver = isOver || line.startsWith("QUIT");
        if (isOver)
            return;
        static constexpr std::array<std::pair<QByteArrayView, Stage>, 4> commands = {{
            {"AUTH ", Stage::LoggingIn},
            {"MAIL ", Stage::Sender},
            {"RCPT ", Stage::Recipient},
            {"DATA", Stage::Message},
        }};
        for (const auto &[command, entered] : commands) {
            if (line.startsWith(command))
                stage = entered;
        }
        forgetReply(); // what comes next answers this
    }

    void forgetReply()
    {
        reply.clear();
        replyCode = 0;
    }

    void noteReply(QByteArrayView line)
    {
        if (isOver)
            return;
        constexpr qsizetype mostBytes = 4096;
        if (reply.size() < mostBytes)
            reply += line.first(std::min(line.size(), mostBytes)).toByteArray();
        replyCode = line.first(std::min<qsizetype>(line.size(), 3)).toByteArray().toInt();
    }
};

size_t readMessage(char *buffer, size_t size, size_t count, void *data)
{
    auto &transfer = *static_cast<Transfer *>(data);
    const qsizetype length =
        std::min(static_cast<qsizetype>(size * count), transfer.message.size() - transfer.sent);
    std::memcpy(buffer, transfer.message.data() + transfer.sent, static_cast<size_t>(length));
    transfer.sent += length;
    return static_cast<size_t>(length);
}

/// Follows the talk: libcurl tells neither the stage at which it ended nor the server's words.
int watchTalk(CURL * /*handle*/, curl_infotype type, char *text, size_t size, void *data)
{
    auto &transfer = *static_cast<Transfer *>(data);
    const QByteArrayView line(text, static_cast<qsizetype>(size));
    if (*transfer.onTalk)
        (*transfer.onTalk)();
    if (type == CURLINFO_HEADER_OUT)
        transfer.noteCommand(line);
    else if (type == CURLINFO_DATA_OUT)
        transfer.forgetReply(); // it was to the command
    else if (type == CURLINFO_HEADER_IN)
        transfer.noteReply(line);
    return 0;
}

int seekMessage(void *data, curl_off_t offset, int origin)
{
    if (origin != SEEK_SET)
        return CURL_SEEKFUNC_CANTSEEK;
    static_cast<Transfer *>(data)->sent = static_cast<qsizetype>(offset);
    return CURL_SEEKFUNC_OK;
}

} // namespace

class SmtpSender::Connection
{
public:
    Connection(MailServer server, const std::optional<QString> &secret,
               std::function<bool()> isCancelled, std::function<void()> onTalk)
        : m_server(std::move(server))
        , m_isCancelled(std::move(isCancelled))
        , m_onTalk(std::move(onTalk))
    {
        startLibrary();
        m_easy = ::curl_easy_init();
        m_multi = ::curl_multi_init();
        if (!m_easy || !m_multi) {
            close();
            throw Error(OutOfMemory, QStringLiteral("There is no memory to send mails"));
        }
        setUp(secret);
    }
    ~Connection() { close(); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    Delivery send(const QByteArray &message, const QString &from, const QString &to)
    {
        Transfer transfer;
        transfer.message = message;
        transfer.onTalk = &m_onTalk;
        const std::unique_ptr<curl_slist, ListDeleter> recipients(
            ::curl_slist_append(nullptr, ('<' + to.toLatin1() + '>').constData()));
        std::array<char, CURL_ERROR_SIZE> detail{};
        set(CURLOPT_ERRORBUFFER, detail.data());
        set(CURLOPT_MAIL_FROM, ('<' + from.toLatin1() + '>').constData());
        set(CURLOPT_MAIL_RCPT, recipients.get());
        set(CURLOPT_READDATA, &transfer);
        set(CURLOPT_SEEKDATA, &transfer);
        set(CURLOPT_DEBUGDATA, &transfer);
        set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(message.size()));
        const CURLcode code = perform();
        SmtpAttempt attempt;
        ::curl_easy_getinfo(m_easy, CURLINFO_SSL_VERIFYRESULT, &attempt.verifyResult);
        set(CURLOPT_ERRORBUFFER, nullptr);
        if (code == CURLE_ABORTED_BY_CALLBACK)
            return {Delivery::Outcome::Cancelled, QStringLiteral("Sending was cancelled")};
        attempt.code = code;
        attempt.stage = transfer.stage;
        attempt.reply = QString::fromUtf8(transfer.reply);
        attempt.replyCode = transfer.replyCode;
        attempt.detail =
            QString::fromUtf8(detail[0] != '\0' ? detail.data() : ::curl_easy_strerror(code));
        return deliveryOf(attempt, m_server, to);
    }

private:
    template <typename Value>
    void set(CURLoption option, Value value)
    {
        ::curl_easy_setopt(m_easy, option, value);
    }

    void setUp(const std::optional<QString> &secret)
    {
        set(CURLOPT_URL, urlOf(m_server).constData());
        set(CURLOPT_PROTOCOLS_STR, "smtp,smtps");
        set(CURLOPT_PROXY, "");
        set(CURLOPT_NOSIGNAL, 0L); // it keeps a cut connection from ending the process
        set(CURLOPT_UPLOAD, 1L);
        set(CURLOPT_USE_SSL,
            static_cast<long>(m_server.security == MailSecurity::None ? CURLUSESSL_NONE
                                                                      : CURLUSESSL_ALL));
        set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
        // Windows: an issuer that cannot be asked for what it has revoked, as many of a company's
        // own, is as good as one that has revoked nothing.
        set(CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_REVOKE_BEST_EFFORT));
        if (!m_server.caFile.isEmpty())
            set(CURLOPT_CAINFO, nativePath(m_server.caFile).toUtf8().constData());
        logIn(secret);
        const long seconds = m_server.timeout;
        set(CURLOPT_CONNECTTIMEOUT, seconds);
        set(CURLOPT_SERVER_RESPONSE_TIMEOUT, seconds);
        set(CURLOPT_LOW_SPEED_LIMIT, 1L);
        set(CURLOPT_LOW_SPEED_TIME, seconds);
        set(CURLOPT_TIMEOUT, mostSeconds);
        set(CURLOPT_READFUNCTION, readMessage);
        set(CURLOPT_SEEKFUNCTION, seekMessage);
        set(CURLOPT_NOPROGRESS, 0L);
        set(CURLOPT_XFERINFOFUNCTION, watchProgress);
        set(CURLOPT_XFERINFODATA, this);
        set(CURLOPT_DEBUGFUNCTION, watchTalk);
        set(CURLOPT_VERBOSE, 1L);
    }

    void logIn(const std::optional<QString> &secret)
    {
        if (m_server.authentication == MailAuthentication::None)
            return;
        const QByteArray bytes = secret.value_or(QString()).toUtf8();
        set(CURLOPT_USERNAME, m_server.user.toUtf8().constData());
        if (m_server.authentication == MailAuthentication::XOAuth2) {
            set(CURLOPT_LOGIN_OPTIONS, "AUTH=XOAUTH2");
            set(CURLOPT_XOAUTH2_BEARER, bytes.constData());
        } else {
            set(CURLOPT_PASSWORD, bytes.constData());
        }
    }

    /// How the transfer ended. It is never taken away from libcurl before that: it would end the
    /// message properly, and wait for the server's word on what may be half of it.
    CURLcode perform()
    {
        ::curl_multi_add_handle(m_multi, m_easy);
        std::optional<CURLcode> result;
        while (!result) {
            int running = 0;
            CURLMcode step = ::curl_multi_perform(m_multi, &running);
            result = finished();
            if (!result && step == CURLM_OK)
                step = ::curl_multi_poll(m_multi, nullptr, 0, pollMilliseconds, nullptr);
            if (!result && step != CURLM_OK)
                result = CURLE_OUT_OF_MEMORY; // its only cause here
        }
        if (result == CURLE_ABORTED_BY_CALLBACK)
            set(CURLOPT_QUICK_EXIT, 1L); // a look-up of the name may still hang
        if (result != CURLE_OK)
            cutConnection();
        ::curl_multi_remove_handle(m_multi, m_easy);
        return *result;
    }

    /// Makes a connection useless after a failure: libcurl would take leave of the server, and wait
    /// for an answer.
    void cutConnection()
    {
        constexpr int bothWays = 2; // the systems have several names for it
        curl_socket_t socket = CURL_SOCKET_BAD;
        ::curl_easy_getinfo(m_easy, CURLINFO_ACTIVESOCKET, &socket);
        if (socket != CURL_SOCKET_BAD)
            ::shutdown(socket, bothWays);
    }

    /// Ends a transfer that is cancelled.
    static int watchProgress(void *self, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
    {
        return static_cast<Connection *>(self)->m_isCancelled() ? 1 : 0;
    }

    std::optional<CURLcode> finished()
    {
        int left = 0;
        while (const CURLMsg *message = ::curl_multi_info_read(m_multi, &left)) {
            if (message->msg == CURLMSG_DONE)
                return message->data.result;
        }
        return std::nullopt;
    }

    void close()
    {
        if (m_easy)
            ::curl_easy_cleanup(m_easy);
        if (m_multi)
            ::curl_multi_cleanup(m_multi);
    }

    MailServer m_server;
    std::function<bool()> m_isCancelled;
    std::function<void()> m_onTalk;
    CURL *m_easy = nullptr;
    CURLM *m_multi = nullptr;
};

SmtpSender::SmtpSender(MailServer server, const std::optional<QString> &secret,
                       std::function<bool()> isCancelled, std::function<void()> onTalk)
    : m_connection(std::make_unique<Connection>(std::move(server), secret, std::move(isCancelled),
                                                std::move(onTalk)))
{}

SmtpSender::~SmtpSender() = default;

Delivery SmtpSender::send(const QByteArray &message, const QString &from, const QString &to)
{
    return m_connection->send(message, from, to);
}
