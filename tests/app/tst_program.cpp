#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>
#include <vector>

/// The program as its users start it: a process, its output and its exit status.
class TestProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void endsWithTheRightStatus_data();
    void endsWithTheRightStatus();
    void fillsAHomeAndRunsWhatIsDue();
    void givesWayToAnotherInstance();
    void runsOnceWhereManyStart();
    void leavesTheFieldToTheLock();
    void cancelsOnASignal();
    void endsAtOnceOnASecondSignal_data();
    void endsAtOnceOnASecondSignal();
    void showsALiveLineOnATerminal();
    void registersWithTheFoldersGiven();

private:
    struct Ended
    {
        int status = -1;
        QString output;
        QString errors;
    };
    Ended run(const QStringList &arguments)
    {
        QProcess process;
        process.start(QStringLiteral(VANTREL_PROGRAM), arguments);
        if (!process.waitForFinished(120'000) || process.exitStatus() != QProcess::NormalExit)
            return {-1, QString::fromUtf8(process.readAllStandardOutput()), process.errorString()};
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }
    /// Whether a process no longer catches a signal: its handler has run.
    static bool handled(pid_t process, int number)
    {
        QFile file(QStringLiteral("/proc/%1/status").arg(process));
        if (!file.open(QIODevice::ReadOnly))
            return true; // it has ended
        const QByteArray text = file.readAll();
        const qsizetype at = text.indexOf("SigCgt:");
        const quint64 caught = text.mid(at + 7, 20).trimmed().toULongLong(nullptr, 16);
        return at < 0 || (caught & (quint64(1) << (number - 1))) == 0;
    }
    QString home(const QString &name) const { return m_folder.filePath(name); }
    /// A home with demonstration reports that are due and a database of two days.
    void makeSite(const QString &name, int devices)
    {
        QCOMPARE(run({QStringLiteral("--home"), home(name), QStringLiteral("--list")}).status, 0);
        QVERIFY(QDir().mkpath(home(name) + QLatin1String("/VTRDataRoot")));
        const int status = QProcess::execute(
            QStringLiteral(VANTREL_DEMO),
            {home(name) + QLatin1String("/VTRDataRoot/VTRGData.MDB"), QStringLiteral("--devices"),
             QString::number(devices), QStringLiteral("--items"), QStringLiteral("6"),
             QStringLiteral("--days"), QStringLiteral("2"), QStringLiteral("--interval"),
             QStringLiteral("900"), QStringLiteral("--reports"),
             home(name) + QLatin1String("/Config")});
        QCOMPARE(status, 0);
    }

    QTemporaryDir m_folder;
};

void TestProgram::initTestCase()
{
    // Neither the tester's settings nor the tester's configuration have a say.
    qputenv("XDG_CONFIG_HOME", m_folder.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", m_folder.filePath(QStringLiteral("data")).toLocal8Bit());
    qunsetenv("VANTREL_GRAPHER_HOME");
    qunsetenv("DISPLAY");
    qunsetenv("WAYLAND_DISPLAY");
    qunsetenv("QT_QPA_PLATFORM"); // the program's own choice
}

void TestProgram::endsWithTheRightStatus_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("says");

    const QString empty = home(QStringLiteral("empty"));
    const QString bad = home(QStringLiteral("bad"));
    QVERIFY(QDir().mkpath(bad));
    QFile file(bad + QLatin1String("/VTRGConfigV6.XML"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<VTRGRAPHER>\n  <oops\n</VTRGRAPHER>");
    file.close();

    const QString odd = home(QStringLiteral("odd"));
    QVERIFY(QDir().mkpath(odd + QLatin1String("/Config")));
    QFile definitions(odd + QLatin1String("/Config/ChartSelection.XML"));
    QVERIFY(definitions.open(QIODevice::WriteOnly));
    definitions.write("<REPORTDEFINITIONS>\n<CUSTOMREPORT>\n</REPORTDEFINITIONS>");
    definitions.close();

    QTest::newRow("help") << QStringList{"--help"} << 0 << "Usage: VantrelGrapher";
    QTest::newRow("version") << QStringList{"--version"} << 0 << "VantrelGrapher 6.";
    QTest::newRow("unknown option")
        << QStringList{"--nonsense"} << 2 << "unknown option --nonsense";
    QTest::newRow("nothing defined") << QStringList{"--home", empty, "/AUTO"} << 0 << "";
    QTest::newRow("no display for the window")
        << QStringList{"--home", empty} << 2 << "there is no display for the window";
    QTest::newRow("unknown report")
        << QStringList{"--home", empty, "--run", "x"} << 2 << "There is no report 'x'";
    QTest::newRow("malformed configuration")
        << QStringList{"--home", bad, "/AUTO"} << 2 << "VTRGConfigV6.XML:3:";
    QTest::newRow("malformed definitions")
        << QStringList{"--home", odd, "/AUTO"} << 2 << "ChartSelection.XML:3:";
}

void TestProgram::endsWithTheRightStatus()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, says);
    const Ended ended = run(arguments);
    QTEST(ended.status, "status");
    QVERIFY2((ended.output + ended.errors).contains(says), qPrintable(ended.output + ended.errors));
}

void TestProgram::fillsAHomeAndRunsWhatIsDue()
{
    const QString name = QStringLiteral("main");
    makeSite(name, 3);
    const Ended ended = run({QStringLiteral("--home"), home(name), QStringLiteral("/AUTO")});
    QVERIFY2(ended.status == 0, qPrintable(ended.output.right(2000) + ended.errors));
    QVERIFY(ended.output.contains(QLatin1String("Database Opened.")));
    QVERIFY(QFile::exists(home(name) + QLatin1String("/Reports/REPORTS.HTM")));

    // The monitoring database was only read, and nothing but it lies in its folder.
    QCOMPARE(QDir(home(name) + QLatin1String("/VTRDataRoot")).entryList(QDir::Files),
             QStringList(QStringLiteral("VTRGData.MDB")));

    const Ended again = run({QStringLiteral("--home"), home(name), QStringLiteral("/AUTO")});
    QCOMPARE(again.status, 0);
    QVERIFY(!again.output.contains(QLatin1String("Generating Report:")));

    const Ended lost = run({QStringLiteral("--home"), home(name), QStringLiteral("--dbpath"),
                            home(QStringLiteral("nowhere")), QStringLiteral("/AUTO")});
    QCOMPARE(lost.status, 1);
    QVERIFY(lost.output.contains(QLatin1String("Error opening database 'Provider=")));
}

void TestProgram::givesWayToAnotherInstance()
{
    const QString name = QStringLiteral("second");
    makeSite(name, 1);
    // Instances are counted by the name of what they run.
    const QString other = m_folder.filePath(QStringLiteral("VantrelGrapher"));
    QVERIFY(QFile::copy(QStringLiteral("/bin/sleep"), other));
    QProcess sleeper;
    sleeper.start(other, {QStringLiteral("60")});
    QVERIFY(sleeper.waitForStarted());
    const Ended ended = run({QStringLiteral("--home"), home(name), QStringLiteral("/AUTO")});
    sleeper.kill();
    sleeper.waitForFinished();
    QCOMPARE(ended.status, 3);
    QVERIFY(!QFile::exists(home(name) + QLatin1String("/Reports")));
}

void TestProgram::cancelsOnASignal()
{
    const QString name = QStringLiteral("cancelled");
    makeSite(name, 40);
    QProcess process;
    process.start(QStringLiteral(VANTREL_PROGRAM),
                  {QStringLiteral("--home"), home(name), QStringLiteral("/AUTO")});
    QByteArray output;
    while (!output.contains("Summarizing ")) {
        QVERIFY2(process.waitForReadyRead(60'000), output.constData());
        output += process.readAllStandardOutput();
    }
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    QVERIFY(process.waitForFinished(60'000));
    output += process.readAllStandardOutput();
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 4);
    QVERIFY(output.contains("Report run cancelled by user."));
    QVERIFY(QDir(home(name)).entryList({QStringLiteral("*.tmp")}).isEmpty());
}

void TestProgram::runsOnceWhereManyStart()
{
    constexpr int many = 20;
    const QString name = QStringLiteral("many");
    makeSite(name, 12);
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int i = 0; i < many; ++i) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->start(QStringLiteral(VANTREL_PROGRAM),
                                {QStringLiteral("--home"), home(name), QStringLiteral("/AUTO")});
    }
    QList<int> statuses;
    int running = 0;
    for (const auto &process : processes) {
        QVERIFY(process->waitForFinished(240'000));
        statuses.append(process->exitCode());
        running += process->readAllStandardOutput().contains("Starting report build.") ? 1 : 0;
    }
    QCOMPARE(running, 1);
    QCOMPARE(statuses.count(0), 1);
    QCOMPARE(statuses.count(3), many - 1);

    const Ended history = run({QStringLiteral("--home"), home(name), QStringLiteral("--history")});
    QVERIFY2(history.output.count(QLatin1String("  scheduled: ")) == 1, qPrintable(history.output));
    QVERIFY2(history.output.contains(QLatin1String("\n    ok         Everything - last month")),
             qPrintable(history.output));
}

/// Another process that has the lock, by whatever name, works in this data folder.
void TestProgram::leavesTheFieldToTheLock()
{
    const QString name = QStringLiteral("locked");
    makeSite(name, 12);
    const QStringList arguments{QStringLiteral("--home"), home(name), QStringLiteral("--run"),
                                QStringLiteral("Everything - last month")};
    const QString folder = home(name) + QLatin1String("/VTRDataRoot/RunHistory");
    QVERIFY(QDir().mkpath(folder));
    QProcess holder;
    holder.start(QStringLiteral("flock"),
                 {QStringLiteral("--no-fork"), folder + QLatin1String("/running.lock"),
                  QStringLiteral("sh"), QStringLiteral("-c"),
                  QStringLiteral("echo held; exec sleep 600")});
    QVERIFY(holder.waitForReadyRead());
    QCOMPARE(run(arguments).status, 3);
    holder.kill();
    QVERIFY(holder.waitForFinished());
    // A record that a wrong clock left keeps nobody out.
    QFile record(folder + QLatin1String("/21000101-000000-000.json"));
    QVERIFY(record.open(QIODevice::WriteOnly));
    record.write(R"({"start": "2100-01-01T00:00:00.000Z", "end": "2100-01-01T00:00:09.000Z"})");
    record.close();
    const Ended ended = run(arguments);
    QVERIFY2(ended.status == 0, qPrintable(ended.output.right(2000) + ended.errors));
}

void TestProgram::endsAtOnceOnASecondSignal_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::newRow("twice the same") << SIGTERM << SIGTERM;
    QTest::newRow("one of each") << SIGINT << SIGTERM;
}

void TestProgram::endsAtOnceOnASecondSignal()
{
    QFETCH(int, first);
    QFETCH(int, second);
    const QString name = QStringLiteral("ended%1").arg(first);
    makeSite(name, 40);
    QProcess process;
    process.start(QStringLiteral(VANTREL_PROGRAM),
                  {QStringLiteral("--home"), home(name), QStringLiteral("/AUTO")});
    QByteArray output;
    while (!output.contains("Generating output...")) {
        QVERIFY2(process.waitForReadyRead(60'000), output.constData());
        output += process.readAllStandardOutput();
    }
    const auto id = static_cast<pid_t>(process.processId());
    ::kill(id, first);
    while (!handled(id, first))
        QTest::qSleep(1);
    ::kill(id, second);
    QVERIFY(process.waitForFinished(60'000));
    if (process.exitStatus() == QProcess::NormalExit)
        QCOMPARE(process.exitCode(), 4); // it was quicker
    // Whole files, or none: every page that is there has its end, every image too.
    QDirIterator files(home(name) + QLatin1String("/Reports"), QDir::Files,
                       QDirIterator::Subdirectories);
    int pages = 0;
    while (files.hasNext()) {
        QFile file(files.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray text = file.readAll();
        if (file.fileName().endsWith(QLatin1String(".HTM"))) {
            QVERIFY2(text.contains("</html>"), qPrintable(file.fileName()));
            ++pages;
        } else if (file.fileName().endsWith(QLatin1String(".PNG"))) {
            QVERIFY2(text.contains("IEND"), qPrintable(file.fileName()));
        }
    }
    QVERIFY(pages > 0);
    // Its record tells that it did not come to its end, or that it was cancelled.
    const Ended history = run({QStringLiteral("--home"), home(name), QStringLiteral("--history")});
    QVERIFY2(history.output.contains(QLatin1String("not finished")) ||
                 history.output.contains(QLatin1String("    cancelled ")),
             qPrintable(history.output));
}

void TestProgram::showsALiveLineOnATerminal()
{
    const QString name = QStringLiteral("terminal");
    makeSite(name, 12);
    const QString command = QStringLiteral("'%1' --home '%2' --run 'Everything - last month'")
                                .arg(QStringLiteral(VANTREL_PROGRAM), home(name));
    const auto output = [&](const QString &terminal) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TERM"), terminal);
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral("script"),
                      {QStringLiteral("--quiet"), QStringLiteral("--return"),
                       QStringLiteral("--command"), command, QStringLiteral("/dev/null")});
        process.waitForFinished(120'000);
        return process.readAll();
    };
    const QByteArray live = output(QStringLiteral("xterm"));
    const QRegularExpression begin(
        QStringLiteral("\\r\\x1b\\[K0 % \\(0 of (\\d+)\\): Everything - last month"));
    const QString all = begin.match(QString::fromUtf8(live)).captured(1);
    QVERIFY2(all.toInt() > 60, live.right(2000).constData());
    QVERIFY(
        live.contains("\x1b[K100 % (" + all.toUtf8() + " of " + all.toUtf8() + "), 0:00 left: "));
    QVERIFY(live.endsWith("\r\x1b[K")); // nothing of it stays
    QVERIFY(!output(QStringLiteral("dumb")).contains('\x1b'));
    const Ended piped = run({QStringLiteral("--home"), home(name), QStringLiteral("--run"),
                             QStringLiteral("Everything - last month")});
    QVERIFY(piped.output.contains(QLatin1String("Summarizing ")));
    QVERIFY(!piped.output.contains(u'\x1b') && !piped.output.contains(QLatin1String(" left: ")));
}

/// With a "systemctl" of the test's own first on PATH, and its own configuration folder.
void TestProgram::registersWithTheFoldersGiven()
{
    const QString bin = home(QStringLiteral("bin"));
    QVERIFY(QDir().mkpath(bin));
    for (const char *program : {"/systemctl", "/crontab"}) {
        QFile file(bin + QLatin1String(program));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n[ $1 = -l ] && { echo no crontab for me >&2; exit 1; }\n"
                   "U=$XDG_CONFIG_HOME/systemd/user; W=$U/timers.target.wants\n"
                   "case $2 in\nenable) mkdir -p $W && ln -sf $U/$4 $W/$4;;\n"
                   "disable) rm -f $W/$4;;\nesac\n");
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", bin.toLocal8Bit() + ':' + path);
    const QString name = home(QStringLiteral("registered here"));
    const auto say = [&](const char *option) {
        return run({QStringLiteral("--home"), name, QStringLiteral("--dbpath"),
                    QStringLiteral("/srv/Monitor"), QLatin1String(option)});
    };
    QCOMPARE(say("--registered").output, QStringLiteral("There is no scheduled task.\n"));
    const Ended added = say("--register");
    QVERIFY2(added.status == 0, qPrintable(added.errors));
    QVERIFY(added.output.startsWith(QLatin1String("Scheduled task has been added.\n")));
    const QString line = QStringLiteral("\"%1\" \"/AUTO\" \"--home\" \"%2\" \"--dbpath\" "
                                        "\"/srv/Monitor\"\n")
                             .arg(QStringLiteral(VANTREL_PROGRAM), name);
    QVERIFY2(say("--registered").output.startsWith(line), qPrintable(say("--registered").output));
    QVERIFY(
        say("--register").output.startsWith(QLatin1String("There is a scheduled task already")));
    QCOMPARE(say("--unregister").output, QStringLiteral("Scheduled task has been removed.\n"));
    QCOMPARE(say("--unregister").output, QStringLiteral("There is no scheduled task.\n"));
    qputenv("PATH", path);
}

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
