// bench-window: runs every report of a home from the main window, and prints how long the window
// left the user waiting at most.

#include "base/Paths.h"
#include "base/ProgramState.h"
#include "config/Program.h"
#include "config/StartUp.h"
#include "config/clsGrapherConfig.h"
#include "tests/support/MemoryScheduler.h"
#include "ui/main/ReportView.h"
#include "ui/main/frmGrapherMain.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

/// Handles the finished page, so that no browser starts.
class NoBrowser : public QObject
{
    Q_OBJECT

public:
    NoBrowser() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "take"); }
    ~NoBrowser() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
    Q_INVOKABLE void take(const QUrl &) {}
};

void measure(frmGrapherMain &window)
{
    window.findChild<ReportView *>(QStringLiteral("lvReports"))->selectAll();
    std::vector<qint64> gaps;
    QElapsedTimer sinceBeat;
    QTimer heart;
    heart.callOnTimeout([&] {
        if (sinceBeat.isValid())
            gaps.push_back(sinceBeat.elapsed());
        sinceBeat.start();
    });
    heart.start(1);
    QElapsedTimer all;
    all.start();
    auto *run = window.findChild<QAction *>(QStringLiteral("mnuReportView"));
    const QString caption = run->text();
    run->trigger();
    while (run->text() != caption)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const qint64 duration = all.elapsed();
    heart.stop();
    std::sort(gaps.begin(), gaps.end());
    std::printf("run %lld ms; %zu looks at the user's events; between two of them: median %lld ms, "
                "99 %% within %lld ms, longest %lld ms\n",
                static_cast<long long>(duration), gaps.size(),
                static_cast<long long>(gaps[gaps.size() / 2]),
                static_cast<long long>(gaps[gaps.size() * 99 / 100]),
                static_cast<long long>(gaps.back()));
}

} // namespace

int main(int argc, char *argv[])
{
    const ProgramState state;
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("VantrelGrapher"));
    if (argc != 2) {
        std::fputs("Usage: bench-window HOME\n", stderr);
        return 2;
    }
    locateProgramFolder(QDir(QString::fromLocal8Bit(argv[1])).absolutePath());
    InitGrapher();
    loadGrapherConfig();
    const NoBrowser noBrowser;
    MemoryScheduler scheduler;
    frmGrapherMain window(scheduler, {});
    window.show();
    window.loadReports();
    program().gStartupDone = true;
    window.start();
    QTimer::singleShot(0, &window, [&window] {
        measure(window);
        window.close();
    });
    return QApplication::exec();
}

#include "window.moc"
