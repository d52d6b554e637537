#include "data/DataSeries.h"
#include "ui/DeviceTree.h"
#include "ui/DeviceView.h"

#include <QAbstractItemModelTester>
#include <QPaintEvent>
#include <QSignalSpy>
#include <QTest>

namespace {

/// "name: item 1, item 2" for each device; the MUID is "{NAME}", items are numbered from 1 on
/// through all devices.
MonitoredDevices monitored(const QStringList &lines)
{
    MonitoredDevices result;
    result.itemDescriptions = QStringList{"", "Round-trip time"};
    result.units = {{stateScale, "state"}, {1, "ms"}};
    for (const QString &line : lines) {
        MonitoredDevice device;
        device.name = line.section(": ", 0, 0);
        device.muid = u'{' + device.name.toUpper() + u'}';
        device.firstItem = int(result.items.size());
        for (const QString &name : line.section(": ", 1).split(", ", Qt::SkipEmptyParts)) {
            MonitoredItem item;
            item.dataIdent = QString::number(result.items.size() + 1);
            if (!result.itemNames.contains(name))
                result.itemNames.append(name);
            item.name = int(result.itemNames.indexOf(name));
            item.description = name == "Latency" ? 1 : 0;
            item.scale = name == "Ping" ? qint32(stateScale) : 1;
            result.items.push_back(item);
            ++device.itemCount;
        }
        result.devices.push_back(device);
    }
    return result;
}

const QStringList site = {"Köln-Router: CPU, Ping", "srv-1: CPU, Latency, Ping", "srv-2: Disk"};

/// "MUID:item,item" of each device.
Collection<clsReportDeviceDef> chosen(const QStringList &lines)
{
    Collection<clsReportDeviceDef> devices;
    for (const QString &line : lines) {
        auto device = std::make_shared<clsReportDeviceDef>();
        device->MUID = line.section(u':', 0, 0);
        for (const QString &ident : line.section(u':', 1).split(u',', Qt::SkipEmptyParts)) {
            auto item = std::make_shared<clsReportDataIdentDef>();
            item->DataIDent = ident;
            device->DataItems.add(u'k' + ident, item);
        }
        devices.add(device->MUID, device);
    }
    return devices;
}

QStringList lines(const Collection<clsReportDeviceDef> &devices)
{
    QStringList result;
    for (const auto &device : devices) {
        QStringList items;
        for (const auto &item : device->DataItems)
            items.append(item->DataIDent);
        result.append(device->MUID + u':' + items.join(u','));
    }
    return result;
}

/// Gathers what a widget paints.
class PaintedRegion : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
    QRegion region;
};

/// The rows below `parent` with their marks, as "[x] name (...)".
QString shown(const DeviceTree &tree, const QModelIndex &parent = {})
{
    QStringList rows;
    for (int row = 0; row < tree.rowCount(parent); ++row) {
        const QModelIndex index = tree.index(row, 0, parent);
        const int mark = index.data(Qt::CheckStateRole).toInt();
        QString text = QString("[%1] %2").arg(" -x"[mark]).arg(index.data().toString());
        if (tree.rowCount(index) > 0)
            text += " (" + shown(tree, index) + ")";
        rows.append(text);
    }
    return rows.join("; ");
}

void click(DeviceTree &tree, const QModelIndex &index)
{
    // As the delegate of a view does it.
    const bool isChecked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    QVERIFY(tree.setData(index, isChecked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole));
}

} // namespace

class tst_DeviceTree : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_tree = std::make_unique<DeviceTree>();
        m_tester = std::make_unique<QAbstractItemModelTester>(
            m_tree.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    }
    void cleanup() { m_tester.reset(), m_tree.reset(); }

    void filters_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("selectedOnly");
        QTest::addColumn<QString>("expected");
        const auto add = [](const char *text, const char *expected, bool selectedOnly = false) {
            QTest::newRow(selectedOnly ? qPrintable(QString("selected only: %1").arg(text)) : text)
                << text << selectedOnly << expected;
        };
        add("", "[-] Köln-Router ([x] CPU; [ ] Ping); [ ] srv-1 ([ ] CPU; [ ] Latency; [ ] Ping); "
                "[x] srv-2 ([x] Disk)");
        add("  ", "[-] Köln-Router ([x] CPU; [ ] Ping); [ ] srv-1 ([ ] CPU; [ ] Latency; [ ] "
                  "Ping); [x] srv-2 ([x] Disk)");
        add("cpu", "[x] Köln-Router ([x] CPU); [ ] srv-1 ([ ] CPU)");
        add("SRV", "[ ] srv-1 ([ ] CPU; [ ] Latency; [ ] Ping); [x] srv-2 ([x] Disk)");
        add("srv ping", "[ ] srv-1 ([ ] Ping)");
        add("ping srv", "[ ] srv-1 ([ ] Ping)");
        add("koln", "[-] Köln-Router ([x] CPU; [ ] Ping)");
        add("{SRV-2}", "[x] srv-2 ([x] Disk)");
        add("round-trip", "[ ] srv-1 ([ ] Latency)");
        add("1}", "[ ] srv-1 ([ ] CPU; [ ] Latency; [ ] Ping)");
        add("srv-2{", "");
        add("cpu ping", "");
        add("nowhere", "");
        add("", "[x] Köln-Router ([x] CPU); [x] srv-2 ([x] Disk)", true);
        add("disk", "[x] srv-2 ([x] Disk)", true);
        add("ping", "", true);
    }
    void filters()
    {
        QFETCH(QString, text);
        QFETCH(bool, selectedOnly);
        m_tree->setMonitored(monitored(site));
        m_tree->setSelection(chosen({"{KÖLN-ROUTER}:1", "{SRV-2}:6"}));
        m_tree->setFilter(text, selectedOnly ? SelectedOnly::Yes : SelectedOnly::No);
        QTEST(shown(*m_tree), "expected");
        QCOMPARE(m_tree->shownDevices(), m_tree->rowCount());
    }

    void clicksOnDevices()
    {
        m_tree->setMonitored(monitored(site));
        const QModelIndex device = m_tree->index(1, 0);
        click(*m_tree, m_tree->index(1, 0, device));
        QCOMPARE(shown(*m_tree, device), "[ ] CPU; [x] Latency; [ ] Ping");
        QCOMPARE(device.data(Qt::CheckStateRole).toInt(), int(Qt::PartiallyChecked));
        QCOMPARE(device.siblingAtColumn(DeviceTree::Selected).data().toString(), "1 of 3");
        click(*m_tree, device); // what is partly marked is marked whole first
        QCOMPARE(lines(m_tree->selection()), QStringList("{SRV-1}:3,4,5"));
        click(*m_tree, device);
        QCOMPARE(lines(m_tree->selection()), QStringList());
        QCOMPARE(device.siblingAtColumn(DeviceTree::Selected).data().toString(), QString());
    }

    /// A device's mark is about the items that are shown.
    void clicksUnderAFilter()
    {
        m_tree->setMonitored(monitored(site));
        m_tree->setSelection(chosen({"{SRV-1}:3"}));
        m_tree->setFilter("ping", SelectedOnly::No);
        click(*m_tree, m_tree->index(1, 0));
        QCOMPARE(lines(m_tree->selection()), QStringList("{SRV-1}:3,5"));
        click(*m_tree, m_tree->index(1, 0));
        QCOMPARE(lines(m_tree->selection()), QStringList("{SRV-1}:3"));
    }

    void rowsStayWhenUnmarked()
    {
        m_tree->setMonitored(monitored(site));
        m_tree->setSelection(chosen({"{SRV-1}:3,4"}));
        m_tree->setFilter({}, SelectedOnly::Yes);
        click(*m_tree, m_tree->index(0, 0, m_tree->index(0, 0)));
        QCOMPARE(shown(*m_tree), "[-] srv-1 ([ ] CPU; [x] Latency)");
        m_tree->setFilter({}, SelectedOnly::Yes);
        QCOMPARE(shown(*m_tree), "[x] srv-1 ([x] Latency)");
    }

    void marksInBulk_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<std::function<void(DeviceTree &)>>("change");
        QTest::addColumn<QStringList>("expected");
        using Change = std::function<void(DeviceTree &)>;
        const auto kind = [](const char *name, DeviceTree::Devices which, bool checked) {
            return Change([=](DeviceTree &tree) {
                tree.setKind(int(tree.itemNames().indexOf(name)), which, checked);
            });
        };
        const Change select = [](DeviceTree &tree) { tree.setShown(true); };
        const Change clear = [](DeviceTree &tree) { tree.setShown(false); };
        const auto all = DeviceTree::Devices::All;
        const auto some = DeviceTree::Devices::Shown;
        const QString before = "{SRV-1}:4,5";
        QTest::newRow("all") << "" << select
                             << QStringList{"{SRV-1}:4,5,3", "{KÖLN-ROUTER}:1,2", "{SRV-2}:6"};
        QTest::newRow("none") << "" << clear << QStringList();
        QTest::newRow("all that the search shows")
            << "cpu" << select << QStringList{"{SRV-1}:4,5,3", "{KÖLN-ROUTER}:1"};
        QTest::newRow("none that it shows") << "ping" << clear << QStringList{"{SRV-1}:4"};
        QTest::newRow("a kind") << "" << kind("Ping", all, true)
                                << QStringList{before, "{KÖLN-ROUTER}:2"};
        QTest::newRow("no kind") << "" << kind("Ping", all, false) << QStringList{"{SRV-1}:4"};
        QTest::newRow("a kind, whatever is shown")
            << "disk" << kind("CPU", all, true) << QStringList{"{SRV-1}:4,5,3", "{KÖLN-ROUTER}:1"};
        QTest::newRow("a hidden kind on devices shown")
            << "latency" << kind("CPU", some, true) << QStringList{"{SRV-1}:4,5,3"};
        QTest::newRow("a kind that no device shown has")
            << "disk" << kind("CPU", some, true) << QStringList{before};
    }
    void marksInBulk()
    {
        QFETCH(QString, filter);
        QFETCH(std::function<void(DeviceTree &)>, change);
        m_tree->setMonitored(monitored(site));
        m_tree->setSelection(chosen({"{SRV-1}:4,5"}));
        m_tree->setFilter(filter, SelectedOnly::No);
        QSignalSpy changed(m_tree.get(), &DeviceTree::selectionChanged);
        change(*m_tree);
        QTEST(lines(m_tree->selection()), "expected");
        QCOMPARE(changed.size(), 1);
    }

    void selectionIsKept_data()
    {
        QTest::addColumn<QStringList>("selected");
        QTest::addColumn<QStringList>("expected");
        const auto add = [](const char *name, const QStringList &selected,
                            const QStringList &expected) {
            QTest::newRow(name) << selected << expected;
        };
        add("order of devices and items", {"{SRV-2}:6", "{SRV-1}:5,3"},
            {"{SRV-2}:6", "{SRV-1}:5,3"});
        add("case of the database", {"{srv-1}:3"}, {"{SRV-1}:3"});
        add("a device without items", {"{SRV-1}:", "{GONE}:"}, {"{SRV-1}:", "{GONE}:"});
        add("what the database lacks", {"{GONE}:8,7", "{SRV-1}:99,3"},
            {"{GONE}:8,7", "{SRV-1}:99,3"});
        add("an item of another device", {"{SRV-1}:6"}, {"{SRV-1}:6"});
    }
    void selectionIsKept()
    {
        QFETCH(QStringList, selected);
        m_tree->setSelection(chosen(selected));
        QCOMPARE(lines(m_tree->selection()), selected); // nothing is read yet
        const QString text = m_tree->selectionText();
        m_tree->setMonitored(monitored(site));
        QTEST(lines(m_tree->selection()), "expected");
        QCOMPARE(m_tree->selectionText(), text);
        m_tree->setMonitored(monitored({}));
        QCOMPARE(m_tree->selectionText(), text);
        m_tree->setMonitored(monitored(site));
        QTEST(lines(m_tree->selection()), "expected");
        QCOMPARE(m_tree->selectionText(), text);
    }

    /// Undoing a change is no change, in whatever order it is done.
    void textOfTheSelection()
    {
        m_tree->setMonitored(monitored(site));
        m_tree->setSelection(chosen({"{SRV-2}:6", "{SRV-1}:5,3"}));
        const QString before = m_tree->selectionText();
        m_tree->setShown(true);
        QVERIFY(m_tree->selectionText() != before);
        m_tree->setShown(false);
        click(*m_tree, m_tree->index(0, 0, m_tree->index(1, 0)));
        click(*m_tree, m_tree->index(2, 0, m_tree->index(1, 0)));
        QVERIFY(m_tree->selectionText() != before);
        click(*m_tree, m_tree->index(2, 0));
        QCOMPARE(m_tree->selectionText(), before);
    }

    void missingOnes()
    {
        m_tree->setMonitored(monitored(site));
        m_tree->setSelection(chosen({"{GONE}:7,8", "{BARE}:", "{SRV-1}:3,99"}));
        const QModelIndex group = m_tree->index(0, 0);
        QCOMPARE(shown(*m_tree, group),
                 "[x] {GONE} ([x] Data item 7; [x] Data item 8); [x] {BARE}; "
                 "[x] srv-1 ([x] Data item 99)");
        QVERIFY(group.data().toString().startsWith("Not in the database"));
        DeviceTree::Counts counts = m_tree->counts();
        QCOMPARE(counts.devices, 3); // srv-1 once
        QCOMPARE(counts.items, 4);
        QCOMPARE(counts.missingDevices, 2);
        QCOMPARE(counts.missingItems, 3);

        click(*m_tree, m_tree->index(1, 0, group));
        click(*m_tree, m_tree->index(0, 0, m_tree->index(0, 0, group)));
        QCOMPARE(group.data(Qt::CheckStateRole).toInt(), int(Qt::PartiallyChecked));
        QCOMPARE(lines(m_tree->selection()), (QStringList{"{GONE}:8", "{SRV-1}:3,99"}));
        click(*m_tree, group);
        QCOMPARE(lines(m_tree->selection()),
                 (QStringList{"{GONE}:7,8", "{BARE}:", "{SRV-1}:3,99"}));
        click(*m_tree, group);
        QCOMPARE(lines(m_tree->selection()), QStringList("{SRV-1}:3"));
        counts = m_tree->counts();
        QCOMPARE(counts.missingDevices + counts.missingItems, 0);
        QCOMPARE(m_tree->rowCount(group), 3); // still there to be marked again
    }

    void counts()
    {
        m_tree->setSelection(chosen({"{SRV-1}:3", "{GONE}:7,8"}));
        DeviceTree::Counts counts = m_tree->counts();
        QCOMPARE(counts.devices, 2);
        QCOMPARE(counts.items, 3);
        QCOMPARE(counts.missingDevices, 0); // nobody knows
        m_tree->setMonitored(monitored(site));
        counts = m_tree->counts();
        QCOMPARE(counts.devices, 2);
        QCOMPARE(counts.items, 3);
        QCOMPARE(counts.allDevices, 3);
        QCOMPARE(counts.allItems, 6);
        QCOMPARE(counts.missingDevices, 1);
    }

    void texts()
    {
        MonitoredDevices devices = monitored(site);
        devices.devices[0].description = "Edge";
        devices.devices[0].isExcluded = true;
        m_tree->setMonitored(std::move(devices));
        const auto text = [this](const QModelIndex &index, int column) {
            return index.siblingAtColumn(column).data().toString();
        };
        const QModelIndex device = m_tree->index(0, 0);
        QCOMPARE(text(device, DeviceTree::Description), "Edge (excluded from monitoring)");
        QCOMPARE(text(device, DeviceTree::Id), "{KÖLN-ROUTER}");
        QCOMPARE(text(m_tree->index(0, 0, device), DeviceTree::Unit), "ms");
        QCOMPARE(text(m_tree->index(1, 0, device), DeviceTree::Unit), "state");
        QCOMPARE(text(m_tree->index(1, 0, device), DeviceTree::Id), "2");
    }

    /// Keys find rows again under another filter.
    void keys()
    {
        m_tree->setMonitored(monitored(site));
        m_tree->setSelection(chosen({"{GONE}:7"}));
        const QModelIndex item = m_tree->index(2, 0, m_tree->index(2, 0));
        const quintptr key = DeviceTree::key(item);
        const quintptr group = DeviceTree::key(m_tree->index(0, 0));
        QCOMPARE(item.data().toString(), "Ping");
        m_tree->setFilter("srv-1 ping", SelectedOnly::No);
        const QModelIndex again = m_tree->indexOfKey(key);
        QCOMPARE(again.row(), 0);
        QCOMPARE(again.parent().data().toString(), "srv-1");
        QVERIFY(!m_tree->indexOfKey(group).isValid());
        m_tree->setFilter("cpu", SelectedOnly::No);
        QVERIFY(!m_tree->indexOfKey(key).isValid());
        m_tree->setFilter({}, SelectedOnly::No);
        QCOMPARE(m_tree->indexOfKey(key), m_tree->index(2, 0, m_tree->index(2, 0)));
        QVERIFY(m_tree->indexOfKey(group).isValid());
    }

    void paintsTheMarksOfTheLastDevicesItems()
    {
        m_tree->setMonitored(monitored(site));
        DeviceView view(m_tree.get());
        view.resize(400, 300);
        view.expandAll();
        view.show();
        QTest::qWait(50);
        PaintedRegion painted;
        view.viewport()->installEventFilter(&painted);
        m_tree->setShown(true);
        QTest::qWait(50);
        const QRect disk = view.visualRect(m_tree->index(0, 0, m_tree->index(2, 0)));
        QVERIFY(!disk.isEmpty());
        QVERIFY(painted.region.contains(disk));
    }

private:
    std::unique_ptr<DeviceTree> m_tree;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

QTEST_MAIN(tst_DeviceTree)
#include "tst_DeviceTree.moc"
