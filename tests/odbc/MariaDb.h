#pragma once

#include "Sockets.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>
#include <sys/prctl.h>

/// A MariaDB server of the test's own: on loopback, in a temporary folder, with the account
/// "grapher". Whatever keeps it from running throws, which fails the test. The server ends with the
/// object.
class MariaDb
{
public:
    /// The password holds what connection texts have to quote.
    static QString password() { return QStringLiteral("s3;c}r=et"); }

    /// Starts it and runs statements, one a line, as its administrator.
    explicit MariaDb(const QStringList &statements)
        : m_port(freePort())
    {
        const QStringList common = {
            QStringLiteral("--no-defaults"), QStringLiteral("--datadir=") + path("data"),
            QStringLiteral("--skip-innodb"), QStringLiteral("--default-storage-engine=Aria"),
            QStringLiteral("--user=") + userName()};
        install(common);
        QFile file(path("init.sql"));
        if (!file.open(QIODevice::WriteOnly))
            throw std::runtime_error("cannot write init.sql");
        file.write((account() + statements).join(u'\n').toUtf8() + '\n');
        file.close();
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
    static QString userName() { return qEnvironmentVariable("USER", QStringLiteral("root")); }

    static QStringList account()
    {
        return {
            QStringLiteral("SET NAMES utf8mb4;"),
            QStringLiteral("CREATE DATABASE monitoring CHARACTER SET utf8mb4;"),
            QStringLiteral("CREATE USER 'grapher'@'127.0.0.1' IDENTIFIED BY '%1';").arg(password()),
            QStringLiteral("GRANT SELECT, EXECUTE ON monitoring.* TO 'grapher'@'127.0.0.1';"),
            QStringLiteral("USE monitoring;")};
    }

    void install(QStringList arguments)
    {
        QProcess installer;
        installer.setProcessChannelMode(QProcess::MergedChannels);
        arguments += {QStringLiteral("--auth-root-authentication-method=normal"),
                      QStringLiteral("--skip-test-db")};
        installer.start(QStringLiteral("mariadb-install-db"), arguments);
        if (!installer.waitForStarted() || !installer.waitForFinished(120'000) ||
            installer.exitCode() != 0)
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
        m_server.start(QStringLiteral("/usr/sbin/mariadbd"),
                       common + QStringList{QStringLiteral("--bind-address=127.0.0.1"),
                                            QStringLiteral("--port=%1").arg(m_port),
                                            QStringLiteral("--socket=") + path("socket"),
                                            QStringLiteral("--pid-file=") + path("pid"),
                                            QStringLiteral("--skip-name-resolve"),
                                            QStringLiteral("--init-file=") + path("init.sql")});
        QElapsedTimer timer;
        timer.start();
        QByteArray log;
        while (!log.contains("ready for connections")) {
            QThread::msleep(20);
            QFile file(path("server.log"));
            if (file.open(QIODevice::ReadOnly))
                log = file.readAll();
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
