#include "support/Ended.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

/// The Debian package: made, looked at, installed into a root of its own, run there by an ordinary
/// user with an empty home, and removed again.
class TestPackage : public QObject
{
    Q_OBJECT

    QString path(const QString &name) const { return m_folder.filePath(name); }
    /// As the user "nobody" where the tests run as root, with an empty environment.
    Ended runOrdinarily(const QStringList &command) const
    {
        const QStringList user =
            ::geteuid() == 0
                ? QStringList{"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "env"}
                : QStringList{"env"};
        const QStringList words =
            user + QStringList{"-i", "PATH=/usr/bin:/bin", "HOME=" + path("home")} + command;
        return run(words.first(), words.mid(1), path("home"));
    }

    QTemporaryDir m_folder;
    QString m_package;

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("XDG_RUNTIME_DIR", m_folder.path().toLocal8Bit()); // systemd-analyze asks for one
        const Ended packed = run(VANTREL_CPACK, {"-G", "DEB", "--config",
                                                 QStringLiteral(VANTREL_BUILD "/CPackConfig.cmake"),
                                                 "-B", path("package")});
        QVERIFY2(packed.status == 0, qPrintable(packed.all()));
        const QStringList packages = QDir(path("package")).entryList({"vantrel-grapher_*.deb"});
        QCOMPARE(packages.size(), 1);
        m_package = path("package/" + packages.first());
    }

    void hasNoLintErrors()
    {
        QStringList arguments{"--fail-on", "error", m_package};
        if (::geteuid() == 0)
            arguments.prepend("--allow-root");
        const Ended lint = run("lintian", arguments);
        QVERIFY2(lint.status == 0 && !lint.all().contains("E: "), qPrintable(lint.all()));
    }

    void bringsAHardenedProgram()
    {
        QCOMPARE(run("dpkg", {"-x", m_package, path("unpacked")}).status, 0);
        const QString program = path("unpacked/usr/bin/VantrelGrapher");
        const QString sections = run("readelf", {"-dlW", program}).output;
        for (const char *mark : {"BIND_NOW", "GNU_RELRO", "Position-Independent"})
            QVERIFY2(sections.contains(mark), qPrintable(sections));
        const QString symbols = run("readelf", {"--dyn-syms", "-W", program}).output;
        for (const char *function : {"__stack_chk_fail@", "_chk@"}) // canaries, fortified functions
            QVERIFY2(symbols.contains(function), qPrintable(symbols));
    }

    void bringsValidUnits()
    {
        const QString unit = path("unpacked/usr/lib/systemd/user/VantrelGraphTool.");
        // The program that the service names is looked up in the system's own folders, where this
        // machine does not have it.
        QCOMPARE(run("grep", {"-c", "^ExecStart=VantrelGrapher /AUTO$", unit + "service"}).output,
                 "1\n");
        run("sed", {"-i", "s|^ExecStart=|&" + path("unpacked/usr/bin/") + '|', unit + "service"});
        const Ended verified = run(
            "systemd-analyze", {"verify", "--user", "--man=no", unit + "service", unit + "timer"});
        QVERIFY2(verified.status == 0 && !verified.all().contains("VantrelGraphTool"),
                 qPrintable(verified.all()));
    }

    void installsRunsAndLeaves()
    {
        for (const char *folder : {"root/var/lib/dpkg/info", "root/var/lib/dpkg/updates",
                                   "root/var/lib/dpkg/triggers", "home"})
            QVERIFY(QDir().mkpath(path(folder)));
        QFile status(path("root/var/lib/dpkg/status"));
        QVERIFY(status.open(QIODevice::WriteOnly));
        status.close();
        const QStringList dpkg{"--root=" + path("root"), "--force-depends", "--force-not-root",
                               "--log=" + path("dpkg.log")};
        const Ended installed = run("dpkg", dpkg + QStringList{"-i", m_package});
        QVERIFY2(installed.status == 0, qPrintable(installed.all()));
        const QString program = path("root/usr/bin/VantrelGrapher");
        QVERIFY(QFile::exists(program));
        QVERIFY(QFile::exists(path("root/usr/share/man/man1/VantrelGrapher.1.gz")));
        QVERIFY(QFile::exists(path("root/usr/share/applications/vantrel-grapher.desktop")));

        // An ordinary user with an empty home of their own.
        for (const QString &folder : {path(QString()), path("home")})
            QVERIFY(QFile::setPermissions(folder, QFile::permissions(folder) | QFile::ReadOther |
                                                      QFile::ExeOther | QFile::WriteOther));
        const Ended listed = runOrdinarily({program, "--list"});
        QVERIFY2(listed.status == 0, qPrintable(listed.all()));
        const QString home = path("home/.local/share/VantrelGrapher/");
        QVERIFY(QFile::exists(home + "VTRGConfigV6.FAC"));
        const Ended removed = run("dpkg", dpkg + QStringList{"-P", "vantrel-grapher"});
        QVERIFY2(removed.status == 0, qPrintable(removed.all()));
        QCOMPARE(
            run("find", {path("root"), "-not", "-path", path("root/var*"), "-type", "f"}).output,
            "");
        QVERIFY(QFile::exists(home + "VTRGConfigV6.FAC")); // what is the user's stays
    }
};

QTEST_GUILESS_MAIN(TestPackage)
#include "tst_Package.moc"
