#include "base/Clock.h"
#include "base/Paths.h"
#include "base/ProgramState.h"
#include "config/Program.h"
#include "config/StartUp.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Definitions.h"
#include "platform/TaskScheduler.h"
#include "ui/common/IndicatorStyle.h"
#include "ui/editors/frmCustomRange.h"
#include "ui/editors/frmGraphDefEditor.h"
#include "ui/editors/frmMail.h"
#include "ui/editors/frmMailSubscription.h"
#include "ui/editors/frmPreview.h"
#include "ui/editors/frmReportDefEditor.h"
#include "ui/editors/frmScheduleDefEditor.h"
#include "ui/help/frmHelp.h"
#include "ui/main/DefinitionManager.h"
#include "ui/main/UndoSteps.h"
#include "ui/main/frmAutomate.h"
#include "ui/main/frmDatabase.h"
#include "ui/main/frmGrapherMain.h"
#include "ui/main/frmHistory.h"
#include "ui/main/frmOutputPath.h"
#include "ui/main/frmVersions.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QEventLoop>
#include <QRadioButton>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTimer>
#include <QWindow>

#include <cstdio>

/// Makes a PNG of every window, filled from a home with demonstration data.

namespace {

QPalette darkPalette()
{
    QPalette palette(QColor(0x35, 0x35, 0x35), QColor(0x2b, 0x2b, 0x2b));
    palette.setColor(QPalette::Base, QColor(0x1f, 0x1f, 0x1f));
    palette.setColor(QPalette::AlternateBase, QColor(0x2a, 0x2a, 0x2a));
    palette.setColor(QPalette::Highlight, QColor(0x2f, 0x6f, 0xb5));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x7f, 0xb6, 0xf0));
    palette.setColor(QPalette::PlaceholderText, QColor(0x9a, 0x9a, 0x9a));
    palette.setColor(QPalette::ToolTipBase, palette.color(QPalette::Window));
    palette.setColor(QPalette::ToolTipText, palette.color(QPalette::WindowText));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x80));
    return palette;
}

class Album
{
public:
    Album(const QString &folder, const QString &theme)
        : m_folder(folder)
        , m_theme(theme)
    {}

    /// Shows a window and saves its picture.
    void take(QWidget &window, const QString &name)
    {
        window.show();
        wait(500); // previews and filters follow the last key with a delay
        if (!window.windowHandle()->isExposed())
            fail(name + QLatin1String(": the window does not show"));
        const QString file = QStringLiteral("%1/%2-%3.png").arg(m_folder, name, m_theme);
        if (!window.grab().save(file))
            fail(file + QLatin1String(": cannot be written"));
        std::printf("%s\n", qPrintable(file));
        window.hide();
    }

    int faults() const { return m_faults; }

private:
    static void wait(int milliseconds)
    {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
    }
    void fail(const QString &what)
    {
        ++m_faults;
        std::fprintf(stderr, "%s\n", qPrintable(what));
    }

    QString m_folder;
    QString m_theme;
    int m_faults = 0;
};

void takeMainWindow(Album &album, platform::TaskScheduler &scheduler)
{
    frmGrapherMain window(scheduler, {});
    window.loadReports();
    window.start();
    auto *list = window.findChild<QAbstractItemView *>(QStringLiteral("lvReports"));
    list->setCurrentIndex(list->model()->index(0, 0));
    album.take(window, QStringLiteral("main-window"));
}

void takeEditors(Album &album)
{
    frmReportDefEditor report;
    report.load(*definitions().gReportDefs.at(0));
    album.take(report, QStringLiteral("report-editor"));

    clsReportDef byRule;
    byRule.ReportTitle = QStringLiteral("All switches, last week");
    byRule.Rules = {{false, QStringLiteral("*-SW*|*switch*")},
                    {false, {}, QStringLiteral("Network core"), {}, QStringLiteral("Latency")},
                    {true, QStringLiteral("lab-*")}};
    frmReportDefEditor rules;
    rules.load(byRule);
    rules.findChild<QTabWidget *>()->setCurrentIndex(1);
    album.take(rules, QStringLiteral("report-rules"));
    rules.findChild<QTabWidget *>()->setCurrentIndex(2);
    album.take(rules, QStringLiteral("report-targets"));

    frmGraphDefEditor chart;
    chart.load(*definitions().gChartDefs.at(definitions().gChartDefs.size() - 1));
    album.take(chart, QStringLiteral("chart-editor"));

    auto *data = chart.findChild<QRadioButton *>(QStringLiteral("optPreviewData"));
    data->setChecked(true);
    album.take(chart, QStringLiteral("chart-editor-my-data"));
    frmPreview preview(*definitions().gChartDefs.at(0), {}, {});
    album.take(preview, QStringLiteral("preview"));

    clsGraphDef range;
    range.EndTime = now();
    range.StartTime = range.EndTime.addDays(-7);
    frmCustomRange customRange(range, {QStringLiteral("Servers"), QStringLiteral("Links")});
    album.take(customRange, QStringLiteral("custom-range"));

    frmScheduleDefEditor schedule;
    schedule.load(*definitions().gScheduleDefs.at(definitions().gScheduleDefs.size() - 1));
    album.take(schedule, QStringLiteral("schedule-editor"));
}

void takeMail(Album &album)
{
    const QString reportId = definitions().gReportDefs.at(0)->ReportID;
    const MailSite site = mailSite();
    MailSettings settings = MailSettings::load(site.settings);
    settings.server.host = QStringLiteral("smtp.example.org");
    settings.server.user = QStringLiteral("reports@example.org");
    settings.server.from = QStringLiteral("Network reports <reports@example.org>");
    MailSubscription always;
    always.id = NewID();
    always.reportId = reportId;
    always.recipients = QStringLiteral("ann@example.org, Bob Smith <bob@example.org>");
    always.csv = true;
    MailSubscription missed = always;
    missed.id = NewID();
    missed.recipients = QStringLiteral("manager@example.org");
    missed.when = MailWhen::TargetMissed;
    settings.subscriptions = {always, missed};
    settings.failureRecipients = QStringLiteral("noc@example.org");
    settings.save(site.settings);

    frmMail mail(site);
    album.take(mail, QStringLiteral("mail-server"));
    mail.findChild<QTabWidget *>()->setCurrentIndex(1);
    album.take(mail, QStringLiteral("mail-subscriptions"));
    frmMailSubscription subscription;
    subscription.load(missed);
    album.take(subscription, QStringLiteral("mail-subscription"));
}

void takeDialogs(Album &album, platform::TaskScheduler &scheduler)
{
    frmAutomate automate(scheduler, {});
    album.take(automate, QStringLiteral("automate"));

    frmDatabase database;
    album.take(database, QStringLiteral("database"));
    database.findChild<QComboBox *>(QStringLiteral("cboKind"))->setCurrentIndex(1);
    album.take(database, QStringLiteral("database-server"));
    UndoSteps undo;
    frmChartManager charts(undo);
    album.take(charts, QStringLiteral("charts"));
    frmScheduleManager schedules(undo);
    album.take(schedules, QStringLiteral("schedules"));
    const auto report = std::make_shared<clsReportDef>(*definitions().gReportDefs.at(0));
    report->ReportTitle += QLatin1String(" of the site");
    definitions().store(report);
    frmVersions versions;
    album.take(versions, QStringLiteral("versions"));
    definitions().takeBack(0);
    frmHistory history;
    album.take(history, QStringLiteral("history"));

    frmOutputPath output;
    album.take(output, QStringLiteral("output-location"));

    frmHelp help(shareFolder() + QLatin1String("/Help"), nullptr);
    help.openPage(QStringLiteral("main-window.html"));
    album.take(help, QStringLiteral("help"));
}

} // namespace

int main(int argc, char *argv[])
{
    const ProgramState state;
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("VantrelGrapher"));
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 4 || (arguments[3] != u"light" && arguments[3] != u"dark")) {
        std::fputs("Usage: window-screenshots HOME FOLDER light|dark\n", stderr);
        return 2;
    }
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    installIndicatorStyle();
    if (arguments[3] == u"dark")
        QApplication::setPalette(darkPalette());
    QDir().mkpath(arguments[2]);
    locateProgramFolder(arguments[1]);
    InitGrapher();
    program().gDataPath = programFolder() + QLatin1String("/VTRDataRoot/");
    loadGrapherConfig();
    definitions().LoadChartDefs();
    definitions().LoadScheduleDefs();
    definitions().LoadReportDefs();
    program().gStartupDone = true;
    Album album(arguments[2], arguments[3]);
    const std::unique_ptr<platform::TaskScheduler> scheduler = platform::systemTaskScheduler();
    takeMainWindow(album, *scheduler);
    takeEditors(album);
    takeMail(album);
    takeDialogs(album, *scheduler);
    return album.faults() == 0 ? 0 : 1;
}
