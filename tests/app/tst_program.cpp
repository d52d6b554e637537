#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

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
    void cancelsOnASignal();

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

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
