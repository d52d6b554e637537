#pragma once

#include "mail/MailSettings.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <stdexcept>

/// tests/mail/smtp-server.py on a free port of the loopback interface, ended with this object.
class TestServer
{
public:
    explicit TestServer(const QStringList &options = {})
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start("/usr/bin/python3",
                        QStringList{VANTREL_SMTP_SERVER, m_box.path()} + options);
        if (!m_process.waitForReadyRead(60'000))
            throw std::runtime_error("the mail server does not start");
        m_port = m_process.readLine().trimmed().toInt();
    }
    ~TestServer()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /// How to reach it: without encryption and user.
    MailServer settings() const
    {
        MailServer server;
        server.host = "127.0.0.1";
        server.port = m_port;
        server.security = MailSecurity::None;
        server.authentication = MailAuthentication::None;
        server.from = "Vantrel <reports@example.org>";
        server.timeout = 20;
        return server;
    }

    /// The messages that it took, in their order.
    QList<QByteArray> taken() const
    {
        QList<QByteArray> messages;
        for (int i = 1; QFile::exists(path(i)); ++i) {
            QFile file(path(i));
            messages.append(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
        }
        return messages;
    }
    /// "recipient", in the order of the messages.
    QStringList recipients() const
    {
        QStringList found;
        const QList<QByteArray> messages = taken();
        for (const QByteArray &message : messages)
            found.append(line(message, "X-To: "));
        return found;
    }
    /// The rest of the first line that begins so.
    static QString line(const QByteArray &message, const QByteArray &begin)
    {
        const qsizetype at = message.indexOf("\r\n" + begin);
        const qsizetype from = message.startsWith(begin) ? begin.size() : at + 2 + begin.size();
        return at < 0 && !message.startsWith(begin)
                   ? QString()
                   : QString::fromUtf8(message.mid(from, message.indexOf("\r\n", from) - from));
    }
    QString path(int number) const { return m_box.filePath(QString("%1.eml").arg(number)); }

private:
    QTemporaryDir m_box;
    QProcess m_process;
    int m_port = 0;
};

/// A self-signed certificate, with its key, made by openssl.
struct Certificate
{
    QTemporaryDir folder;
    QString file = folder.filePath("cert.pem");
    QString key = folder.filePath("key.pem");

    /// `name`: "IP:127.0.0.1" or "DNS:mail.example"; `end`: "20991231235959Z".
    Certificate(const QString &name, const QString &end)
    {
        const QString script =
            QString("cd '%1' && touch db && cat >conf <<X && "
                    "openssl req -new -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
                    "-keyout key.pem -out csr -subj /CN=server -addext subjectAltName=%2 && "
                    "openssl ca -batch -selfsign -config conf -in csr -keyfile key.pem "
                    "-out cert.pem -startdate 20200101000000Z -enddate %3 -notext\n"
                    "[ca]\ndefault_ca=d\n[d]\ndatabase=db\nnew_certs_dir=.\npolicy=p\n"
                    "default_md=sha256\ncopy_extensions=copy\nrand_serial=yes\n"
                    "[p]\ncommonName=supplied\nX\n")
                .arg(folder.path(), name, end);
        QProcess shell;
        shell.start("/bin/sh", {"-c", script});
        if (!shell.waitForFinished(60'000) || shell.exitCode() != 0)
            throw std::runtime_error(shell.readAllStandardError().toStdString());
    }

    QStringList options() const { return {"--cert", file, "--key", key}; }
};
