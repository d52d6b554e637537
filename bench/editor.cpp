// bench-editor FILE: how long the report definition editor takes to open on a monitoring file, and
// how long each key typed into its search box takes until the window is painted again.

#include "base/Error.h"
#include "base/Paths.h"
#include "base/ProgramState.h"
#include "config/Program.h"
#include "config/clsGrapherConfig.h"
#include "database/Connection.h"
#include "database/MonitoredDevices.h"
#include "ui/editors/frmReportDefEditor.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

namespace {

constexpr int patience = 60; // seconds

template <typename Work>
double milliseconds(Work work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void print(const QString &what, double took)
{
    std::printf("  %-52s %8.1f ms\n", qPrintable(what), took);
    std::fflush(stdout);
}

template <typename T>
T *child(const QWidget &window, const char *name)
{
    return window.findChild<T *>(QLatin1String(name));
}

bool isRead(const frmReportDefEditor &editor)
{
    return child<QComboBox>(editor, "cboKind")->count() > 0;
}

/// A report of every item of one device out of so many.
clsReportDef sampleReport(const MonitoredDevices &monitored, size_t oneOf)
{
    clsReportDef report;
    for (size_t i = 0; i < monitored.devices.size(); i += oneOf) {
        const MonitoredDevice &found = monitored.devices[i];
        auto device = std::make_shared<clsReportDeviceDef>();
        device->MUID = found.muid;
        for (int number = 0; number < found.itemCount; ++number) {
            auto item = std::make_shared<clsReportDataIdentDef>();
            item->DataIDent =
                monitored.items[static_cast<size_t>(found.firstItem + number)].dataIdent;
            device->DataItems.add(QLatin1Char('k') + item->DataIDent, item);
        }
        report.ReportDevices.add(device->MUID, device);
    }
    return report;
}

/// Returns the longest time, in milliseconds, for which the window did not answer.
double waitUntilRead(const frmReportDefEditor &editor)
{
    QEventLoop loop;
    QTimer ticker;
    QElapsedTimer sinceTick;
    QElapsedTimer sinceStart;
    double longest = 0;
    QObject::connect(&ticker, &QTimer::timeout, &loop, [&] {
        longest = std::max(longest, static_cast<double>(sinceTick.nsecsElapsed()) / 1e6);
        sinceTick.restart();
        if (isRead(editor) || sinceStart.elapsed() > patience * 1000)
            loop.quit();
    });
    sinceTick.start();
    sinceStart.start();
    ticker.start(5);
    loop.exec();
    if (!isRead(editor))
        throw Error(DatabaseTimeout, QStringLiteral("the devices do not come"));
    return longest;
}

void typeSearch(frmReportDefEditor &editor, const QString &text)
{
    auto *search = child<QLineEdit>(editor, "txtSearch");
    search->clear();
    QApplication::processEvents();
    double longest = 0;
    double all = 0;
    for (const QChar key : text) {
        const double took = milliseconds([&] {
            search->insert(key);
            QApplication::processEvents(); // paints
        });
        longest = std::max(longest, took);
        all += took;
    }
    print(QStringLiteral("search \"%1\": mean of its keys").arg(text),
          all / static_cast<double>(text.size()));
    print(QStringLiteral("search \"%1\": longest").arg(text), longest);
    print(QStringLiteral("search \"%1\": cleared").arg(text), milliseconds([&] {
              search->clear();
              QApplication::processEvents();
          }));
}

void clickTwice(const frmReportDefEditor &editor, const char *first, const char *second)
{
    for (const char *name : {first, second})
        print(QStringLiteral("click on %1").arg(QLatin1String(name)), milliseconds([&] {
                  child<QPushButton>(editor, name)->click();
                  QApplication::processEvents();
              }));
}

void benchEditor(const clsReportDef &report)
{
    std::printf("A report of %lld devices\n", static_cast<long long>(report.ReportDevices.size()));
    QElapsedTimer opening;
    opening.start();
    frmReportDefEditor editor;
    editor.load(report);
    editor.show();
    QApplication::processEvents();
    print(QStringLiteral("opening, until the window can be used"),
          static_cast<double>(opening.nsecsElapsed()) / 1e6);
    const double longest = waitUntilRead(editor);
    QApplication::processEvents();
    print(QStringLiteral("opening, until the devices are shown"),
          static_cast<double>(opening.nsecsElapsed()) / 1e6);
    print(QStringLiteral("longest wait for the window meanwhile"), longest);

    for (const char *text : {"router", "cpu", "srv 12 memory", "e", "no such thing"})
        typeSearch(editor, QLatin1String(text));
    bool changed = false;
    print(QStringLiteral("looking for changes"),
          milliseconds([&] { changed = editor.hasChanges(); }));
    if (changed)
        throw Error(DatabaseError, QStringLiteral("the editor sees changes where there are none"));
    clsReportDef stored = report;
    print(QStringLiteral("store"), milliseconds([&] { editor.store(stored); }));
    clickTwice(editor, "cmdKindCheck", "cmdKindClear");
    clickTwice(editor, "cmdSelectShown", "cmdClearShown");
}

void bench(const QString &file)
{
    const QTemporaryDir home;
    setProgramFolder(home.path());
    gConfig().storedConfig = QStringLiteral("%%app.path%%");
    program().gGraphDataPath = home.path() + QLatin1Char('/');
    program().gDataPath = QFileInfo(file).absolutePath() + QLatin1Char('/');

    MonitoredDevices monitored;
    print(QStringLiteral("reading the database alone"), milliseconds([&] {
              const std::unique_ptr<MonitoringDatabase> database = databaseSource().connect();
              monitored = readMonitoredDevices(*database);
          }));
    std::printf("  (%zu devices, %zu data items)\n", monitored.devices.size(),
                monitored.items.size());
    benchEditor(sampleReport(monitored, 50));
    benchEditor(sampleReport(monitored, 1));
}

} // namespace

int main(int argc, char **argv)
{
    const ProgramState state;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench-editor FILE\n");
        return 2;
    }
    try {
        bench(QFileInfo(QString::fromLocal8Bit(argv[1])).absoluteFilePath());
    } catch (const Error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
