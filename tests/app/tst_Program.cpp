#include "support/Ended.h"
#include "support/Rows.h"

#include <QDir>
#include <QDirIterator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

namespace {

Ended run(const QStringList &arguments)
{
    return run(VANTREL_PROGRAM, arguments);
}

void write(const QString &path, const QByteArray &bytes)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

/// Starts a process and waits until it says something; returns all that it has said.
QByteArray startUntil(QProcess &process, const QStringList &arguments, const QByteArray &text)
{
    process.start(VANTREL_PROGRAM, arguments);
    QByteArray output;
    while (!output.contains(text)) {
        if (!process.waitForReadyRead(60'000))
            qFatal("no '%s' in: %s", text.constData(), output.constData());
        output += process.readAllStandardOutput();
    }
    return output;
}

/// Whether a process no longer catches a signal: its handler has run.
bool handled(pid_t process, int number)
{
    QFile file(QString("/proc/%1/status").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return true; // it has ended
    const QByteArray text = file.readAll();
    const qsizetype at = text.indexOf("SigCgt:");
    const quint64 caught = text.mid(at + 7, 20).trimmed().toULongLong(nullptr, 16);
    return at < 0 || (caught & (quint64(1) << (number - 1))) == 0;
}

} // namespace

/// The program as its users start it: a process, its output and its exit status.
class TestProgram : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    const QStringList m_everything = {"--run", "Everything - last month"};

    QString home(const QString &name) const { return m_folder.filePath(name); }
    QStringList in(const QString &name, const QStringList &arguments) const
    {
        return QStringList{"--home", home(name)} + arguments;
    }
    /// A home with demonstration reports that are due and a database of two days.
    void makeSite(const QString &name, int devices)
    {
        QCOMPARE(run(in(name, {"--list"})).status, 0);
        QVERIFY(QDir().mkpath(home(name) + "/VTRDataRoot"));
        QCOMPARE(QProcess::execute(VANTREL_DEMO,
                                   {home(name) + "/VTRDataRoot/VTRGData.MDB", "--devices",
                                    QString::number(devices), "--items", "6", "--days", "2",
                                    "--interval", "900", "--reports", home(name) + "/Config"}),
                 0);
    }

private Q_SLOTS:
    void initTestCase()
    {
        // Neither the tester's settings nor the tester's configuration have a say.
        qputenv("XDG_CONFIG_HOME", home("config").toLocal8Bit());
        qputenv("XDG_DATA_HOME", home("data").toLocal8Bit());
        qunsetenv("VANTREL_GRAPHER_HOME");
        qunsetenv("DISPLAY");
        qunsetenv("WAYLAND_DISPLAY");
        qunsetenv("QT_QPA_PLATFORM"); // the program's own choice
    }

    void endsWithTheRightStatus_data()
    {
        write(home("bad/VTRGConfigV6.XML"), "<VTRGRAPHER>\n  <oops\n</VTRGRAPHER>");
        write(home("other/VTRGConfigV6.XML"), "<SCHEDULES/>");
        write(home("odd/Config/ChartSelection.XML"),
              "<REPORTDEFINITIONS>\n<CUSTOMREPORT>\n</REPORTDEFINITIONS>");
        write(home("root/Config/ChartSelection.XML"), "<CHARTDEFS/>");
        write(home("none/Config/ChartSelection.XML"), "<REPORTDEFINITIONS/>");
        write(home("broken/Config/ChartSelection.XML"),
              "<REPORTDEFINITIONS><CUSTOMREPORT ReportTitle='T'><DEVICE MUID='M'>"
              "<DATUM DataIDent='x'/></DEVICE></CUSTOMREPORT></REPORTDEFINITIONS>");
        write(home("product/VantrelV6.Config"), "<P\n<");
        const Rows<QStringList, int, QString> row("arguments", "status", "says");
        row("help", {"--help"}, 0, "Usage: VantrelGrapher");
        row("unknown option", {"--nonsense"}, 2, "unknown option --nonsense");
        row("no reports' file", in("empty", {"/AUTO"}), 2, "ChartSelection.XML': no report is");
        row("no display", in("empty", {}), 2, "there is no display for the window");
        row("unknown report", in("empty", {"--run", "x"}), 2, "There is no report 'x'");
        row("malformed configuration", in("bad", {"/AUTO"}), 2, "VTRGConfigV6.XML:3:");
        row("malformed definitions", in("odd", {"/AUTO"}), 2, "ChartSelection.XML:3:");
        row("other root", in("root", {"/AUTO"}), 2, "ChartSelection.XML: the root element is");
        row("configuration of another root", in("other", {"/AUTO"}), 2,
            "VTRGConfigV6.XML: the root element is 'SCHEDULES', not 'VTRGRAPHER'");
        row("nothing defined", in("none", {"/AUTO"}), 0, "");
        row("broken definition", in("broken", {"/AUTO"}), 1, "DataIDent 'x' of the device 'M'");
        row("broken report wanted", in("broken", {"--run", "T"}), 2, "number 1 'T' of");
        row("broken definition, list", in("broken", {"--list"}), 1, "number 1 'T' of");
        row("malformed product configuration", in("product", {"/AUTO"}), 2, "VantrelV6.Config:2:");
    }
    void endsWithTheRightStatus()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, says);
        const Ended ended = run(arguments);
        QTEST(ended.status, "status");
        QVERIFY2(ended.all().contains(says), qPrintable(ended.all()));
    }

    void saysWhatIsLostOrNotAsItSeems()
    {
        const auto shell = [this](const QString &form) {
            QProcess process;
            process.start("/bin/sh", {"-c", form.arg(VANTREL_PROGRAM " --home " + home("empty"))});
            process.waitForFinished(60'000);
            return process.readAllStandardError() + QByteArray::number(process.exitCode());
        };
        QCOMPARE(shell("%1 --history >/dev/full"),
                 "VantrelGrapher: the standard output cannot be written\n1");
        QCOMPARE(shell("TZ=Nowhere %1 --list"),
                 "Warning: the variable TZ names no known time zone: "
                 "'Nowhere'; times are in UTC\n0");
        QCOMPARE(shell("TZ=:/usr/share/zoneinfo/Asia/Tokyo %1 --list"), "0");
    }

    void fillsAHomeAndRunsWhatIsDue()
    {
        makeSite("main", 3);
        const Ended ended = run(in("main", {"/AUTO"}));
        QVERIFY2(ended.status == 0, qPrintable(ended.output.right(2000) + ended.errors));
        QVERIFY(ended.output.contains("Database Opened."));
        QVERIFY(QFile::exists(home("main/Reports/REPORTS.HTM")));
        // The monitoring database was only read, and nothing but it lies in its folder.
        QCOMPARE(QDir(home("main/VTRDataRoot")).entryList(QDir::Files),
                 QStringList("VTRGData.MDB"));

        // A run that ended just before the next one started keeps nobody out.
        for (int i = 0; i < 10; ++i) {
            const Ended lost = run(in("main", {"--dbpath", home("nowhere"), "/AUTO"}));
            QCOMPARE(lost.status, 1);
            QVERIFY(lost.output.contains("Error opening database 'Provider="));
        }
    }

    /// By the name of what another process runs, or by the lock that it has.
    void givesWayToAnotherInstance()
    {
        makeSite("second", 1);
        const QString folder = home("second/VTRDataRoot/RunHistory");
        // A record that a wrong clock left keeps nobody out.
        write(folder + "/21000101-000000-000.json",
              R"({"start": "2100-01-01T00:00:00.000Z", "end": "2100-01-01T00:00:09.000Z"})");
        QVERIFY(QFile::copy("/bin/sh", home("VantrelGrapher")));
        const auto statusBeside = [this](const QString &program, const QStringList &arguments) {
            QProcess other;
            other.start(program, arguments);
            if (!other.waitForReadyRead())
                return -1;
            const int status = run(in("second", m_everything)).status;
            other.kill();
            other.waitForFinished();
            return status;
        };
        const QStringList wait = {"-c", "echo ready; read wait"};
        QCOMPARE(statusBeside(home("VantrelGrapher"), wait), 3);
        QCOMPARE(
            statusBeside("flock", QStringList{"--no-fork", folder + "/running.lock", "sh"} + wait),
            3);
        QVERIFY(!QFile::exists(home("second/Reports")));
        QCOMPARE(statusBeside(home("VantrelGrapher"), wait + QStringList("--history")), 0);
    }

    void runsOnceWhereManyStart()
    {
        constexpr int many = 20;
        makeSite("many", 12);
        std::vector<std::unique_ptr<QProcess>> processes;
        for (int i = 0; i < many; ++i) {
            processes.push_back(std::make_unique<QProcess>());
            processes.back()->start(VANTREL_PROGRAM, in("many", {"/AUTO"}));
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
        const QString history = run(in("many", {"--history"})).output;
        QVERIFY2(history.count("  scheduled: ") == 1, qPrintable(history));
        QVERIFY2(history.contains("\n    ok         Everything - last month"), qPrintable(history));
    }

    void cancelsOnASignal()
    {
        makeSite("cancelled", 40);
        QProcess process;
        QByteArray output = startUntil(process, in("cancelled", {"/AUTO"}), "Summarizing ");
        ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
        QVERIFY(process.waitForFinished(60'000));
        output += process.readAllStandardOutput();
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 4);
        QVERIFY(output.contains("Report run cancelled by user."));
        QDirIterator left(home("cancelled"), {"*.tmp"}, QDir::Files, QDirIterator::Subdirectories);
        QVERIFY2(!left.hasNext(), qPrintable(left.next()));
    }

    void endsAtOnceOnASecondSignal()
    {
        makeSite("ended", 40);
        QProcess process;
        startUntil(process, in("ended", {"/AUTO"}), "Generating output...");
        const auto id = static_cast<pid_t>(process.processId());
        ::kill(id, SIGINT);
        while (!handled(id, SIGINT))
            QTest::qSleep(1);
        ::kill(id, SIGTERM);
        QVERIFY(process.waitForFinished(60'000));
        if (process.exitStatus() == QProcess::NormalExit)
            QCOMPARE(process.exitCode(), 4); // it was quicker
        // Whole files, or none: every page that is there has its end, every image too.
        int pages = 0;
        QDirIterator files(home("ended/Reports"), {"*.HTM", "*.PNG"}, QDir::Files,
                           QDirIterator::Subdirectories);
        for (; files.hasNext(); ++pages) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            const char *end = file.fileName().endsWith(".HTM") ? "</html>" : "IEND";
            QVERIFY2(file.readAll().contains(end), qPrintable(file.fileName()));
        }
        QVERIFY(pages > 0);
        // Its record tells that it did not come to its end, or that it was cancelled.
        const QString history = run(in("ended", {"--history"})).output;
        QVERIFY2(history.contains("not finished") || history.contains("    cancelled "),
                 qPrintable(history));
    }
};

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_Program.moc"
