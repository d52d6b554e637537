#pragma once

#include "Sockets.h"
#include "base/Files.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

/// A MariaDB server of the test's own: on loopback, in a temporary folder, with the account
/// "grapher". Whatever keeps it from running throws, which fails the test. The server ends with the
/// object.
class MariaDb
{
public:
    /// The password holds what connection texts have to quote.
    static QString password() { return u"s3;c}r=et"_s; }

    /// Starts it and runs statements, one a line, as its administrator.
    explicit MariaDb(const QStringList &statements)
        : m_port(freePort())
    {
        // A server that starts removes the temporary tables in its tmpdir, also those of others.
        const QStringList common = {u"--no-defaults"_s,
                                    u"--datadir="_s + path("data"),
                                    u"--tmpdir="_s + m_folder.path(),
                                    u"--skip-innodb"_s,
                                    u"--default-storage-engine=Aria"_s,
                                    u"--user="_s + userName()};
        install(common);
        saveFile(path("init.sql"), (account() + statements).join(u'\n').toUtf8() + '\n');
        start(common);
    }
    ~MariaDb()
    {
        m_server.terminate();
        if (!m_server.waitForFinished(20'000))
            m_server.kill();
        m_server.waitForFinished(5'000);
    }
    MariaDb(const MariaDb &) = delete;
    MariaDb &operator=(const MariaDb &) = delete;

    std::uint16_t port() const { return m_port; }
    QString path(const char *name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    /// A connection text for the server itself, or for a proxy's port before it.
    QString connectionText(std::uint16_t port) const
    {
        QString quoted = password();
        return QStringLiteral("DRIVER={MariaDB Unicode};SERVER=127.0.0.1;PORT=%1;UID=grapher;"
                              "PWD={%2};DATABASE=monitoring;INITSTMT={SET sql_mode='MSSQL'}")
            .arg(port)
            .arg(quoted.replace(u'}', QLatin1String("}}")));
    }
    QString connectionText() const { return connectionText(m_port); }

private:
    static QString userName() { return qEnvironmentVariable("USER", u"root"_s); }

    static QStringList account()
    {
        return {u"SET NAMES utf8mb4;"_s, u"CREATE DATABASE monitoring CHARACTER SET utf8mb4;"_s,
                u"CREATE USER 'grapher'@'127.0.0.1' IDENTIFIED BY '%1';"_s.arg(password()),
                u"GRANT SELECT, EXECUTE ON monitoring.* TO 'grapher'@'127.0.0.1';"_s,
                u"USE monitoring;"_s};
    }

    void install(QStringList arguments)
    {
        QProcess installer;
        installer.setProcessChannelMode(QProcess::MergedChannels);
        arguments += {u"--auth-root-authentication-method=normal"_s, u"--skip-test-db"_s};
        installer.start(u"mariadb-install-db"_s, arguments);
        if (!installer.waitForFinished(120'000) || installer.exitCode() != 0)
            throw std::runtime_error(
                "mariadb-install-db: " + installer.errorString().toStdString() + '\n' +
                installer.readAll().toStdString());
    }

    void start(const QStringList &common)
    {
        m_server.setProcessChannelMode(QProcess::MergedChannels);
        m_server.setChildProcessModifier(
            [] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); }); // never left over
        m_server.setStandardOutputFile(path("server.log"));
        m_server.start(
            u"/usr/sbin/mariadbd"_s,
            common + QStringList{u"--bind-address=127.0.0.1"_s, u"--port=%1"_s.arg(m_port),
                                 u"--socket="_s + path("socket"), u"--pid-file="_s + path("pid"),
                                 u"--skip-name-resolve"_s, u"--init-file="_s + path("init.sql")});
        QElapsedTimer timer;
        timer.start();
        QByteArray log;
        while (!log.contains("ready for connections")) {
            QThread::msleep(20);
            log = readFile(path("server.log"));
            if (m_server.state() == QProcess::NotRunning || timer.elapsed() > 60'000)
                throw std::runtime_error("mariadbd does not start:\n" + log.toStdString());
        }
        if (log.contains("ERROR:"))
            throw std::runtime_error("mariadbd refuses a statement:\n" + log.toStdString());
    }

    QTemporaryDir m_folder;
    std::uint16_t m_port;
    QProcess m_server;
};
