#include "base/Clock.h"
#include "config/StartUp.h"
#include "definitions/Definitions.h"
#include "demo/DemoReports.h"
#include "demo/MonitoringData.h"
#include "mail/MailSettings.h"
#include "report/OutputTree.h"
#include "support/Answers.h"
#include "support/MemoryScheduler.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/Controls.h"
#include "ui/main/ReportList.h"
#include "ui/main/ReportView.h"
#include "ui/main/RunLine.h"
#include "ui/main/StatusBox.h"
#include "ui/main/frmGrapherMain.h"

#include <QDesktopServices>
#include <QHeaderView>
#include <QListWidget>
#include <QMenu>
#include <QProgressBar>
#include <QScrollBar>
#include <QTextBlock>

namespace {

constexpr int minute = 60'000;
constexpr auto definitionFile = "Config/ChartSelection.XML";
const QStringList allTitles = {"Alpha", "Beta", "Gamma"};

/// A home with a small monitoring database and three reports, and the main window on it.
class Site : public QObject
{
    Q_OBJECT

public:
    explicit Site(bool hasReports = true)
    {
        locateProgramFolder(box.path());
        InitGrapher();
        const demo::MonitoringPlan plan =
            demo::planMonitoring({3, 3, 1, 900, currentInstant() / 1000, 1});
        demo::writeMonitoringData(program().gDataPath + QLatin1String("VTRGData.MDB"), plan);
        if (hasReports)
            box.write(definitionFile, reportFile(plan.devices.front()));
        loadGrapherConfig();
        QDesktopServices::setUrlHandler("file", this, "browse");
        window = std::make_unique<frmGrapherMain>(scheduler, QStringList{"--home", box.path()});
        window->show();
        program().gStartupDone = false;
        window->loadReports();
        program().gStartupDone = true;
        window->start();
    }
    ~Site() override
    {
        window.reset();
        QDesktopServices::unsetUrlHandler("file");
    }

    /// "Alpha" falls due by a schedule, "Beta" has just run and is due next month, "Gamma" has no
    /// schedule.
    static QByteArray reportFile(const demo::MonitoredDevice &device)
    {
        const QString report =
            R"(<CUSTOMREPORT ReportID="{%1}" ReportTitle="%1" ChartID="{A1000001-0000-4000-8000-000000000001}">
<%2 ScheduleID="{B1000001-0000-4000-8000-00000000000%6}" LastRunDate="%3"/>
<DEVICE MUID="%4"><DATUM DataIDent="%5"/></DEVICE></CUSTOMREPORT>)";
        const QString item = QString::number(device.items.front().dataIdent);
        QString text = "<REPORTDEFINITIONS>";
        const QString past = "2024-01-01T00:00:00-00:00";
        text += report.arg("Beta", "SCHEDULE", DateToXML(now()), device.muid, item, "4");
        text += report.arg("Gamma", "NONE", past, device.muid, item, "5");
        text += report.arg("Alpha", "SCHEDULE", past, device.muid, item, "5");
        return (text + "</REPORTDEFINITIONS>").toUtf8();
    }

    QAction *action(const char *name) const { return window->findChild<QAction *>(name); }
    QPushButton *button(const char *name) const { return control<QPushButton>(*window, name); }
    ReportView *list() const { return control<ReportView>(*window, "lvReports"); }
    QString status() const { return control<StatusBox>(*window, "txtStatusInfo")->toPlainText(); }
    QString panel() const { return control<QLabel>(*window, "lblCountdown")->text(); }
    QString cell(int row, int column) const
    {
        return list()->model()->index(row, column).data().toString();
    }
    QStringList titles() const
    {
        QStringList result;
        for (int row = 0; row < list()->model()->rowCount(); ++row)
            result.append(cell(row, 0));
        return result;
    }
    void select(const QStringList &wanted) const
    {
        list()->clearSelection();
        for (const QString &title : wanted)
            list()->selectionModel()->select(
                list()->model()->index(int(titles().indexOf(title)), 0),
                QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    void press(Qt::Key key, Qt::KeyboardModifier modifier = Qt::NoModifier) const
    {
        window->activateWindow(); // a dialog may have been the active one
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        QTest::keyClick(list(), key, modifier);
    }
    bool isRunning() const { return button("cmdReportView")->text() == "&Cancel"; }
    /// Waits for the end of a run.
    void waitForEnd() const { QTRY_VERIFY_WITH_TIMEOUT(!isRunning(), 60'000); }
    /// Runs what is selected, to its end.
    void runSelected() const
    {
        button("cmdReportView")->click();
        waitForEnd();
    }
    /// The report file without the blanks between its elements.
    QString definitionText() const
    {
        static const QRegularExpression blanks("\\s*([<>/])\\s*");
        return QString::fromUtf8(box.read(definitionFile)).replace(blanks, "\\1");
    }
    void runAll() const
    {
        select(allTitles);
        runSelected();
    }
    /// Titles of the reports that have pages, in order.
    QStringList run() const
    {
        definitions().LoadReportDefs();
        const OutputTree tree(gConfig());
        QStringList result;
        for (const auto &report : definitions().gReportDefs) {
            if (QFile::exists(nativePath(tree.reportPage(report->ReportID))))
                result.append(report->ReportTitle);
        }
        result.sort();
        return result;
    }
    /// Has the countdown run by itself: as if the hourly job were registered.
    void automate()
    {
        scheduler.list = "VantrelGraphTool\n";
        scheduler.saved.workingDirectory = box.path();
        window->updateAutomate();
        window->tick();
    }

    Q_INVOKABLE void browse(const QUrl &url)
    {
        browsed.append(QDir::toNativeSeparators(url.toLocalFile()));
    }

    Sandbox box;
    MemoryScheduler scheduler;
    Answers answers;
    std::unique_ptr<frmGrapherMain> window;
    QStringList browsed;
};

} // namespace

class tst_frmGrapherMain : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void changesOneReportAtATime()
    {
        const Site site;
        for (const QStringList &selected : {QStringList(), {"Alpha", "Beta"}}) {
            site.select(selected);
            site.press(Qt::Key_Return);
            QVERIFY(site.answers.said.isEmpty()); // no window came up
            QVERIFY(!site.button("cmdReportModify")->isEnabled());
            QCOMPARE(site.action("mnuReportView")->isEnabled(), !selected.isEmpty());
        }
    }

    void showsAndSortsReports()
    {
        const LocalZone zone("UTC");
        QVERIFY(Site(false).button("cmdFirstReport")->isVisible());
        const Site site;
        QVERIFY(!site.button("cmdFirstReport")->isVisible());
        QCOMPARE(site.titles(), allTitles);
        const QDate month = now().date().addDays(1 - now().date().day()).addMonths(1);
        QCOMPARE(site.cell(0, 6), "Due now");
        QCOMPARE(site.cell(1, 6), month.toString(u"yyyy-MM-dd 06:00"));
        QCOMPARE(site.cell(2, 6), "Not scheduled");
        site.select({"Beta"});
        QHeaderView *header = site.list()->header();
        const QPoint title(header->sectionViewportPosition(0) + 10, header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, title);
        QCOMPARE(site.titles(), QStringList({"Gamma", "Beta", "Alpha"}));
        site.list()->sortByColumn(6, Qt::AscendingOrder); // the next run
        QCOMPARE(site.titles(), allTitles);
        QCOMPARE(site.list()->selectedIds(), QStringList("{Beta}"));
    }

    void asksBeforeAReportGoes()
    {
        Site site;
        const QByteArray before = site.box.read(definitionFile);
        site.select({"Beta"});
        site.answers.click(QMessageBox::No);
        site.press(Qt::Key_Delete);
        QVERIFY(site.answers.said.value(0).endsWith("remove the report definition “Beta”?"));
        QCOMPARE(site.box.read(definitionFile), before);
        site.answers.click(QMessageBox::Yes);
        site.button("cmdReportRemove")->click();
        QCOMPARE(site.titles(), QStringList({"Alpha", "Gamma"}));
        QVERIFY(!site.box.read(definitionFile).contains("Beta"));
    }

    void removesSeveralAndTakesItBack()
    {
        Site site;
        site.runAll();
        const OutputTree tree(gConfig());
        const QString before = site.definitionText();
        site.select({"Alpha", "Beta"});
        site.answers.add([](QWidget &box) {
            control<QCheckBox>(box, "chkOption")->setChecked(true);
            static_cast<QMessageBox &>(box).button(QMessageBox::Yes)->click();
        });
        site.press(Qt::Key_Delete);
        QVERIFY(site.answers.said.last().endsWith("2 report definitions?\n\nAlpha\nBeta"));
        QCOMPARE(site.titles(), QStringList("Gamma"));
        QVERIFY(!folderExists(tree.reportFolder("{Alpha}")));
        QVERIFY(folderExists(tree.reportFolder("{Gamma}")));
        QTRY_VERIFY(site.box.names("Reports").filter("removed").isEmpty());
        site.press(Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(site.titles(), allTitles);
        QCOMPARE(site.definitionText(), before);
        QVERIFY(!site.action("mnuUndo")->isEnabled());
    }

    void cancelTakesBackWhatTheEditorDid()
    {
        Site site;
        for (const auto answer : {QMessageBox::Discard, QMessageBox::Save}) {
            site.select({"Beta"});
            site.answers.add([&](QWidget &editor) {
                site.answers.add([](QWidget &chart) {
                    QVERIFY(control<QLabel>(chart, "lblNote")
                                ->text()
                                .contains("also used by 2 reports: Alpha, Gamma."));
                    control<QLineEdit>(chart, "txtTitle")->setText("Renamed");
                    control<QPushButton>(chart, "cmdOK")->click();
                });
                control<QPushButton>(editor, "cmdChartModify")->click();
                QVERIFY(site.box.read("Config/ChartDefs.XML").contains("Renamed"));
                site.answers.click(answer);
                QTest::keyClick(&editor, Qt::Key_Escape);
            });
            site.press(Qt::Key_Return);
            QCOMPARE(site.box.read("Config/ChartDefs.XML").contains("Renamed"),
                     answer == QMessageBox::Save);
        }
        QCOMPARE(site.action("mnuUndo")->text(), "&Undo change of “Beta”");
        site.action("mnuUndo")->trigger();
        QVERIFY(!site.box.read("Config/ChartDefs.XML").contains("Renamed"));
    }

    void managesCharts()
    {
        Site site;
        const QString reports = site.definitionText();
        const auto table = [](const QWidget &manager) {
            QStringList rows;
            const auto *list = control<QAbstractItemView>(manager, "lvDefinitions");
            for (int row = 0; row < list->model()->rowCount(); ++row)
                rows.append(list->model()->index(row, 0).data().toString() + '|' +
                            list->model()->index(row, 2).data().toString());
            return rows;
        };
        site.answers.add([&](QWidget &manager) {
            auto *list = control<QAbstractItemView>(manager, "lvDefinitions");
            const QStringList before = table(manager);
            const QString used = before.filter("|3 reports").value(0).section('|', 0, 0);
            list->setCurrentIndex(
                list->model()->index(int(before.indexOf(used + "|3 reports")), 0));
            const auto click = [&manager](const char *name) {
                control<QPushButton>(manager, name)->click();
            };
            click("cmdDuplicate");
            QVERIFY(table(manager).contains(used + " (copy)|No report"));
            const auto rename = [&](const QString &title) {
                site.answers.add([&site, title, used](QWidget &dialog) {
                    auto *field = control<QLineEdit>(dialog, "txtTitle");
                    field->setText(' ' + used.toUpper());
                    site.answers.click(QMessageBox::Ok); // taken
                    control<QPushButton>(dialog, "cmdOK")->click();
                    field->setText(title);
                    control<QPushButton>(dialog, "cmdOK")->click();
                });
                click("cmdRename");
            };
            rename("A 10");
            list->setCurrentIndex(
                list->model()->index(int(table(manager).indexOf(used + "|3 reports")), 0));
            click("cmdDuplicate");
            rename("A 9");
            QCOMPARE(table(manager).mid(0, 2), QStringList({"A 9|No report", "A 10|No report"}));
            list->setCurrentIndex(
                list->model()->index(int(table(manager).indexOf(used + "|3 reports")), 0));
            QCOMPARE(control<QLabel>(manager, "lblUsage")->text(),
                     "Used by 3 reports: Alpha, Beta, Gamma.");
            site.answers.add([](QWidget &dialog) {
                QCOMPARE(control<QComboBox>(dialog, "cboReplacement")->itemText(0), "A 9");
                control<QPushButton>(dialog, "cmdReplace")->click();
            });
            click("cmdRemove");
            QVERIFY(table(manager).contains("A 9|3 reports"));
            QCOMPARE(table(manager).filter(used + '|'), QStringList());
            for (int steps = 0; steps < 5; ++steps)
                click("cmdUndo");
            QCOMPARE(table(manager), before);
            QVERIFY(!control<QPushButton>(manager, "cmdUndo")->isEnabled());
            manager.close();
        });
        site.action("mnuCharts")->trigger();
        QCOMPARE(site.definitionText(), reports);
    }

    void opensTheEditor_data()
    {
        const Rows<Qt::Key, Qt::KeyboardModifier, QStringList> row("key", "modifier", "titles");
        row("modify", Qt::Key_Enter, Qt::KeypadModifier, {"Alpha", "Delta", "Gamma"});
        row("add", Qt::Key_N, Qt::ControlModifier, {"Alpha", "Beta", "Delta", "Gamma"});
    }
    void opensTheEditor()
    {
        QFETCH(Qt::Key, key);
        QFETCH(Qt::KeyboardModifier, modifier);
        QFETCH(QStringList, titles);
        Site site;
        const QByteArray before = site.box.read(definitionFile);
        site.select({"Beta"});
        site.answers.add([](QWidget &editor) { QTest::keyClick(&editor, Qt::Key_Escape); });
        site.press(key, modifier);
        QVERIFY2(site.answers.said.isEmpty(), qPrintable(site.answers.said.join('|')));
        QCOMPARE(site.box.read(definitionFile), before);
        QCOMPARE(site.titles(), allTitles);

        site.answers.add([](QWidget &editor) {
            control<QLineEdit>(editor, "txtTitle")->setText("Delta");
            control<QComboBox>(editor, "cboChart")->setCurrentText("Last 24 hours");
            control<QPushButton>(editor, "cmdOK")->click();
            if (editor.isVisible())
                static_cast<QDialog &>(editor).done(QDialog::Rejected); // the titles tell
        });
        if (titles.size() > 3)
            site.answers.click(QMessageBox::Yes); // though it has no device yet
        site.press(key, modifier);
        QCOMPARE(site.titles(), titles);
        QVERIFY(site.box.read(definitionFile).contains("Delta"));
        QCOMPARE(site.list()->selectedIds().size(), 1);
        QCOMPARE(definitions().gReportDefs.find(site.list()->selectedIds().first())->ReportTitle,
                 "Delta");
    }

    void runsWhatIsSelectedAndOpensItsPages()
    {
        Site site;
        site.select({"Gamma"});
        site.answers.click(QMessageBox::Ok);
        site.press(Qt::Key_O, Qt::ControlModifier);
        QVERIFY(site.answers.said.value(0).contains("Run the report first"));

        site.select({"Beta", "Gamma"});
        site.press(Qt::Key_F5);
        site.waitForEnd();
        QCOMPARE(site.answers.said.size(), 1);
        QCOMPARE(site.run(), QStringList({"Beta", "Gamma"}));
        QVERIFY2(site.status().contains("\nReport run finished: 2 reports.\n"),
                 qPrintable(site.status().right(300)));
        QCOMPARE(site.list()->selectedIds(), QStringList({"{Beta}", "{Gamma}"}));
        QCOMPARE(site.cell(2, 5), QString("OK"));

        site.select({"Gamma"});
        site.button("cmdReportOpen")->click();
        const OutputTree tree(gConfig());
        QCOMPARE(site.browsed, QStringList({nativePath(tree.folder() + "REPORTS.HTM"),
                                            nativePath(tree.reportPage("{Gamma}"))}));
        QDesktopServices::setUrlHandler("file", &site, "isMissing");
        site.answers.click(QMessageBox::Ok);
        site.button("cmdReportOpen")->click();
        QCOMPARE(site.answers.said.last(),
                 "Warning: Error loading browser to file://" + tree.reportPage("{Gamma}"));
    }

    /// What is saved during a run is for the next one, and neither loses what the other writes.
    void editsDuringARun()
    {
        Site site;
        site.select({"Alpha"});
        site.button("cmdReportView")->click();
        QVERIFY(site.isRunning());
        for (const char *name : {"mnuReportRemove", "mnuSetOutput", "mnuToolsAutomate"})
            QVERIFY(!site.action(name)->isEnabled());
        site.answers.add([&](QWidget &editor) {
            control<QLineEdit>(editor, "txtTitle")->setText("Delta");
            QTRY_VERIFY_WITH_TIMEOUT(!site.isRunning(), 60'000); // it ends under the editor
            control<QPushButton>(editor, "cmdOK")->click();
        });
        site.button("cmdReportModify")->click();
        QCOMPARE(site.titles(), QStringList({"Beta", "Delta", "Gamma"}));
        QCOMPARE(site.run(), QStringList("Delta"));
        const auto report = definitions().gReportDefs.find("{Alpha}");
        QVERIFY(report->ReportSchedules.at(0)->LastRunDate.secsTo(now()) < 600);
    }

    void cancelsByASecondClick()
    {
        Site site;
        const QByteArray before = site.box.read(definitionFile);
        site.select({"Alpha", "Beta"});
        site.answers.click(QMessageBox::Ok);
        site.button("cmdReportView")->click();
        site.button("cmdReportView")->click();
        site.waitForEnd();
        QVERIFY(!site.status().contains("Saving report definition."));
        QCOMPARE(site.answers.said, QStringList("Report Execution: Report execution cancelled."));
        QVERIFY(site.status().endsWith("\nReport run cancelled by user."));
        QVERIFY(site.browsed.isEmpty());
        QCOMPARE(site.box.read(definitionFile), before);
    }

    /// Nothing is saved before the user has seen it.
    void offersReportsToBeginWith()
    {
        Site site(false);
        QTRY_VERIFY(site.window->findChild<QPushButton *>("cmdOffer0"));
        auto *offer = site.button("cmdOffer0");
        QVERIFY2(offer->text().startsWith("Availability, last 7 days (3 devices, "),
                 qPrintable(offer->text()));
        const auto open = [&site, offer](bool saves) {
            site.answers.add([saves](QWidget &editor) {
                QCOMPARE(control<QComboBox>(editor, "cboChart")->currentText(),
                         "Last week by hour");
                QCOMPARE(control<QListWidget>(editor, "lstRules")->count(), 1);
                control<QPushButton>(editor, saves ? "cmdOK" : "cmdCancel")->click();
            });
            offer->click();
            return site.titles();
        };
        QCOMPARE(open(false), QStringList());
        QVERIFY(!fileExists(site.box.path(definitionFile)));
        QCOMPARE(open(true), QStringList("Availability, last 7 days"));
        QCOMPARE(site.cell(0, ReportList::Devices).trimmed(), "by rule");
        QCOMPARE(site.cell(0, ReportList::Schedules), "Every Monday at 06:00");
    }

    void countsDown()
    {
        Site site;
        FrozenClock clock("2024-05-01T10:00:00");
        site.automate();
        const auto panelAfter = [&](int elapsed) {
            clock.advance(elapsed);
            site.window->tick();
            return site.panel();
        };
        QCOMPARE(panelAfter(minute - 1000),
                 "Scheduled report run in 60 minutes. Due then: \u201cAlpha\u201d.");
        QVERIFY2(panelAfter(59 * minute + 999).startsWith("Scheduled report run in 1 minutes. "),
                 qPrintable(site.panel()));
        QVERIFY2(panelAfter(1 - 65 * minute).startsWith("Scheduled report run in 55 minutes. "),
                 qPrintable(site.panel())); // set back
        QVERIFY(!site.status().contains("Starting"));
    }

    void runsWhatIsDueEveryHour()
    {
        Site site;
        FrozenClock clock(currentInstant());
        site.automate();
        site.select({"Gamma"});
        clock.advance(61 * minute);
        site.answers.add([&](QWidget &box) {
            site.window->tick(); // waits for an open dialog
            box.close();
        });
        site.action("mnuToolsCompact")->trigger();
        QVERIFY(site.answers.said.value(0).startsWith("Feature Removed: Please use"));
        QCOMPARE(site.run(), QStringList());
        QVERIFY(site.panel().contains("waits"));

        site.window->tick();
        QVERIFY(site.isRunning() && !site.window->isEnabled());
        QCOMPARE(site.panel(), "Scheduled report run in progress. Closing the window cancels it.");
        site.waitForEnd();
        QVERIFY(site.window->isEnabled() && site.panel().isEmpty());
        QCOMPARE(site.run(), QStringList("Alpha"));
        QVERIFY(site.browsed.isEmpty());
        QVERIFY(site.window->findChild<QTimer *>("Timer1")->isActive());
        site.window->tick();
        QVERIFY2(site.panel().startsWith("Scheduled report run in 60 minutes. "),
                 qPrintable(site.panel()));
    }

    void sendsMailsAfterAScheduledRunAlone()
    {
        for (const bool isScheduled : {false, true}) {
            Site site;
            FrozenClock clock(currentInstant());
            saveFile(mailSettingsPath(), QByteArrayView(R"(<MAILSETTINGS>
<SERVER Host="127.0.0.1" Port="1" Security="NONE" Auth="NONE" From="r@example.org"/>
<SUBSCRIPTION SubscriptionID="{S}" ReportID="{Alpha}" To="ann@example.org"/></MAILSETTINGS>)"));
            site.select({"Alpha"});
            if (isScheduled) {
                site.automate();
                clock.advance(61 * minute);
                site.window->tick();
                site.waitForEnd();
                QVERIFY(site.window->isEnabled());
                const QString end = "Mails: 0 sent, 1 waiting for the next run.";
                QTRY_VERIFY_WITH_TIMEOUT(site.status().contains(end), 20'000);
                QVERIFY(site.status().contains("waits: Nothing answers at 127.0.0.1"));
            } else {
                site.runSelected();
                QVERIFY(!site.status().contains("ann@example.org"));
            }
        }
    }

    void asksBeforeItClosesDuringARun()
    {
        for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
            const bool closes = answer == QMessageBox::Yes;
            Site site;
            site.select({"Alpha", "Beta"});
            site.answers.click(answer);
            site.button("cmdReportView")->click();
            site.window->close();
            site.waitForEnd();
            QVERIFY(site.answers.said.value(0).contains("A report run is in progress."));
            QTRY_COMPARE(site.window->isVisible(), !closes);
            QCOMPARE(site.run().contains("Beta"), !closes);
        }
    }

    void switchesAutomationOnAndOff()
    {
        Site site;
        QAction *automate = site.action("mnuToolsAutomate");
        auto *tools = site.window->findChild<QMenu *>("mnuTools");
        site.answers.add([&site](QWidget &dialog) {
            site.window->tick(); // nothing counts down yet
            site.window->tick();
            QTest::keyClick(&dialog, Qt::Key_Escape);
        });
        automate->trigger();
        QVERIFY(!automate->isChecked() && site.panel().isEmpty());
        QVERIFY(site.scheduler.list.isEmpty());

        site.answers.add([](QWidget &dialog) { QTest::keyClick(&dialog, Qt::Key_Return); });
        site.answers.click(QMessageBox::Ok);
        automate->trigger();
        QCOMPARE(site.scheduler.saved.parameters,
                 QStringList({"/AUTO", "--home", site.box.path()}));
        site.window->tick();
        QVERIFY2(site.panel().startsWith("Scheduled report run in 60 minutes. "),
                 qPrintable(site.panel()));

        site.scheduler.fails = true;
        site.answers.click(QMessageBox::Ok);
        automate->trigger();
        QVERIFY(site.answers.said.last().endsWith("[70] no rights"));
        Q_EMIT tools->aboutToShow();
        QVERIFY(automate->isChecked() && !site.panel().isEmpty()); // as far as is known
        QCOMPARE(site.status().count("Error reading the scheduled tasks [70] no rights"), 1);
        site.scheduler.fails = false;
        site.scheduler.list.clear(); // by another hand
        Q_EMIT tools->aboutToShow();
        QVERIFY(!automate->isChecked() && site.panel().isEmpty());
    }

    void automationOfAnotherHome()
    {
        Site site;
        QAction *automate = site.action("mnuToolsAutomate");
        site.automate();
        site.scheduler.saved.workingDirectory = "/srv/other";
        Q_EMIT site.window->findChild<QMenu *>("mnuTools")->aboutToShow();
        QVERIFY(!automate->isChecked() && site.panel().isEmpty());
        QVERIFY(site.status().contains("another folder, '/srv/other', not those of"));
        site.answers.click(QMessageBox::No);
        automate->trigger();
        QCOMPARE(site.scheduler.saved.workingDirectory, "/srv/other");
        site.answers.click(QMessageBox::Yes);
        site.answers.add([](QWidget &dialog) { QTest::keyClick(&dialog, Qt::Key_Return); });
        site.answers.click(QMessageBox::Ok);
        automate->trigger();
        QVERIFY(automate->isChecked());
        QCOMPARE(site.scheduler.saved.workingDirectory, site.box.path());

        automate->trigger();
        QVERIFY(!automate->isChecked() && site.panel().isEmpty());
        QCOMPARE(site.scheduler.deleted, QStringList("VantrelGraphTool"));
    }

    void foldsTheStepsOfARun()
    {
        StatusBox box;
        const QStringList lines = {"Generating Report: [Servers]", "Calculating DBLength",
                                   "Generating Device Report: [Servers][a]",
                                   "Generating Chart: [Ping]", "Error generating chart 'x' [57] y"};
        const auto shown = [&box] {
            QStringList texts;
            for (QTextBlock at = box.document()->begin(); at.isValid(); at = at.next()) {
                if (at.isVisible())
                    texts.append(at.text());
            }
            return texts;
        };
        box.addLines(lines);
        QCOMPARE(shown(), QStringList({"Idle.", lines[0], lines[2], lines[4]}));
        box.showSteps(true);
        QCOMPARE(shown(), QStringList("Idle.") + lines);
        QCOMPARE(box.toPlainText(), "Idle.\n" + lines.join('\n'));
    }

    void followsARun()
    {
        const Site site;
        auto *model = site.window->findChild<ReportList *>();
        ReportRecord record;
        record.id = "{beta}";
        record.start = currentInstant();
        model->takeRecord(record);
        QCOMPARE(site.cell(1, 5), "Running…");
        record.end = record.start + 1000;
        record.result = ReportResult::Failed;
        model->takeRecord(record);
        QCOMPARE(site.cell(1, 5), "Failed");
        QCOMPARE(runLine({"Servers", "srv-1", "Ping", 200, 800}, 60'000),
                 "Servers – srv-1 – 200 of 800 data items, about 3 minutes left");
        QCOMPARE(runLine({"Servers", "", "", 0, 800}, 60'000), "Servers – 0 of 800 data items");
        QVERIFY(!site.window->findChild<QProgressBar *>("pbarCurrent")->isVisible());
    }

    void keepsResultsInSight()
    {
        const Site site;
        for (const int width : {1400, 800, 500}) {
            site.window->resize(width, 500);
            const QHeaderView *header = site.list()->header();
            QTRY_COMPARE(header->width(), site.list()->viewport()->width());
            QVERIFY(!header->isSectionHidden(5) && !header->isSectionHidden(6));
            QVERIFY(header->length() <= header->width());
            QCOMPARE(header->isSectionHidden(1), width == 500);
        }
    }

    void followsTheStatusToItsEnd()
    {
        StatusBox box;
        const auto showsEnd = [&box] {
            QTextCursor end(box.document());
            end.movePosition(QTextCursor::End);
            return box.viewport()->rect().contains(box.cursorRect(end));
        };
        box.resize(300, 100);
        box.show();
        for (int i = 1; i <= 400; ++i) {
            box.addLine(QStringLiteral("a line that wraps ").repeated(i % 9));
            QVERIFY2(showsEnd(), qPrintable(QString::number(i)));
        }
        const qsizetype size = box.toPlainText().size(); // of more than was added
        QVERIFY(size >= StatusBox::keptCharacters && size <= StatusBox::maxCharacters);
        box.resize(180, 60);
        QVERIFY(showsEnd());
        box.verticalScrollBar()->setValue(3); // the reader looks back
        box.addLine("the last");
        QVERIFY(box.verticalScrollBar()->value() < 10);
        QVERIFY(box.toPlainText().endsWith("\nthe last"));
    }
};

QTEST_MAIN(tst_frmGrapherMain)
#include "tst_frmGrapherMain.moc"
