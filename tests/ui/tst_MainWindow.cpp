#include "core/Clock.h"
#include "core/StartUp.h"
#include "definitions/DefinitionStores.h"
#include "demo/DemoReports.h"
#include "demo/MonitoringData.h"
#include "report/OutputTree.h"
#include "support/Answers.h"
#include "support/MemoryScheduler.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/Controls.h"
#include "ui/MainWindow.h"
#include "ui/ReportView.h"
#include "ui/StatusBox.h"

#include <QDesktopServices>
#include <QHeaderView>
#include <QMenu>
#include <QProgressBar>
#include <QScrollBar>
#include <QSplitter>

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
        demo::writeMonitoringData(gDataPath + QLatin1String("VTRGData.MDB"), plan);
        if (hasReports)
            box.write(definitionFile, definitions(plan.devices.front()));
        loadGrapherConfig();
        QDesktopServices::setUrlHandler("file", this, "browse");
        window = std::make_unique<frmGrapherMain>(scheduler, QStringList{"--home", box.path()});
        window->show();
        gStartupDone = false;
        window->loadReports();
        gStartupDone = true;
        window->start();
    }
    ~Site() override
    {
        window.reset();
        QDesktopServices::unsetUrlHandler("file");
        resetDefinitions();
    }

    /// "Alpha" falls due by a schedule, "Beta" has just run and is due next month, "Gamma" has no
    /// schedule.
    static QByteArray definitions(const demo::MonitoredDevice &device)
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
    /// Titles of the reports that have pages, in order.
    QStringList run() const
    {
        LoadReportDefs();
        QStringList result;
        for (const auto &report : gReportDefs) {
            if (QFile::exists(nativePath(reportPage(report->ReportID))))
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

class tst_MainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void changesOneReportAtATime()
    {
        const Site site;
        for (const QStringList &selected : {QStringList(), {"Alpha", "Beta"}}) {
            site.select(selected);
            site.press(Qt::Key_Return);
            site.press(Qt::Key_Delete);
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

        QFile::remove(site.box.path(definitionFile));
        QDir(site.box.path()).mkpath(QString(definitionFile) + "/in the way");
        site.select({"Gamma"});
        site.answers.click(QMessageBox::Yes);
        site.answers.click(QMessageBox::Ok);
        site.button("cmdReportRemove")->click();
        QVERIFY(site.answers.said.last().startsWith("Not Removed: "));
        QCOMPARE(site.titles(), QStringList({"Alpha", "Gamma"}));
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
        QVERIFY2(site.answers.allDone(), qPrintable(site.answers.said.join('|')));
        QCOMPARE(site.titles(), titles);
        QVERIFY(site.box.read(definitionFile).contains("Delta"));
        QCOMPARE(site.list()->selectedIds().size(), 1);
        QCOMPARE(gReportDefs.find(site.list()->selectedIds().first())->ReportTitle, "Delta");
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
        QCOMPARE(site.answers.said.size(), 1);
        QCOMPARE(site.run(), QStringList({"Beta", "Gamma"}));
        QVERIFY2(site.status().contains("\nReport run finished: 2 reports.\n"),
                 qPrintable(site.status().right(300)));
        QCOMPARE(site.list()->selectedIds(), QStringList({"{Beta}", "{Gamma}"}));
        QCOMPARE(site.cell(2, 5), QString("OK"));

        site.select({"Gamma"});
        site.button("cmdReportOpen")->click();
        QCOMPARE(site.browsed, QStringList({nativePath(outputFolder() + "REPORTS.HTM"),
                                            nativePath(reportPage("{Gamma}"))}));
        QDesktopServices::setUrlHandler("file", &site, "isMissing");
        site.answers.click(QMessageBox::Ok);
        site.button("cmdReportOpen")->click();
        QCOMPARE(site.answers.said.last(),
                 "Warning: Error loading browser to file://" + reportPage("{Gamma}"));
    }

    void changesNothingElseDuringARun()
    {
        Site site;
        site.select({"Beta"});
        QStringList enabled;
        QTimer::singleShot(0, this, [&] {
            for (QAction *action : site.window->findChildren<QAction *>()) {
                if (action->objectName().startsWith("mnu") && action->isEnabled())
                    enabled.append(action->objectName());
            }
            site.list()->doubleClicked(site.list()->model()->index(0, 0));
        });
        site.button("cmdReportView")->click();
        enabled.sort();
        QCOMPARE(enabled, QStringList({"mnuFileExit", "mnuHelp", "mnuReportOpen", "mnuReportView",
                                       "mnuToolsCompact"}));
        QVERIFY(site.answers.said.isEmpty()); // no editor came up
        QCOMPARE(site.run(), QStringList("Beta"));
    }

    void cancelsByASecondClick()
    {
        Site site;
        const QByteArray before = site.box.read(definitionFile);
        site.select({"Alpha", "Beta"});
        int done = 0;
        connect(control<QProgressBar>(*site.window, "pbarCurrent"), &QProgressBar::valueChanged,
                this, [&](int value) { done = std::max(done, value); });
        connect(control<StatusBox>(*site.window, "txtStatusInfo"), &QPlainTextEdit::textChanged,
                this, [&] {
                    if (!CancelRequested && site.status().contains("Summarizing"))
                        site.button("cmdReportView")->click();
                });
        site.answers.click(QMessageBox::Ok);
        site.button("cmdReportView")->click();
        QCOMPARE(done, 0); // what was not done does not count as done
        QCOMPARE(site.answers.said, QStringList("Report Execution: Report execution cancelled."));
        QVERIFY(site.status().endsWith("\nReport run cancelled by user."));
        QVERIFY(site.browsed.isEmpty());
        QCOMPARE(site.box.read(definitionFile), before);
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
        QCOMPARE(panelAfter(minute - 1000), "Scheduled report run in 60 minutes.");
        QCOMPARE(panelAfter(59 * minute + 999), "Scheduled report run in 1 minutes.");
        QCOMPARE(panelAfter(1 - 65 * minute), "Scheduled report run in 55 minutes."); // set back
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

        bool isLeftAlone = false;
        QTimer::singleShot(0, this, [&] { isLeftAlone = gAutoMode && !site.window->isEnabled(); });
        site.window->tick();
        QVERIFY(isLeftAlone && site.window->isEnabled() && !gAutoMode);
        QCOMPARE(site.run(), QStringList("Alpha"));
        QVERIFY(site.browsed.isEmpty());
        QVERIFY(site.window->findChild<QTimer *>("Timer1")->isActive());
        site.window->tick();
        QCOMPARE(site.panel(), QString("Scheduled report run in 60 minutes."));
    }

    void asksBeforeItClosesDuringARun()
    {
        for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
            const bool closes = answer == QMessageBox::Yes;
            Site site;
            site.select({"Alpha", "Beta"});
            QTimer::singleShot(0, this, [&] { site.window->close(); });
            site.answers.click(answer);
            site.button("cmdReportView")->click();
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
        QCOMPARE(site.panel(), QString("Scheduled report run in 60 minutes."));

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
        QVERIFY(site.answers.allDone() && automate->isChecked());
        QCOMPARE(site.scheduler.saved.workingDirectory, site.box.path());

        automate->trigger();
        QVERIFY(!automate->isChecked() && site.panel().isEmpty());
        QCOMPARE(site.scheduler.deleted, QStringList("VantrelGraphTool"));
    }

    void saysWhichDefinitionsAreBroken()
    {
        Site site;
        const QByteArray broken = "<CHARTDEFS>\n<CHART\n</CHARTDEFS>";
        site.box.write("Config/ChartDefs.XML", broken);
        site.answers.click(QMessageBox::Ok);
        site.window->loadReports();
        QVERIFY(site.answers.said.value(0).contains("ChartDefs.XML:3:"));
        QVERIFY(site.status().contains("ChartDefs.XML:3:"));
        site.select({"Gamma"});
        site.answers.click(QMessageBox::No);
        site.answers.click(QMessageBox::Ok);
        site.button("cmdReportView")->click();
        QVERIFY(site.answers.said.value(1).contains("ChartDefs.XML:3:"));
        QCOMPARE(site.run(), QStringList());
        QCOMPARE(site.box.read("Config/ChartDefs.XML"), broken);
    }

    void layoutComesBack()
    {
        const Site site;
        auto *info = site.window->findChild<QSplitter *>("sspInfo");
        site.window->setGeometry(40, 50, 620, 480);
        info->setSizes({100, 300});
        site.list()->header()->resizeSection(1, 177);
        site.list()->header()->moveSection(0, 1);
        site.window->close();
        MemoryScheduler scheduler;
        frmGrapherMain again(scheduler, {});
        again.restoreLayout();
        again.show();
        QCOMPARE(again.geometry(), QRect(40, 50, 620, 480));
        QCOMPARE(again.findChild<QSplitter *>("sspInfo")->sizes(), info->sizes());
        QCOMPARE(control<ReportView>(again, "lvReports")->header()->saveState(),
                 site.list()->header()->saveState());
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
        QVERIFY(size >= StatusBox::keptCharacters && size <= StatusBox::mostCharacters);
        box.resize(180, 60);
        QVERIFY(showsEnd());
        box.verticalScrollBar()->setValue(3); // the reader looks back
        box.addLine("the last");
        QVERIFY(box.verticalScrollBar()->value() < 10);
        QVERIFY(box.toPlainText().endsWith("\nthe last"));
    }
};

QTEST_MAIN(tst_MainWindow)
#include "tst_MainWindow.moc"
