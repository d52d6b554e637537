#include "core/Clock.h"
#include "core/StartUp.h"
#include "core/platform/EventLog.h"
#include "definitions/DefinitionStores.h"
#include "demo/DemoReports.h"
#include "demo/MonitoringData.h"
#include "report/OutputTree.h"
#include "support/Answers.h"
#include "support/MemoryScheduler.h"
#include "support/Sandbox.h"
#include "ui/MainWindow.h"
#include "ui/ReportView.h"
#include "ui/StatusBox.h"

#include <QComboBox>
#include <QDesktopServices>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QStatusBar>
#include <QTest>

namespace {

constexpr int minute = 60'000;
constexpr auto definitionFile = "Config/ChartSelection.XML";

/// A home with a small monitoring database and three reports, and the main window on it.
class Site : public QObject
{
    Q_OBJECT

public:
    explicit Site(bool hasReports = true)
    {
        setEventObserver([](int, EventType, const QString &message) { events.append(message); });
        events.clear();
        locateProgramFolder(box.path());
        InitGrapher();
        const demo::MonitoringPlan plan =
            demo::planMonitoring({3, 3, 1, 900, currentInstant() / 1000, 1});
        demo::writeMonitoringData(gDataPath + QLatin1String("VTRGData.MDB"), plan);
        if (hasReports)
            box.write(definitionFile, definitions(plan));
        loadGrapherConfig();
        QDesktopServices::setUrlHandler("file", this, "browse");
        window = std::make_unique<frmGrapherMain>(scheduler, QStringList{"--home", box.path()});
        window->show();
        gStartupDone = false;
        window->loadReports();
        gStartupDone = true;
        window->start();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }
    ~Site() override
    {
        window.reset();
        QDesktopServices::unsetUrlHandler("file");
        setEventObserver(nullptr);
        resetDefinitions();
    }

    /// Three reports over the first device: "Alpha" falls due by a schedule, "Beta" is due in a
    /// year, "Gamma" has no schedule.
    static QByteArray definitions(const demo::MonitoringPlan &plan)
    {
        const auto &device = plan.devices.front();
        QByteArray text = "<REPORTDEFINITIONS>";
        const auto add = [&](const char *title, const QByteArray &schedule) {
            text += QByteArray("<CUSTOMREPORT ReportID=\"{") + title + "}\" ReportTitle=\"" +
                    title + "\" ChartID=\"{A1000001-0000-4000-8000-000000000001}\">" + schedule +
                    "<DEVICE MUID=\"" + device.muid.toUtf8() + "\"><DATUM DataIDent=\"" +
                    QByteArray::number(device.items.front().dataIdent) +
                    "\"/></DEVICE></CUSTOMREPORT>";
        };
        add("Beta", scheduled("2099-01-01T00:00:00-00:00"));
        add("Gamma", {});
        add("Alpha", scheduled("2024-01-01T00:00:00-00:00"));
        return text + "</REPORTDEFINITIONS>";
    }
    static QByteArray scheduled(const QByteArray &lastRun)
    {
        return "<SCHEDULE ScheduleID=\"{B1000001-0000-4000-8000-000000000005}\" LastRunDate=\"" +
               lastRun + "\"/>";
    }

    template <typename T>
    T *find(const char *name) const
    {
        return window->findChild<T *>(QLatin1String(name));
    }
    QAction *action(const char *name) const { return find<QAction>(name); }
    QPushButton *button(const char *name) const { return find<QPushButton>(name); }
    ReportView *list() const { return find<ReportView>("lvReports"); }
    QString status() const { return find<StatusBox>("txtStatusInfo")->toPlainText(); }
    QString panel() const
    {
        return find<QStatusBar>("StatusBar1")->findChild<QLabel *>("lblCountdown")->text();
    }
    QStringList titles() const
    {
        QStringList result;
        for (int row = 0; row < list()->model()->rowCount(); ++row)
            result.append(list()->model()->index(row, 0).data().toString());
        return result;
    }
    void select(const QStringList &wanted) const
    {
        list()->clearSelection();
        for (int row = 0; row < list()->model()->rowCount(); ++row) {
            const QModelIndex index = list()->model()->index(row, 0);
            if (wanted.contains(index.data().toString()))
                list()->selectionModel()->select(index, QItemSelectionModel::Select |
                                                            QItemSelectionModel::Rows);
        }
    }
    /// Whether a report was run since its definition was written.
    bool wasRun(const QString &title) const
    {
        LoadReportDefs();
        const auto report = gReportDefs.find('{' + title + '}');
        return report && QFile::exists(nativePath(reportFolder(*report) + gConfig->TOU_REPORT));
    }
    /// Has the countdown run by itself: as if the hourly job were registered.
    void automate()
    {
        scheduler.list = "VantrelGraphTool\n";
        window->updateAutomate();
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
    static inline QStringList events;
};

} // namespace

class tst_MainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void enablesWhatTheSelectionAllows_data()
    {
        QTest::addColumn<QStringList>("selected");
        QTest::addColumn<bool>("run");
        QTest::addColumn<bool>("change");
        QTest::newRow("none") << QStringList() << false << false;
        QTest::newRow("one") << QStringList{"Beta"} << true << true;
        QTest::newRow("two") << QStringList{"Alpha", "Beta"} << true << false;
    }
    void enablesWhatTheSelectionAllows()
    {
        QFETCH(QStringList, selected);
        QFETCH(bool, run);
        QFETCH(bool, change);
        const Site site;
        site.select(selected);
        QCOMPARE(site.list()->selectedIds().size(), selected.size());
        QVERIFY(site.action("mnuReportAdd")->isEnabled());
        for (const char *name : {"mnuReportModify", "mnuReportRemove", "mnuReportOpen"})
            QVERIFY2(site.action(name)->isEnabled() == change, name);
        for (const char *name : {"cmdReportModify", "cmdReportRemove", "cmdReportOpen"})
            QVERIFY2(site.button(name)->isEnabled() == change, name);
        QCOMPARE(site.action("mnuReportView")->isEnabled(), run);
        QCOMPARE(site.button("cmdReportView")->isEnabled(), run);
    }

    void sortsByAClickOnAHeader()
    {
        const Site site;
        QCOMPARE(site.titles(), QStringList({"Alpha", "Beta", "Gamma"}));
        site.select({"Beta"});
        QHeaderView *header = site.list()->header();
        const QPoint title(header->sectionViewportPosition(0) + 10, header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, title);
        QCOMPARE(site.titles(), QStringList({"Gamma", "Beta", "Alpha"}));
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, title);
        QCOMPARE(site.titles(), QStringList({"Alpha", "Beta", "Gamma"}));
        site.list()->sortByColumn(6, Qt::AscendingOrder); // the next run
        QCOMPARE(site.titles(), QStringList({"Alpha", "Beta", "Gamma"}));
        site.list()->sortByColumn(6, Qt::DescendingOrder);
        QCOMPARE(site.titles(), QStringList({"Gamma", "Beta", "Alpha"}));
        QCOMPARE(site.list()->selectedIds(), QStringList("{Beta}"));
    }

    void showsWhereEachReportStands_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QStringList>("cells");
        QTest::newRow("due") << 0 << QStringList({"Alpha", "1", "", "Due now"});
        QTest::newRow("not due") << 1 << QStringList({"Beta", "1", "", "2099-01-01 01:00"});
        QTest::newRow("no schedule") << 2 << QStringList({"Gamma", "1", "", "Not scheduled"});
    }
    void showsWhereEachReportStands()
    {
        QFETCH(int, row);
        QFETCH(QStringList, cells);
        const LocalZone zone("UTC");
        const Site site;
        QStringList shown;
        for (const int column : {0, 2, 5, 6})
            shown.append(site.list()->model()->index(row, column).data().toString());
        QCOMPARE(shown, cells);
        QCOMPARE(site.list()->model()->index(2, 4).data().toString(), QString("Never"));
    }

    void asksBeforeAReportGoes_data()
    {
        QTest::addColumn<QMessageBox::StandardButton>("answer");
        QTest::newRow("no") << QMessageBox::No;
        QTest::newRow("yes") << QMessageBox::Yes;
    }
    void asksBeforeAReportGoes()
    {
        QFETCH(QMessageBox::StandardButton, answer);
        Site site;
        const QByteArray before = site.box.read(definitionFile);
        site.select({"Beta"});
        site.answers.click(answer);
        QTest::keyClick(site.list(), Qt::Key_Delete);
        QCOMPARE(site.answers.said,
                 QStringList("Remove Chart Definition: This operation can NOT be undone.\n"
                             "Are you sure you wish to remove the selected report definition?"));
        const bool gone = answer == QMessageBox::Yes;
        QCOMPARE(site.titles(),
                 gone ? QStringList({"Alpha", "Gamma"}) : QStringList({"Alpha", "Beta", "Gamma"}));
        QCOMPARE(site.box.read(definitionFile) == before, !gone);
        QCOMPARE(site.box.read(definitionFile).contains("Beta"), !gone);
    }

    void keepsAReportThatCannotBeRemoved()
    {
        Site site;
        QFile::remove(site.box.path(definitionFile));
        QDir(site.box.path()).mkpath(QString(definitionFile) + "/in the way");
        site.select({"Beta"});
        site.answers.click(QMessageBox::Yes);
        site.answers.click(QMessageBox::Ok);
        site.button("cmdReportRemove")->click();
        QCOMPARE(site.answers.said.size(), 2);
        QVERIFY(site.answers.said[1].startsWith("Not Removed: "));
        QCOMPARE(site.titles(), QStringList({"Alpha", "Beta", "Gamma"}));
    }

    void opensTheEditor_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifier>("modifier");
        QTest::addColumn<bool>("adds");
        QTest::newRow("Return") << int(Qt::Key_Return) << Qt::NoModifier << false;
        QTest::newRow("Enter") << int(Qt::Key_Enter) << Qt::KeypadModifier << false;
        QTest::newRow("Ctrl+N") << int(Qt::Key_N) << Qt::ControlModifier << true;
    }
    void opensTheEditor()
    {
        QFETCH(int, key);
        QFETCH(Qt::KeyboardModifier, modifier);
        QFETCH(bool, adds);
        Site site;
        const QByteArray before = site.box.read(definitionFile);
        site.select({"Beta"});
        QString opened;
        site.answers.add([&](QWidget &editor) {
            opened = editor.objectName();
            QTest::keyClick(&editor, Qt::Key_Escape);
        });
        QTest::keyClick(site.list(), Qt::Key(key), modifier);
        QCOMPARE(opened, QString("frmReportDefEditor"));
        QVERIFY2(site.answers.said.isEmpty(), qPrintable(site.answers.said.join('|')));
        QCOMPARE(site.box.read(definitionFile), before);
        QCOMPARE(site.titles(), QStringList({"Alpha", "Beta", "Gamma"}));
        QCOMPARE(site.status().contains("\nLoading report definition editor.\n"), adds);
        QCOMPARE(site.status().endsWith("\nIdle."), adds);
    }

    void savesWhatTheEditorHolds_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QStringList>("titles");
        QTest::newRow("add") << "mnuReportAdd" << QStringList({"Alpha", "Beta", "Delta", "Gamma"});
        QTest::newRow("modify") << "mnuReportModify" << QStringList({"Alpha", "Delta", "Gamma"});
    }
    void savesWhatTheEditorHolds()
    {
        QFETCH(QString, action);
        QFETCH(QStringList, titles);
        Site site;
        site.select({"Beta"});
        site.answers.add([](QWidget &editor) {
            auto *txtTitle = editor.findChild<QLineEdit *>("txtTitle");
            txtTitle->setText("Delta");
            auto *cboChart = editor.findChild<QComboBox *>("cboChart");
            cboChart->setCurrentIndex(cboChart->findText("Last 24 hours"));
            editor.findChild<QPushButton *>("cmdOK")->click();
            if (editor.isVisible())
                static_cast<QDialog &>(editor).done(QDialog::Rejected); // the titles tell
        });
        if (action == "mnuReportAdd")
            site.answers.click(QMessageBox::Yes); // though it has no device yet
        site.action(qPrintable(action))->trigger();
        QVERIFY2(site.answers.allDone(), qPrintable(site.answers.said.join('|')));
        QCOMPARE(site.titles(), titles);
        QVERIFY(site.box.read(definitionFile).contains("Delta"));
        QCOMPARE(site.list()->selectedIds().size(), 1);
        QCOMPARE(gReportDefs.find(site.list()->selectedIds().first())->ReportTitle,
                 QString("Delta"));
        QVERIFY(site.button("cmdReportModify")->isEnabled());
    }

    void opensNoEditorForTwo()
    {
        Site site;
        site.select({"Alpha", "Beta"});
        QTest::keyClick(site.list(), Qt::Key_Return);
        QTest::keyClick(site.list(), Qt::Key_Delete);
        QTest::qWait(20);
        QVERIFY(!QApplication::activeModalWidget());
        QVERIFY(site.answers.said.isEmpty());
    }

    void saysWhatToDoFirst()
    {
        const Site empty(false);
        QVERIFY(empty.button("cmdFirstReport")->isVisible());
        const Site site;
        QVERIFY(!site.button("cmdFirstReport")->isVisible());
    }

    void runsWhatIsSelected()
    {
        Site site;
        site.select({"Beta", "Gamma"});
        QTest::keyClick(site.list(), Qt::Key_F5);
        QVERIFY2(site.answers.said.isEmpty(), qPrintable(site.answers.said.join('|')));
        QVERIFY(site.wasRun("Beta"));
        QVERIFY(site.wasRun("Gamma"));
        QVERIFY(!site.wasRun("Alpha"));
        QCOMPARE(site.browsed, QStringList(nativePath(outputFolder() + "REPORTS.HTM")));
        QVERIFY2(site.status().startsWith("Idle.\nStarting report build.\n"),
                 qPrintable(site.status()));
        QVERIFY2(site.status().contains("\nReport run finished: 2 reports.\n"),
                 qPrintable(site.status().right(300)));
        QCOMPARE(site.button("cmdReportView")->text(), QString("&Run"));
        QCOMPARE(site.button("cmdReportView")->toolTip(), QString("Click to start reporing..."));
        QCOMPARE(site.list()->selectedIds(), QStringList({"{Beta}", "{Gamma}"}));
        QCOMPARE(site.list()->model()->index(2, 5).data().toString(), QString("OK"));
        QVERIFY(site.action("mnuReportAdd")->isEnabled());
    }

    void changesNothingElseDuringARun()
    {
        Site site;
        site.select({"Beta"});
        QStringList enabled;
        QString toolTip;
        int most = 0;
        QTimer::singleShot(0, this, [&] {
            for (QAction *action : site.window->findChildren<QAction *>()) {
                if (action->objectName().startsWith("mnu") && action->isEnabled())
                    enabled.append(action->objectName());
            }
            toolTip = site.button("cmdReportView")->toolTip();
            site.list()->doubleClicked(site.list()->model()->index(0, 0));
        });
        auto *bar = site.find<QProgressBar>("pbarCurrent");
        connect(bar, &QProgressBar::valueChanged, this,
                [&] { most = std::max(most, bar->value()); });
        site.button("cmdReportView")->click();
        enabled.sort();
        QCOMPARE(enabled, QStringList({"mnuFileExit", "mnuHelp", "mnuReportOpen", "mnuReportView",
                                       "mnuToolsCompact"}));
        QCOMPARE(toolTip, QString("Click to cancel reporting..."));
        QVERIFY(site.answers.said.isEmpty()); // no editor came up
        QCOMPARE(most, 1);                    // its one item
        QVERIFY(site.wasRun("Beta"));
    }

    void cancelsByASecondClick()
    {
        Site site;
        const QByteArray before = site.box.read(definitionFile);
        site.select({"Alpha", "Beta"});
        QTimer::singleShot(0, this, [&] { site.button("cmdReportView")->click(); });
        site.answers.click(QMessageBox::Ok);
        site.button("cmdReportView")->click();
        QCOMPARE(site.answers.said, QStringList("Report Execution: Report execution cancelled."));
        QVERIFY(site.status().contains("\nCancel requested.\n"));
        QVERIFY(site.status().endsWith("\nReport run cancelled by user."));
        QCOMPARE(site.button("cmdReportView")->text(), QString("&Run"));
        QVERIFY(site.browsed.isEmpty());
        QCOMPARE(site.box.read(definitionFile), before);
    }

    void countsDown_data()
    {
        QTest::addColumn<int>("elapsed"); // milliseconds
        QTest::addColumn<QString>("text");
        QTest::newRow("at once") << 0 << "Scheduled report run in 60 minutes.";
        QTest::newRow("a second short") << minute - 1000 << "Scheduled report run in 60 minutes.";
        QTest::newRow("a minute") << minute << "Scheduled report run in 59 minutes.";
        QTest::newRow("the last") << 60 * minute - 1 << "Scheduled report run in 1 minutes.";
        QTest::newRow("clock set back") << -5 * minute << "Scheduled report run in 55 minutes.";
    }
    void countsDown()
    {
        QFETCH(int, elapsed);
        QFETCH(QString, text);
        Site site;
        FrozenClock clock("2024-05-01T10:00:00");
        site.window->tick();
        QVERIFY(site.panel().isEmpty()); // unchecked
        site.automate();
        site.window->tick();
        QVERIFY(site.panel().isEmpty()); // it starts
        clock.advance(elapsed);
        site.window->tick();
        QCOMPARE(site.panel(), text);
        QVERIFY(!site.status().contains("Starting"));
    }

    void runsWhatIsDueEveryHour()
    {
        Site site;
        FrozenClock clock(currentInstant());
        site.automate();
        site.select({"Gamma"});
        site.window->tick();
        clock.advance(60 * minute);
        bool isEnabled = true;
        bool isAutomatic = false;
        qsizetype selected = 0;
        QTimer::singleShot(0, this, [&] {
            isEnabled = site.window->isEnabled();
            isAutomatic = gAutoMode;
            selected = site.list()->selectedIds().size();
        });
        site.window->tick();
        QVERIFY(!isEnabled && isAutomatic);
        QCOMPARE(selected, 3);
        QVERIFY(site.wasRun("Alpha"));
        QVERIFY(!site.wasRun("Beta"));
        QVERIFY(!site.wasRun("Gamma"));
        QVERIFY(site.browsed.isEmpty());
        QVERIFY(site.window->isEnabled() && !gAutoMode);
        QVERIFY(site.find<QTimer>("Timer1")->isActive());
        site.window->tick();
        QCOMPARE(site.panel(), QString("Scheduled report run in 60 minutes."));
    }

    void waitsForAnOpenDialog()
    {
        Site site;
        FrozenClock clock(currentInstant());
        site.automate();
        site.window->tick();
        clock.advance(61 * minute);
        site.answers.add([&](QWidget &box) {
            site.window->tick();
            box.close();
        });
        site.action("mnuToolsCompact")->trigger();
        QVERIFY(!site.wasRun("Alpha"));
        QVERIFY(site.panel().contains("waits"));
        site.window->tick();
        QVERIFY(site.wasRun("Alpha"));
    }

    void logsACancelledScheduledRun()
    {
        Site site;
        FrozenClock clock(currentInstant());
        site.automate();
        site.window->tick();
        clock.advance(60 * minute);
        QTimer::singleShot(0, this, [] { CancelRequested = true; });
        site.window->tick();
        QVERIFY(Site::events.contains("Report AutoGraph execution cancelled."));
        QVERIFY(site.answers.said.isEmpty());
    }

    void asksBeforeItClosesDuringARun_data()
    {
        QTest::addColumn<QMessageBox::StandardButton>("answer");
        QTest::newRow("no") << QMessageBox::No;
        QTest::newRow("yes") << QMessageBox::Yes;
    }
    void asksBeforeItClosesDuringARun()
    {
        QFETCH(QMessageBox::StandardButton, answer);
        Site site;
        site.select({"Alpha", "Beta"});
        QTimer::singleShot(0, this, [&] { site.window->close(); });
        site.answers.click(answer);
        site.button("cmdReportView")->click();
        QCOMPARE(site.answers.said.size(), 1);
        QVERIFY(site.answers.said[0].contains("A report run is in progress."));
        const bool closes = answer == QMessageBox::Yes;
        QTRY_COMPARE(site.window->isVisible(), !closes);
        QCOMPARE(site.wasRun("Beta"), !closes);
    }

    void switchesAutomationOnAndOff()
    {
        Site site;
        QAction *automate = site.action("mnuToolsAutomate");
        site.answers.add([&site](QWidget &dialog) {
            site.window->tick(); // nothing counts down yet
            site.window->tick();
            QTest::keyClick(&dialog, Qt::Key_Escape);
        });
        automate->trigger();
        QVERIFY(!automate->isChecked());
        QVERIFY(site.panel().isEmpty());
        QVERIFY(site.scheduler.list.isEmpty());

        site.answers.add([](QWidget &dialog) { QTest::keyClick(&dialog, Qt::Key_Return); });
        site.answers.click(QMessageBox::Ok);
        automate->trigger();
        QCOMPARE(site.answers.said,
                 QStringList("Automate Graphing: Scheduled task has been added."));
        QVERIFY(automate->isChecked());
        QCOMPARE(site.scheduler.saved.parameters,
                 QStringList({"/AUTO", "--home", site.box.path()}));
        site.window->tick();
        QCOMPARE(site.panel(), QString("Scheduled report run in 60 minutes."));

        automate->trigger();
        QVERIFY(!automate->isChecked());
        QCOMPARE(site.scheduler.deleted, QStringList("VantrelGraphTool"));
        QVERIFY(site.panel().isEmpty());
    }

    void showsWhatTheSchedulerSays()
    {
        Site site;
        site.automate();
        QAction *automate = site.action("mnuToolsAutomate");
        QVERIFY(automate->isChecked());
        site.scheduler.fails = true;
        site.answers.click(QMessageBox::Ok);
        automate->trigger();
        QCOMPARE(site.answers.said.size(), 1);
        QVERIFY(site.answers.said[0].endsWith("[70] no rights"));
        site.scheduler.fails = false;
        site.window->updateAutomate();
        QVERIFY(automate->isChecked()); // nothing was taken back
    }

    void opensAFinishedPage()
    {
        Site site;
        site.select({"Gamma"});
        site.answers.click(QMessageBox::Ok);
        QTest::keyClick(site.list(), Qt::Key_O, Qt::ControlModifier);
        QVERIFY(site.answers.said.value(0).contains("Run the report first"));
        QVERIFY(site.browsed.isEmpty());
        site.button("cmdReportView")->click();
        site.browsed.clear();
        site.button("cmdReportOpen")->click();
        const auto report = gReportDefs.find("{Gamma}");
        QCOMPARE(site.browsed,
                 QStringList(nativePath(reportFolder(*report) + gConfig->TOU_REPORT)));
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
        QCOMPARE(site.answers.said.size(), 3);
        QVERIFY(site.answers.said[1].contains("ChartDefs.XML:3:"));
        QCOMPARE(site.answers.said[2], QString("Report Execution: Report execution cancelled."));
        QVERIFY(!site.wasRun("Gamma"));
        QCOMPARE(site.box.read("Config/ChartDefs.XML"), broken);
    }

    void leavesTheDatabaseAlone()
    {
        Site site;
        site.answers.click(QMessageBox::Ok);
        site.action("mnuToolsCompact")->trigger();
        QCOMPARE(site.answers.said,
                 QStringList("Feature Removed: Please use the Compact Database option from the "
                             "Vantrel Console Tools menu."));
    }

    void cutsTheStatusText()
    {
        StatusBox box;
        QCOMPARE(box.toPlainText(), QString("Idle."));
        const QString line(99, 'x');
        for (int i = 0; i < 319; ++i)
            box.addLine(line);
        QCOMPARE(box.toPlainText().size(), 5 + 319 * 100);
        box.addLine(QString(93, 'y'));
        QCOMPARE(box.toPlainText().size(), 31'999);
        box.addLine({});
        QCOMPARE(box.toPlainText().size(), StatusBox::mostCharacters);
        box.addLine({});
        const QString kept = box.toPlainText();
        QCOMPARE(kept.size(), StatusBox::keptCharacters);
        QVERIFY(kept.endsWith(QString(93, 'y') + "\n\n"));
    }
};

QTEST_MAIN(tst_MainWindow)
#include "tst_MainWindow.moc"
