#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

/// The Debian package: made, looked at, installed into a root of its own, run there by an ordinary
/// user with an empty home, and removed again.
class TestPackage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void hasNoLintErrors();
    void bringsAHardenedProgram();
    void bringsValidUnits();
    void installsRunsAndLeaves();

private:
    struct Ended
    {
        int status = -1;
        QString output; ///< both streams
    };
    static Ended run(const QString &program, const QStringList &arguments,
                     const QString &folder = QString())
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        if (!folder.isEmpty())
            process.setWorkingDirectory(folder);
        process.start(program, arguments);
        const bool ended = process.waitForFinished(240'000);
        const QString output = QString::fromUtf8(process.readAll());
        return ended && process.exitStatus() == QProcess::NormalExit
                   ? Ended{process.exitCode(), output}
                   : Ended{-1, output + process.errorString()};
    }
    QString path(const QString &name) const { return m_folder.filePath(name); }
    QStringList files() const
    {
        return run("find", {path("root"), "-not", "-path", path("root/var*"), "-type", "f"})
            .output.split(u'\n', Qt::SkipEmptyParts);
    }
    /// As the user "nobody" where the tests run as root.
    QStringList asOrdinaryUser(const QStringList &command) const
    {
        const QStringList words{"env", "-i", "PATH=/usr/bin:/bin", "HOME=" + path("home")};
        return (::geteuid() == 0
                    ? QStringList{"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"}
                    : QStringList()) +
               words + command;
    }

    QTemporaryDir m_folder;
    QString m_package;
};

void TestPackage::initTestCase()
{
    qputenv("XDG_RUNTIME_DIR", m_folder.path().toLocal8Bit()); // systemd-analyze asks for one
    const Ended packed = run(VANTREL_CPACK, {"-G", "DEB", "--config",
                                             QStringLiteral(VANTREL_BUILD "/CPackConfig.cmake"),
                                             "-B", path("package")});
    QVERIFY2(packed.status == 0, qPrintable(packed.output));
    const QStringList packages = QDir(path("package")).entryList({"vantrel-grapher_*.deb"});
    QCOMPARE(packages.size(), 1);
    m_package = path("package/" + packages.first());
}

void TestPackage::hasNoLintErrors()
{
    QStringList arguments{"--fail-on", "error", m_package};
    if (::geteuid() == 0)
        arguments.prepend("--allow-root");
    const Ended lint = run("lintian", arguments);
    QVERIFY2(lint.status == 0 && !lint.output.contains("E: "), qPrintable(lint.output));
}

void TestPackage::bringsAHardenedProgram()
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

void TestPackage::bringsValidUnits()
{
    const QString unit = path("unpacked/usr/lib/systemd/user/VantrelGraphTool.");
    // The program that the service names is looked up in the system's own folders, where this
    // machine does not have it.
    QCOMPARE(run("grep", {"-c", "^ExecStart=VantrelGrapher /AUTO$", unit + "service"}).output,
             "1\n");
    run("sed", {"-i", "s|^ExecStart=|&" + path("unpacked/usr/bin/") + '|', unit + "service"});
    const Ended verified =
        run("systemd-analyze", {"verify", "--user", "--man=no", unit + "service", unit + "timer"});
    QVERIFY2(verified.status == 0 && !verified.output.contains("VantrelGraphTool"),
             qPrintable(verified.output));
}

void TestPackage::installsRunsAndLeaves()
{
    for (const char *folder : {"root/var/lib/dpkg/info", "root/var/lib/dpkg/updates",
                               "root/var/lib/dpkg/triggers", "home", "data/reports"})
        QVERIFY(QDir().mkpath(path(folder)));
    QFile status(path("root/var/lib/dpkg/status"));
    QVERIFY(status.open(QIODevice::WriteOnly));
    status.close();
    const QStringList dpkg{"--root=" + path("root"), "--force-depends", "--force-not-root",
                           "--log=" + path("dpkg.log")};
    const Ended installed = run("dpkg", dpkg + QStringList{"-i", m_package});
    QVERIFY2(installed.status == 0, qPrintable(installed.output));
    const QString program = path("root/usr/bin/VantrelGrapher");
    QVERIFY(QFile::exists(program));
    QVERIFY(QFile::exists(path("root/usr/share/man/man1/VantrelGrapher.1.gz")));
    QVERIFY(QFile::exists(path("root/usr/share/applications/vantrel-grapher.desktop")));

    // An ordinary user with an empty home of their own.
    for (const QString &folder : {path(QString()), path("home")})
        QVERIFY(QFile::setPermissions(folder, QFile::permissions(folder) | QFile::ReadOther |
                                                  QFile::ExeOther | QFile::WriteOther));
    const auto runThere = [&](const QStringList &arguments) {
        const QStringList words = asOrdinaryUser(QStringList{program} + arguments);
        return run(words.first(), words.mid(1), path("home"));
    };
    const Ended listed = runThere({"--list"});
    QVERIFY2(listed.status == 0, qPrintable(listed.output));
    const QString home = path("home/.local/share/VantrelGrapher/");
    QVERIFY(QFile::exists(home + "VTRGConfigV6.FAC"));
    QCOMPARE(
        run(VANTREL_DEMO, {path("data/VTRGData.MDB"), "--devices", "12", "--items", "3", "--days",
                           "1", "--interval", "900", "--reports", path("data/reports")})
            .status,
        0);
    for (const QString &name : QDir(path("data/reports")).entryList(QDir::Files)) {
        QFile::remove(home + "Config/" + name);
        QVERIFY(QFile::copy(path("data/reports/") + name, home + "Config/" + name));
        QVERIFY(QFile::setPermissions(home + "Config/" + name,
                                      QFile::ReadOther | QFile::ReadOwner | QFile::WriteOwner));
    }
    const Ended ran = runThere({"--dbpath", path("data"), "/AUTO"});
    QVERIFY2(ran.status == 0, qPrintable(ran.output.right(2000)));
    QVERIFY(QFile::exists(home + "Reports/REPORTS.HTM"));
    const Ended history = runThere({"--history"});
    QVERIFY2(history.output.contains(" reports, "), qPrintable(history.output));
    QVERIFY2(!history.output.contains("failed"), qPrintable(history.output));

    const Ended removed = run("dpkg", dpkg + QStringList{"-P", "vantrel-grapher"});
    QVERIFY2(removed.status == 0, qPrintable(removed.output));
    QCOMPARE(files(), QStringList());
    QVERIFY(QFile::exists(home + "Reports/REPORTS.HTM"));
}

QTEST_GUILESS_MAIN(TestPackage)
#include "tst_package.moc"
