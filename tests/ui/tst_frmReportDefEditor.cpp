#include "base/Clock.h"
#include "config/Program.h"
#include "database/Connection.h"
#include "definitions/Definitions.h"
#include "demo/MonitoringData.h"
#include "support/Answers.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/Controls.h"
#include "ui/editors/DeviceTree.h"
#include "ui/editors/frmReportDefEditor.h"

#include <QListWidget>
#include <QMenu>
#include <QTabWidget>
#include <QTableWidget>
#include <QTreeView>

namespace {

const QByteArray charts = R"(<CHARTDEFS>
<CHART ChartID="{C-1}" Title="Chart 1" ChartDuration="8"/>
<CHART ChartID="{C-2}" Title="Chart 2"/>
</CHARTDEFS>)";

const QByteArray scheduleFile = R"(<SCHEDULES>
<SCHEDULE ScheduleID="{S-1}" ScheduleName="At 6,12" SchedInterval="2" HourList="6,12"
 MonthDayList="1,2,3,4,5,6,7,8,9" MonthList="3"/>
<SCHEDULE ScheduleID="{S-2}" ScheduleName="At 12" SchedInterval="2" HourList="12"
 MonthDayList="1,2,3,4,5,6,7,8,9" MonthList="3"/>
<SCHEDULE ScheduleID="{S-3}" ScheduleName="At " SchedInterval="0"/>
</SCHEDULES>)";

const QString reports = R"(<REPORTDEFINITIONS>
<CUSTOMREPORT ReportID="{R}" ReportTitle="Weekly" ChartID="{C-2}" OutputFile=".\TEMP.HTML">
<SCHEDULE ScheduleID="{S-1}" LastRunDate="2024-03-01T06:03:00-00:00"/>
<DEVICE MUID="%1"><DATUM DataIDent="%2"/><DATUM DataIDent="%3"/></DEVICE>%4
</CUSTOMREPORT></REPORTDEFINITIONS>)";

struct Editor : Controls<frmReportDefEditor>
{
    explicit Editor(const clsReportDef &report)
        : before(report)
    {
        load(report);
        open();
        QTRY_VERIFY(!text("lblDatabase").startsWith("Reading"));
    }
    clsReportDef result() const { return stored(before); }
    bool changesNothing() const { return result().XMLConfig() == before.XMLConfig(); }

    QTreeView *tree() const { return find<QTreeView>("tvDevices"); }
    QModelIndex device(int row) const { return tree()->model()->index(row, 0); }
    void search(const QString &text) const { find<QLineEdit>("txtSearch")->setText(text); }
    QListWidgetItem *scheduleAt(int row) const
    {
        return find<QListWidget>("lvSchedules")->item(row);
    }
    void checkSchedule(int row, bool checked = true) const
    {
        scheduleAt(row)->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    }

    const clsReportDef before;
};

} // namespace

class tst_frmReportDefEditor : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_sandbox;
    demo::MonitoringPlan m_plan; ///< five devices of four data items
    clsReportDef m_report;

    clsReportDef reportWith(const QString &more) const
    {
        const auto &device = m_plan.devices[0];
        const QString text = reports.arg(device.muid, QString::number(device.items[0].dataIdent),
                                         QString::number(device.items[2].dataIdent), more);
        m_sandbox->write("ChartSelection.XML", text.toUtf8());
        definitions().LoadReportDefs();
        return *definitions().gReportDefs.find("{R}");
    }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        program().gDataPath = program().gGraphDataPath = m_sandbox->path() + '/';
        m_plan = demo::planMonitoring({5, 4, 1, 43200, 1700000000, 1});
        demo::writeMonitoringData(m_sandbox->path("VTRGData.MDB"), m_plan);
        m_sandbox->write("ChartDefs.XML", charts);
        m_sandbox->write("ChartSchedules.XML", scheduleFile);
        m_report = reportWith({});
    }
    void cleanup() { m_sandbox.reset(); }

    void opensAndStores()
    {
        const Editor editor(m_report);
        editor.checkLetters();
        QVERIFY(!editor.hasChanges() && editor.changesNothing());
        auto *title = editor.find<QLineEdit>("txtTitle");
        title->selectAll();
        QTest::keyClicks(title, " Daily ");
        QVERIFY(editor.hasChanges());
        QTest::keyClick(editor.find<QComboBox>("cboChart"), Qt::Key_Up);
        QTest::keyClicks(editor.find<QLineEdit>("txtOutputTemplate"), "MY.HTML");
        QCOMPARE(editor.result().ReportTitle, "Daily");
        QCOMPARE(editor.result().ChartID, "{C-1}");
        QCOMPARE(editor.result().OutputTemplate, "MY.HTML");
    }

    void refusals()
    {
        m_report.ChartID = "{C-9}"; // gone
        m_report.ReportDevices.clear();
        const Editor editor(m_report);
        QCOMPARE(editor.result().ChartID, "{C-9}");
        Answers answers;
        const auto refusal = [&](QMessageBox::StandardButton answer) {
            answers.click(answer);
            editor.click("cmdOK");
            return answers.said.last();
        };
        QVERIFY(refusal(QMessageBox::Ok).contains("chart definition"));
        QCOMPARE(editor.focusWidget()->objectName(), "cboChart");
        editor.find<QLineEdit>("txtTitle")->setText("  ");
        editor.find<QComboBox>("cboChart")->setCurrentText("Chart 2");
        QVERIFY(refusal(QMessageBox::Ok).contains("title"));
        editor.find<QLineEdit>("txtTitle")->setText("A");
        QVERIFY(refusal(QMessageBox::No).startsWith("Nothing Selected: "));
        QVERIFY(editor.isVisible());
        refusal(QMessageBox::Yes);
        QCOMPARE(editor.tag(), "SAVE");
    }

    /// Shown at once; asked about on OK where the changes have brought them.
    /// What the report is held against is edited, kept, refused where it is wrong, and tried.
    void targets()
    {
        m_report.Target = 99.5;
        m_report.Hours = ServiceHours("Mon-Fri 08:00-18:00");
        m_report.Keep = 3;
        m_report.Maintenance = {{wallDateTime(QDate(2024, 1, 2), QTime(20, 0)),
                                 wallDateTime(QDate(2024, 1, 2), QTime(22, 0, 1)), "Move"}};
        const auto device = *m_report.ReportDevices.begin();
        device->Target = 98;
        (*device->DataItems.begin())->Limit = 7.25;
        Editor editor(m_report);
        QVERIFY(!editor.hasChanges() && editor.changesNothing());
        auto *target = editor.find<QLineEdit>("txtTarget");
        target->setText("101");
        QVERIFY(editor.error().contains("'101' is not a percentage"));
        target->setText("97");
        auto *table = editor.find<QTableWidget>("tblMaintenance");
        table->item(0, 1)->setText("2024-01-02 19:00");
        QVERIFY(editor.error().contains("is not before"));
        editor.click("cmdMaintenanceAdd");
        table->setCurrentCell(0, 0);
        editor.click("cmdMaintenanceRemove");
        QCOMPARE(editor.error(), QString());
        QCOMPARE(*editor.result().Target, 97.0);
        QCOMPARE(editor.result().Maintenance.size(), size_t(1));
        editor.find<QCheckBox>("chkPdf")->setChecked(true);
        QVERIFY(editor.result().Pdf && editor.result().Keep == 3);

        // The device's own in the tree; a promise in percent stays within 100.
        editor.find<QCheckBox>("chkSelectedOnly")->setChecked(true);
        auto *model = editor.tree()->model();
        const QModelIndex own = editor.device(0).siblingAtColumn(DeviceTree::Own);
        QCOMPARE(own.data().toString(), "98");
        QVERIFY(!model->setData(own, "100.5", Qt::EditRole));
        QVERIFY(model->setData(own, "", Qt::EditRole));
        QVERIFY(!(*editor.result().ReportDevices.begin())->Target);
        QCOMPARE(*(*(*editor.result().ReportDevices.begin())->DataItems.begin())->Limit, 7.25);
        editor.click("cmdEffect");
        QTRY_VERIFY2(editor.text("lblEffect").contains("1 of 1 devices:"),
                     qPrintable(editor.text("lblEffect")));
    }

    void rules()
    {
        m_report.ReportDevices.clear();
        m_report.Rules = {{false, "*"}};
        Editor editor(m_report);
        auto *tabs = editor.find<QTabWidget>("tabReport");
        tabs->setCurrentIndex(1);
        auto *list = editor.find<QListWidget>("lstRules");
        auto *found = editor.find<QListWidget>("lstFound");
        QTRY_COMPARE(found->count(), 5);
        QVERIFY2(list->item(0)->text().endsWith("5 devices, 20 data items"),
                 qPrintable(list->item(0)->text()));
        QVERIFY(!editor.hasChanges() && editor.changesNothing());
        editor.click("cmdRuleExcept");
        QTest::keyClicks(editor.focusWidget(), m_plan.devices[1].name.toUpper());
        QTRY_COMPARE(found->count(), 4);
        QCOMPARE(tabs->tabText(1), "Rules (2)");
        QCOMPARE(editor.result().Rules[1].device, m_plan.devices[1].name.toUpper());
        QVERIFY(editor.result().Rules[1].isException);
        list->setCurrentRow(0);
        editor.click("cmdRuleRemove");
        QTRY_COMPARE(found->count(), 0);
        QCOMPARE(editor.result().Rules.size(), size_t(1));
        editor.click("cmdRuleRemove");
        QVERIFY(!editor.find<QWidget>("txtRuleDevice")->isEnabled());
    }

    void warnings()
    {
        definitions().gReportDefs.add("{TWIN}", std::make_shared<clsReportDef>(m_report));
        const Editor unchanged(m_report);
        QCOMPARE(unchanged.text("lblWarnings"), "The title 'Weekly' is given twice.");
        unchanged.click("cmdOK"); // nothing new
        QCOMPARE(unchanged.tag(), "SAVE");

        const Editor editor(m_report);
        editor.find<QComboBox>("cboChart")->setCurrentText("Chart 1");
        QVERIFY(editor.text("lblWarnings").contains("has a custom range"));
        Answers answers;
        answers.click(QMessageBox::No);
        editor.click("cmdOK");
        QVERIFY2(answers.said.value(0).endsWith("period.\n\nSave it all the same?"),
                 qPrintable(answers.said.value(0)));
        QVERIFY(editor.isVisible());
        answers.click(QMessageBox::Yes);
        editor.click("cmdOK");
        QCOMPARE(editor.tag(), "SAVE");
    }

    void searchWithTheKeyboard()
    {
        Editor editor(m_report);
        QTest::keyClick(&editor, Qt::Key_F, Qt::ControlModifier);
        auto *search = editor.find<QLineEdit>("txtSearch");
        QTest::keyClicks(search, m_plan.devices[2].muid.toLower());
        QCOMPARE(editor.text("lblShown"), "Shown: 1 device, 4 data items");
        QTest::keyClick(search, Qt::Key_Return); // does not close the editor
        QVERIFY(editor.isVisible() && editor.tree()->hasFocus());
        QTest::keyClick(editor.tree(), Qt::Key_Space);
        QCOMPARE(editor.text("lblSelected"), "2 devices, 6 data items selected of 5 and 20");
        QTest::keyClick(editor.tree(), Qt::Key_Down);
        QTest::keyClick(editor.tree(), Qt::Key_Down, Qt::ShiftModifier);
        QTest::keyClick(editor.tree(), Qt::Key_Space); // two items at once
        QCOMPARE(editor.text("lblSelected"), "2 devices, 4 data items selected of 5 and 20");
        search->setText("nowhere");
        QCOMPARE(editor.text("lblShown"), "Nothing is found.");
    }

    void whatIsGoneStaysUntilUnchecked()
    {
        const Editor editor(reportWith(R"(<DEVICE MUID="{GONE}"><DATUM DataIDent="4711"/></DEVICE>
<SCHEDULE ScheduleID="{S-9}"/>)"));
        QCOMPARE(editor.text("lblSelected"),
                 "2 devices, 3 data items selected of 5 and 20; of these not in the database: 1 "
                 "device, 1 data item");
        QVERIFY(editor.tree()->isExpanded(editor.device(0)));
        QVERIFY(editor.scheduleAt(0)->text().contains("{S-9}"));
        QVERIFY(!editor.hasChanges());
        QCOMPARE(editor.result().ReportDevices.size(), 2);
        QVERIFY(editor.result().ReportSchedules.contains("{S-9}"));
        editor.tree()->setCurrentIndex(editor.device(0));
        QTest::keyClick(editor.tree(), Qt::Key_Space);
        QCOMPARE(editor.result().ReportDevices.size(), 1);
        editor.checkSchedule(0, false);
        QVERIFY(!editor.result().ReportSchedules.contains("{S-9}"));
    }

    void databaseOutOfReach()
    {
        const QString file = m_sandbox->path("VTRGData.MDB");
        QVERIFY(QFile::rename(file, file + ".away"));
        const Editor editor(m_report);
        const auto *cmdTryAgain = editor.find<QPushButton>("cmdTryAgain");
        QVERIFY(cmdTryAgain->isVisible());
        QVERIFY(editor.text("lblDatabase").contains("VTRGData.MDB"));
        QCOMPARE(editor.text("lblSelected"), "1 device, 2 data items selected");
        QVERIFY(editor.changesNothing());
        editor.click("cmdTryAgain");
        QTRY_VERIFY(cmdTryAgain->isVisible());
        QVERIFY(QFile::rename(file + ".away", file));
        editor.click("cmdTryAgain");
        QTRY_VERIFY(!cmdTryAgain->isVisible());
        QTRY_COMPARE(editor.text("lblSelected"), "1 device, 2 data items selected of 5 and 20");
        QVERIFY(!editor.hasChanges() && editor.changesNothing());
    }

    /// The window goes while its reading goes on.
    void closedWhileReading()
    {
        std::make_unique<frmReportDefEditor>()->load(m_report);
        QTest::qWait(50);
    }

    /// A schedule that is newly chosen is not due at once; one that stays keeps its last run.
    void schedules()
    {
        FrozenClock clock("2024-03-06T10:20:00");
        const Editor editor(m_report);
        const auto *runs = editor.find<QListWidget>("lvNextRuns");
        QVERIFY(runs->item(0)->text().endsWith("12:00  At 6,12"));
        editor.checkSchedule(2); // in the order of their names
        QVERIFY(runs->item(0)->text().endsWith("12:00  At 6,12, At 12"));
        QVERIFY(runs->item(1)->text().endsWith("06:00  At 6,12"));
        editor.checkSchedule(1, false);
        editor.checkSchedule(1);
        const clsReportDef stored = editor.result();
        QCOMPARE(stored.ReportSchedules.find("{S-1}")->LastRunDate,
                 m_report.ReportSchedules.find("{S-1}")->LastRunDate);
        const auto chosen = stored.ReportSchedules.find("{S-2}");
        QVERIFY(!IsReportDue(*chosen, *definitions().gScheduleDefs.find("{S-2}")));
        clock.advance(qint64(100) * 60 * 1000); // noon
        QVERIFY(IsReportDue(*chosen, *definitions().gScheduleDefs.find("{S-2}")));

        for (const int row : {1, 2})
            editor.checkSchedule(row, false);
        QVERIFY(runs->item(0)->text().startsWith("No schedule is selected"));
        editor.checkSchedule(0);
        QCOMPARE(runs->item(0)->text(), "The selected schedules never run.");
        QCOMPARE(editor.result().ReportSchedules.size(), 1);
    }

    void addsAScheduleAndChangesAChart()
    {
        const Editor editor(m_report);
        Answers answers;
        answers.add([](QWidget &schedule) { control<QPushButton>(schedule, "cmdOK")->click(); });
        editor.click("cmdScheduleAdd");
        QCOMPARE(editor.result().ReportSchedules.size(), 2);
        const QListWidgetItem *marked = editor.find<QListWidget>("lvSchedules")->currentItem();
        QVERIFY(marked->text().startsWith("New Schedule"));
        definitions().LoadScheduleDefs(); // it is in the file already
        QCOMPARE(definitions().gScheduleDefs.size(), 4);

        answers.add([](QWidget &chart) {
            control<QLineEdit>(chart, "txtTitle")->setText("Renamed");
            control<QPushButton>(chart, "cmdOK")->click();
        });
        editor.click("cmdChartModify");
        definitions().LoadChartDefs();
        QCOMPARE(definitions().gChartDefs.find("{C-2}")->ChartTitle, "Renamed");
        QCOMPARE(editor.find<QComboBox>("cboChart")->currentText(), "Renamed");
        QCOMPARE(editor.result().ChartID, "{C-2}");
    }
};

QTEST_MAIN(tst_frmReportDefEditor)
#include "tst_frmReportDefEditor.moc"
