// demo-database: writes a monitoring database with invented devices and samples.

#include "base/Clock.h"
#include "base/Error.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/ProgramState.h"
#include "demo/DemoReports.h"
#include "demo/MonitoringData.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>

namespace {

constexpr double maxSamples = 30e6; // fits into the 2 GB of an Access file

struct Arguments
{
    QString file;
    QString reportsFolder;
    demo::MonitoringOptions options;
};

/// Wrong options: shown to the user, exit status 2.
struct UsageError
{
    QString text;
};

int numberOption(const QCommandLineParser &parser, const QString &name, int min, int max)
{
    bool isNumber = false;
    const int number = parser.value(name).toInt(&isNumber);
    if (!isNumber || number < min || number > max)
        throw UsageError{
            QStringLiteral("--%1 takes a number from %2 to %3").arg(name).arg(min).arg(max)};
    return number;
}

qint64 untilOption(const QCommandLineParser &parser)
{
    const QString text = parser.value(QStringLiteral("until"));
    if (text.isEmpty())
        return currentInstant() / 1000;
    QDateTime time = QDateTime::fromString(text, Qt::ISODate);
    if (!time.isValid())
        throw UsageError{QStringLiteral("--until takes a time such as 2025-06-30T12:00:00Z")};
    if (time.timeSpec() == Qt::LocalTime)
        time.setTimeSpec(Qt::UTC);
    return time.toSecsSinceEpoch();
}

void addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Writes a monitoring database (Access format, .mdb) with invented devices and samples."));
    parser.addPositionalArgument(QStringLiteral("FILE"),
                                 QStringLiteral("The file to write; replaced if it exists."));
    const auto number = QStringLiteral("number");
    parser.addOptions({
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Prints this text.")},
        {QStringLiteral("devices"), QStringLiteral("How many devices (24)."), number,
         QStringLiteral("24")},
        {QStringLiteral("items"), QStringLiteral("How many data items each device has (8)."),
         number, QStringLiteral("8")},
        {QStringLiteral("days"), QStringLiteral("How many days the samples go back (35)."), number,
         QStringLiteral("35")},
        {QStringLiteral("interval"),
         QStringLiteral("Seconds from one test of a device to the next (300)."),
         QStringLiteral("seconds"), QStringLiteral("300")},
        {QStringLiteral("until"),
         QStringLiteral("Time of the last samples in UTC, as 2025-06-30T12:00:00Z (now)."),
         QStringLiteral("time")},
        {QStringLiteral("seed"),
         QStringLiteral("Another seed gives other devices and samples (1)."), number,
         QStringLiteral("1")},
        {QStringLiteral("reports"),
         QStringLiteral("Also write report definitions, ChartSelection.XML, into this folder."),
         QStringLiteral("folder")},
    });
}

Arguments readArguments(const QCommandLineParser &parser)
{
    const QStringList files = parser.positionalArguments();
    if (files.size() != 1)
        throw UsageError{QStringLiteral("Name one file to write")};
    Arguments arguments;
    arguments.file = files.first();
    arguments.reportsFolder = parser.value(QStringLiteral("reports"));
    demo::MonitoringOptions &options = arguments.options;
    options.devices = numberOption(parser, QStringLiteral("devices"), 1, 10'000);
    options.items = numberOption(parser, QStringLiteral("items"), 1, 200);
    options.days = numberOption(parser, QStringLiteral("days"), 1, 3660);
    options.interval = numberOption(parser, QStringLiteral("interval"), 1, 86'400);
    options.seed = std::uint64_t(numberOption(parser, QStringLiteral("seed"), 0, 2'147'483'647));
    options.until = untilOption(parser);
    const double samples =
        86'400.0 / options.interval * options.days * options.devices * options.items;
    if (samples > maxSamples)
        throw UsageError{QStringLiteral("These would be %1 million samples; at most %2 million fit")
                             .arg(samples / 1e6, 0, 'f', 1)
                             .arg(maxSamples / 1e6)};
    return arguments;
}

void write(const Arguments &arguments)
{
    QElapsedTimer timer;
    timer.start();
    const demo::MonitoringPlan plan = demo::planMonitoring(arguments.options);
    const qint64 samples = demo::writeMonitoringData(arguments.file, plan, [](double share) {
        std::fprintf(stderr, "\rWriting samples: %3.0f %%", share * 100);
    });
    std::fprintf(stderr, "\r%s: %d devices, %d data items, %lld samples, %lld MB in %.1f s\n",
                 qUtf8Printable(arguments.file), arguments.options.devices,
                 arguments.options.devices * arguments.options.items,
                 static_cast<long long>(samples),
                 static_cast<long long>(QFileInfo(arguments.file).size() / 1'000'000),
                 double(timer.elapsed()) / 1000);
    if (!arguments.reportsFolder.isEmpty())
        saveFile(QDir(arguments.reportsFolder).filePath(QStringLiteral("ChartSelection.XML")),
                 demo::demoReports(plan));
}

} // namespace

int main(int argc, char **argv)
{
    const ProgramState state;
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("demo-database"));
    setProgramFolder(QDir::currentPath()); // relative names start there
    QCommandLineParser parser;
    addOptions(parser);
    try {
        if (!parser.parse(application.arguments()))
            throw UsageError{parser.errorText()};
        if (parser.isSet(QStringLiteral("help"))) {
            std::fputs(qUtf8Printable(parser.helpText()), stdout);
            return 0;
        }
        write(readArguments(parser));
        return 0;
    } catch (const UsageError &error) {
        std::fprintf(stderr, "%s.\n\n%s", qUtf8Printable(error.text),
                     qUtf8Printable(parser.helpText()));
        return 2;
    } catch (const Error &error) {
        std::fprintf(stderr, "\n%s\n", error.what());
        return 1;
    }
}
