#include "core/Clock.h"
#include "core/State.h"
#include "data/Connection.h"
#include "definitions/DefinitionStores.h"
#include "demo/MonitoringData.h"
#include "support/Answers.h"
#include "support/Sandbox.h"
#include "ui/DeviceTree.h"
#include "ui/ReportDefEditor.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTreeView>

namespace {

const QString presentTime = "2024-03-06T10:20:00"; // a Wednesday

std::shared_ptr<clsScheduleDef> schedule(const QString &id, const QString &hours)
{
    auto made = std::make_shared<clsScheduleDef>();
    made->ScheduleID = id;
    made->ScheduleName = "At " + hours;
    made->SchedInterval = hours.isEmpty() ? NotScheduled : Daily;
    made->HourList = hours;
    made->MonthDayList = "1,2,3,4,5,6,7,8,9";
    made->MonthList = "3";
    return made;
}

std::shared_ptr<clsReportSchedule> runOf(const QString &id, const QDateTime &last)
{
    auto made = std::make_shared<clsReportSchedule>();
    made->ScheduleID = id;
    made->LastRunDate = last;
    return made;
}

/// The editor with its controls by name.
struct Editor : frmReportDefEditor
{
    template <typename T>
    T *find(const char *name) const
    {
        T *found = findChild<T *>(QLatin1String(name));
        if (!found)
            qFatal("there is no control '%s'", name);
        return found;
    }
    void click(const char *name) const
    {
        QTest::mouseClick(find<QPushButton>(name), Qt::LeftButton);
    }
    QString text(const char *name) const { return find<QLabel>(name)->text(); }
    QTreeView *tree() const { return find<QTreeView>("tvDevices"); }
    QModelIndex device(int row) const { return tree()->model()->index(row, 0); }
    QStringList nextRuns() const
    {
        QStringList lines;
        const auto *list = find<QListWidget>("lvNextRuns");
        for (int row = 0; row < list->count(); ++row)
            lines.append(list->item(row)->text().section("  ", 1));
        return lines;
    }
    void checkSchedule(int row, bool checked = true) const
    {
        find<QListWidget>("lvSchedules")
            ->item(row)
            ->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    }
    void open(const clsReportDef &report)
    {
        load(report);
        show();
        QVERIFY(QTest::qWaitForWindowActive(this));
        QTRY_VERIFY(!find<QLabel>("lblDatabase")->text().startsWith("Reading"));
    }
    clsReportDef stored(const clsReportDef &report) const
    {
        clsReportDef result = report;
        store(result);
        return result;
    }
};

} // namespace

class tst_ReportDefEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        resetDefinitions();
        gDataPath = gGraphDataPath = m_sandbox->path() + '/';
        demo::MonitoringOptions options;
        options.devices = 5;
        options.items = 4;
        options.days = 1;
        options.interval = 43200;
        options.until = 1700000000;
        m_plan = demo::planMonitoring(options);
        demo::writeMonitoringData(m_sandbox->path("VTRGData.MDB"), m_plan);

        for (const char *id : {"{C-1}", "{C-2}"}) {
            const auto chart = std::make_shared<clsGraphDef>();
            chart->ChartID = QLatin1String(id);
            chart->ChartTitle = QLatin1String("Chart ") + QLatin1String(id);
            storeDefinition(chart);
        }
        storeDefinition(schedule("{S-1}", "6,12"));
        storeDefinition(schedule("{S-2}", "12"));
        storeDefinition(schedule("{S-3}", ""));
        m_report = clsReportDef();
        m_report.ReportTitle = "Weekly";
        m_report.ChartID = "{C-2}";
        m_report.OutputFile = ".\\TEMP.HTML";
        m_report.ReportSchedules.add("{S-1}",
                                     runOf("{S-1}", wallDateTime(QDate(2024, 3, 1), QTime(6, 3))));
        addDevice(0, {0, 2});
    }
    void cleanup()
    {
        resetDefinitions();
        m_sandbox.reset();
    }

    void opensAndStores()
    {
        Editor editor;
        editor.open(m_report);
        QVERIFY(editor.windowTitle().startsWith("Add/Edit Report Definition "));
        QCOMPARE(editor.find<QLineEdit>("txtTitle")->text(), "Weekly");
        QCOMPARE(editor.find<QComboBox>("cboChart")->currentText(), "Chart {C-2}");
        QCOMPARE(editor.text("lblSelected"), "1 device, 2 data items selected of 5 and 20");
        QVERIFY(!editor.find<QPushButton>("cmdTryAgain")->isVisible());
        QVERIFY(!editor.hasChanges());
        QCOMPARE(editor.stored(m_report).XMLConfig(), m_report.XMLConfig());
    }

    void changesAreStored()
    {
        Editor editor;
        editor.open(m_report);
        auto *title = editor.find<QLineEdit>("txtTitle");
        title->selectAll();
        QTest::keyClicks(title, " Daily ");
        QVERIFY(editor.hasChanges());
        QTest::keyClick(editor.find<QComboBox>("cboChart"), Qt::Key_Up);
        QTest::keyClicks(editor.find<QLineEdit>("txtOutputTemplate"), "MY.HTML");
        const clsReportDef stored = editor.stored(m_report);
        QCOMPARE(stored.ReportTitle, "Daily");
        QCOMPARE(stored.ChartID, "{C-1}");
        QCOMPARE(stored.OutputTemplate, "MY.HTML");
        QCOMPARE(stored.OutputFile, ".\\TEMP.HTML");
        QCOMPARE(stored.ReportID, m_report.ReportID);
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("chart");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("field");
        QTest::newRow("no title") << "  "
                                  << "{C-1}"
                                  << "title"
                                  << "txtTitle";
        QTest::newRow("no chart") << "A"
                                  << ""
                                  << "chart"
                                  << "cboChart";
        QTest::newRow("a chart that is gone") << "A"
                                              << "{C-9}"
                                              << "chart"
                                              << "cboChart";
    }
    void refusals()
    {
        QFETCH(QString, title);
        QFETCH(QString, chart);
        QFETCH(QString, message);
        m_report.ReportTitle = title;
        m_report.ChartID = chart;
        Editor editor;
        editor.open(m_report);
        QVERIFY(!editor.hasChanges());
        QCOMPARE(editor.stored(m_report).ChartID, chart);
        Answers answers;
        answers.click(QMessageBox::Ok);
        editor.click("cmdOK");
        QVERIFY(editor.isVisible());
        QCOMPARE(answers.said.size(), 1);
        QVERIFY2(answers.said[0].contains(message), qPrintable(answers.said[0]));
        QTEST(editor.focusWidget()->objectName(), "field");
    }

    void nothingSelected_data()
    {
        QTest::addColumn<QMessageBox::StandardButton>("answer");
        QTest::addColumn<QString>("tag");
        QTest::newRow("save it all the same") << QMessageBox::Yes << "SAVE";
        QTest::newRow("go on") << QMessageBox::No << "CANCEL";
    }
    void nothingSelected()
    {
        QFETCH(QMessageBox::StandardButton, answer);
        m_report.ReportDevices.clear();
        Editor editor;
        editor.open(m_report);
        Answers answers;
        answers.click(answer);
        editor.click("cmdOK");
        QTEST(editor.tag(), "tag");
        QCOMPARE(editor.isVisible(), answer == QMessageBox::No);
        QVERIFY(answers.said.at(0).startsWith("Nothing Selected: "));
    }

    void searchWithTheKeyboard()
    {
        Editor editor;
        editor.open(m_report);
        QTest::keyClick(&editor, Qt::Key_F, Qt::ControlModifier);
        auto *search = editor.find<QLineEdit>("txtSearch");
        QVERIFY(search->hasFocus());
        QTest::keyClicks(search, m_plan.devices[2].muid.toLower());
        QCOMPARE(editor.tree()->model()->rowCount(), 1);
        QCOMPARE(editor.text("lblShown"), "Shown: 1 device, 4 data items");
        QVERIFY(editor.tree()->isExpanded(editor.device(0)));
        QTest::keyClick(search, Qt::Key_Return); // does not close the editor
        QVERIFY(editor.isVisible() && editor.tree()->hasFocus());
        QTest::keyClick(editor.tree(), Qt::Key_Space);
        QCOMPARE(editor.device(0).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
        QTest::keyClick(editor.tree(), Qt::Key_Down);
        QTest::keyClick(editor.tree(), Qt::Key_Down, Qt::ShiftModifier);
        QTest::keyClick(editor.tree(), Qt::Key_Space); // two items at once
        const auto device = editor.stored(m_report).ReportDevices.find(m_plan.devices[2].muid);
        QVERIFY(device);
        QCOMPARE(device->DataItems.size(), 2);
        search->setText("nowhere");
        QCOMPARE(editor.text("lblShown"), "Nothing is found.");
    }

    /// What the user has opened and the current row come through a search.
    void rowsComeThroughASearch()
    {
        Editor editor;
        editor.open(m_report);
        editor.tree()->expand(editor.device(1));
        editor.tree()->setCurrentIndex(editor.device(1));
        const QString name = editor.device(1).data().toString();
        auto *search = editor.find<QLineEdit>("txtSearch");
        search->setText("nowhere");
        search->setText(name);
        QCOMPARE(editor.device(0).data().toString(), name);
        search->clear();
        QVERIFY(editor.tree()->isExpanded(editor.device(1)));
        QVERIFY(!editor.tree()->isExpanded(editor.device(2)));
        QCOMPARE(editor.tree()->currentIndex().data().toString(), name);
    }

    void kinds()
    {
        Editor editor;
        editor.open(m_report);
        auto *kind = editor.find<QComboBox>("cboKind");
        kind->setCurrentText("Ping");
        QCOMPARE(kind->currentText(), "Ping");
        qsizetype having = 0;
        for (const demo::MonitoredDevice &device : m_plan.devices)
            having += std::count_if(device.items.begin(), device.items.end(),
                                    [](const auto &item) { return item.name == "Ping"; });
        QVERIFY(having >= 3);
        editor.click("cmdKindCheck");
        QCOMPARE(editor.stored(m_report).ReportDevices.size(), having);
        editor.find<QLineEdit>("txtSearch")->setText(m_plan.devices[0].name);
        QCOMPARE(editor.find<QPushButton>("cmdKindClear")->text(), "&Uncheck on shown");
        editor.click("cmdKindClear");
        const clsReportDef stored = editor.stored(m_report);
        QCOMPARE(stored.ReportDevices.size(), having); // the first one's other item is left
        QCOMPARE(stored.ReportDevices.at(0)->DataItems.size(), 1);
    }

    void contextMenu()
    {
        Editor editor;
        editor.open(m_report);
        const QModelIndex first = editor.device(0);
        editor.tree()->expand(first);
        const QModelIndex item = first.model()->index(0, 0, first);
        editor.tree()->setCurrentIndex(item);
        const QString name = item.data().toString();
        QString offered;
        QTimer::singleShot(0, &editor, [&] {
            auto *menu = editor.findChild<QMenu *>("mnuDevices");
            QVERIFY(menu);
            offered = menu->actions().at(0)->text();
            menu->actions().at(0)->trigger();
            menu->close();
        });
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
        QApplication::sendEvent(editor.tree(), &event);
        QVERIFY2(offered.contains(name) && offered.endsWith("on all devices"), qPrintable(offered));
        QVERIFY(editor.stored(m_report).ReportDevices.size() > 1);
    }

    void bulkButtons()
    {
        Editor editor;
        editor.open(m_report);
        editor.click("cmdSelectShown");
        QCOMPARE(editor.text("lblSelected"), "5 devices, 20 data items selected of 5 and 20");
        editor.find<QLineEdit>("txtSearch")->setText(m_plan.devices[1].muid);
        editor.click("cmdClearShown");
        QCOMPARE(editor.text("lblSelected"), "4 devices, 16 data items selected of 5 and 20");
        editor.find<QLineEdit>("txtSearch")->clear();
        QTest::mouseClick(editor.find<QCheckBox>("chkSelectedOnly"), Qt::LeftButton, {},
                          QPoint(8, editor.find<QCheckBox>("chkSelectedOnly")->height() / 2));
        QCOMPARE(editor.tree()->model()->rowCount(), 4);
    }

    void missingDevices()
    {
        auto gone = std::make_shared<clsReportDeviceDef>();
        gone->MUID = "{GONE}";
        auto item = std::make_shared<clsReportDataIdentDef>();
        item->DataIDent = "4711";
        gone->DataItems.add("k4711", item);
        m_report.ReportDevices.add(gone->MUID, gone);
        Editor editor;
        editor.open(m_report);
        QCOMPARE(editor.text("lblSelected"),
                 "2 devices, 3 data items selected of 5 and 20; of these not in the database: 1 "
                 "device, 1 data item");
        QVERIFY(!editor.hasChanges());
        QVERIFY(editor.tree()->isExpanded(editor.device(0)));
        QVERIFY(!editor.device(0).data(Qt::DecorationRole).isNull());
        QCOMPARE(editor.stored(m_report).XMLConfig(), m_report.XMLConfig());
        editor.tree()->setFocus();
        editor.tree()->setCurrentIndex(editor.device(0));
        QTest::keyClick(editor.tree(), Qt::Key_Space);
        QCOMPARE(editor.stored(m_report).ReportDevices.size(), 1);
    }

    void databaseOutOfReach()
    {
        QVERIFY(QFile::rename(m_sandbox->path("VTRGData.MDB"), m_sandbox->path("elsewhere")));
        Editor editor;
        editor.open(m_report);
        QVERIFY(editor.find<QPushButton>("cmdTryAgain")->isVisible());
        QVERIFY(editor.text("lblDatabase").contains("VTRGData.MDB"));
        QCOMPARE(editor.text("lblSelected"), "1 device, 2 data items selected");
        QCOMPARE(editor.stored(m_report).XMLConfig(), m_report.XMLConfig());
        editor.click("cmdTryAgain");
        QTRY_VERIFY(editor.find<QPushButton>("cmdTryAgain")->isVisible());
        QVERIFY(QFile::rename(m_sandbox->path("elsewhere"), m_sandbox->path("VTRGData.MDB")));
        editor.click("cmdTryAgain");
        QTRY_VERIFY(!editor.find<QPushButton>("cmdTryAgain")->isVisible());
        QTRY_COMPARE(editor.text("lblSelected"), "1 device, 2 data items selected of 5 and 20");
        QVERIFY(!editor.hasChanges());
        QCOMPARE(editor.stored(m_report).XMLConfig(), m_report.XMLConfig());
    }

    /// The window goes while its reading goes on.
    void closedWhileReading()
    {
        {
            Editor editor;
            editor.load(m_report);
        }
        QTest::qWait(50);
        QVERIFY(!gConnection); // the program's own connection is left alone
    }

    void nextRuns()
    {
        const FrozenClock clock(presentTime);
        Editor editor;
        editor.open(m_report);
        QCOMPARE(editor.nextRuns(),
                 (QStringList{"12:00  At 6,12", "06:00  At 6,12", "12:00  At 6,12",
                              "06:00  At 6,12", "12:00  At 6,12"}));
        editor.checkSchedule(0); // in the order of their names
        QCOMPARE(editor.find<QListWidget>("lvSchedules")->item(0)->text(), "At  (not scheduled)");
        editor.checkSchedule(1);
        QCOMPARE(editor.nextRuns().mid(0, 2),
                 (QStringList{"12:00  At 12, At 6,12", "06:00  At 6,12"}));
        editor.checkSchedule(1, false);
        editor.checkSchedule(2, false);
        const auto *runs = editor.find<QListWidget>("lvNextRuns");
        QCOMPARE(runs->item(0)->text(), "The selected schedules never run.");
        editor.checkSchedule(0, false);
        QVERIFY(runs->item(0)->text().startsWith("No schedule is selected"));
        QCOMPARE(editor.stored(m_report).ReportSchedules.size(), 0);
    }

    /// A schedule that is newly chosen is not due at once; one that stays keeps its last run.
    void lastRuns()
    {
        FrozenClock clock(presentTime);
        Editor editor;
        editor.open(m_report);
        editor.checkSchedule(1);
        editor.checkSchedule(2, false);
        editor.checkSchedule(2);
        const clsReportDef stored = editor.stored(m_report);
        QCOMPARE(stored.ReportSchedules.size(), 2);
        QCOMPARE(stored.ReportSchedules.find("{S-1}")->LastRunDate,
                 m_report.ReportSchedules.find("{S-1}")->LastRunDate);
        const auto chosen = stored.ReportSchedules.find("{S-2}");
        QVERIFY(!IsReportDue(*chosen, *gScheduleDefs.find("{S-2}")));
        clock.advance(qint64(100) * 60 * 1000); // noon
        QVERIFY(IsReportDue(*chosen, *gScheduleDefs.find("{S-2}")));
    }

    void scheduleThatIsGone()
    {
        m_report.ReportSchedules.add("{S-9}", runOf("{S-9}", zeroDate()));
        Editor editor;
        editor.open(m_report);
        auto *list = editor.find<QListWidget>("lvSchedules");
        QVERIFY(list->item(0)->text().contains("{S-9}"));
        QCOMPARE(list->item(0)->checkState(), Qt::Checked);
        list->setCurrentRow(0);
        QVERIFY(!editor.find<QPushButton>("cmdScheduleModify")->isEnabled());
        QVERIFY(editor.stored(m_report).ReportSchedules.contains("{S-9}"));
        editor.checkSchedule(0, false);
        QVERIFY(!editor.stored(m_report).ReportSchedules.contains("{S-9}"));
    }

    void addsASchedule_data() { outcomes(); }
    void addsASchedule()
    {
        QFETCH(QString, button);
        QFETCH(bool, saved);
        Editor editor;
        editor.open(m_report);
        Answers answers;
        answers.add([&button](QWidget &window) {
            QCOMPARE(window.objectName(), "frmScheduleDefEditor");
            QTest::mouseClick(window.findChild<QPushButton *>(button), Qt::LeftButton);
        });
        editor.click("cmdScheduleAdd");
        QVERIFY2(answers.allDone() && answers.said.isEmpty(), qPrintable(answers.said.join("; ")));
        QCOMPARE(gScheduleDefs.size(), saved ? 4 : 3);
        QCOMPARE(editor.stored(m_report).ReportSchedules.size(), saved ? 2 : 1);
        LoadScheduleDefs(); // it is in the file already
        QCOMPARE(gScheduleDefs.size(), saved ? 4 : 3);
    }

    void changesAChart_data() { outcomes(); }
    void changesAChart()
    {
        QFETCH(QString, button);
        QFETCH(bool, saved);
        Editor editor;
        editor.open(m_report);
        Answers answers;
        answers.add([&](QWidget &window) {
            QCOMPARE(window.objectName(), "frmGraphDefEditor");
            auto *title = window.findChild<QLineEdit *>("txtTitle");
            QVERIFY(title);
            title->setText("Renamed");
            if (!saved)
                answers.click(QMessageBox::Discard);
            QTest::mouseClick(window.findChild<QPushButton *>(button), Qt::LeftButton);
        });
        editor.click("cmdChartModify");
        QVERIFY(answers.allDone());
        const QString title = saved ? "Renamed" : "Chart {C-2}";
        QCOMPARE(editor.find<QComboBox>("cboChart")->currentText(), title);
        QVERIFY(!editor.hasChanges()); // the report itself is the same
        LoadChartDefs();
        QCOMPARE(gChartDefs.find("{C-2}")->ChartTitle, title);
    }

    /// Every letter behind an "&" is one control's own; Tab goes through the window as it is read.
    void keyboard()
    {
        Editor editor;
        editor.open(m_report);
        QStringList letters;
        const auto take = [&letters](const QString &text) {
            const QString plain = QString(text).remove("&&");
            if (const qsizetype at = plain.indexOf(u'&'); at >= 0)
                letters.append(plain.mid(at + 1, 1).toLower());
        };
        for (const auto *label : editor.findChildren<QLabel *>()) {
            take(label->text());
            if (label->text().contains(u'&'))
                QVERIFY2(label->buddy(), qPrintable(label->text()));
        }
        for (const auto *button : editor.findChildren<QAbstractButton *>())
            take(button->text());
        QVERIFY(letters.size() > 15);
        QCOMPARE(QSet<QString>(letters.begin(), letters.end()).size(), letters.size());

        QStringList order;
        editor.find<QLineEdit>("txtTitle")->setFocus();
        for (int i = 0; i < 40 && !order.contains(QApplication::focusWidget()->objectName()); ++i) {
            order.append(QApplication::focusWidget()->objectName());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(order.mid(0, order.indexOf("cmdOK") + 2),
                 (QStringList{
                     "txtTitle",      "cboChart",          "cmdChartAdd",       "cmdChartModify",
                     "txtSearch",     "chkSelectedOnly",   "cboKind",           "cmdKindCheck",
                     "cmdKindClear",  "tvDevices",         "cmdSelectShown",    "cmdClearShown",
                     "lvSchedules",   "cmdScheduleAdd",    "cmdScheduleModify", "lvNextRuns",
                     "txtOutputFile", "txtOutputTemplate", "cmdBrowseTemplate", "txtOutputFolder",
                     "cmdOK",         "cmdCancel"}));
    }

private:
    void outcomes()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("saved");
        QTest::newRow("OK") << "cmdOK" << true;
        QTest::newRow("Cancel") << "cmdCancel" << false;
    }

    void addDevice(size_t number, const std::vector<size_t> &items)
    {
        const demo::MonitoredDevice &planned = m_plan.devices.at(number);
        auto device = std::make_shared<clsReportDeviceDef>();
        device->MUID = planned.muid;
        for (const size_t item : items) {
            auto datum = std::make_shared<clsReportDataIdentDef>();
            datum->DataIDent = QString::number(planned.items.at(item).dataIdent);
            device->DataItems.add(u'k' + datum->DataIDent, datum);
        }
        m_report.ReportDevices.add(device->MUID, device);
    }

    std::unique_ptr<Sandbox> m_sandbox;
    demo::MonitoringPlan m_plan;
    clsReportDef m_report;
};

QTEST_MAIN(tst_ReportDefEditor)
#include "tst_ReportDefEditor.moc"
