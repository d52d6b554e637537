#include "support/Rows.h"
#include "ui/editors/DeviceTree.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

namespace {

/// "name: item 1, item 2" for each device; the MUID is "{NAME}", items are numbered from 1 on
/// through all devices.
MonitoredDevices monitored(const QStringList &lines)
{
    MonitoredDevices result;
    result.itemDescriptions = QStringList{"", "Round-trip time"};
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

QStringList selected(const DeviceTree &tree)
{
    QStringList result;
    for (const auto &device : tree.selection()) {
        QStringList items;
        for (const auto &item : device->DataItems)
            items.append(item->DataIDent);
        result.append(device->MUID + u':' + items.join(u','));
    }
    return result;
}

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

/// As the delegate of a view does it.
void click(DeviceTree &tree, const QModelIndex &index)
{
    const bool isChecked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    QVERIFY(tree.setData(index, isChecked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole));
}

} // namespace

class tst_DeviceTree : public QObject
{
    Q_OBJECT

    std::unique_ptr<DeviceTree> m_tree; ///< of the site
    std::unique_ptr<QAbstractItemModelTester> m_tester;

    QModelIndex device(int row) const { return m_tree->index(row, 0); }
    QModelIndex item(int deviceRow, int row) const
    {
        return m_tree->index(row, 0, device(deviceRow));
    }

private Q_SLOTS:
    void init()
    {
        m_tree = std::make_unique<DeviceTree>();
        m_tester = std::make_unique<QAbstractItemModelTester>(
            m_tree.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        m_tree->setMonitored(monitored(site));
    }
    void cleanup()
    {
        m_tester.reset();
        m_tree.reset();
    }

    void filters_data()
    {
        const auto all = SelectedOnly::No;
        const QString everything = "[-] Köln-Router ([x] CPU; [ ] Ping); [ ] srv-1 ([ ] CPU; "
                                   "[ ] Latency; [ ] Ping); [x] srv-2 ([x] Disk)";
        const Rows<QString, SelectedOnly, QString> row("text", "which", "expected");
        row("nothing", "", all, everything);
        row("name of devices", "SRV", all,
            "[ ] srv-1 ([ ] CPU; [ ] Latency; [ ] Ping); [x] srv-2 ([x] Disk)");
        row("item and device", "ping srv", all, "[ ] srv-1 ([ ] Ping)");
        row("without its accent", "koln", all, "[-] Köln-Router ([x] CPU; [ ] Ping)");
        row("MUID", "{SRV-2}", all, "[x] srv-2 ([x] Disk)");
        row("from one text into the next", "srv-2{", all, "");
        row("two items", "cpu ping", all, "");
        row("selected", "", SelectedOnly::Yes, "[-] Köln-Router ([x] CPU); [x] srv-2 ([x] Disk)");
        row("ping selected", "ping", SelectedOnly::Yes, "");
    }
    void filters()
    {
        QFETCH(QString, text);
        QFETCH(SelectedOnly, which);
        m_tree->setSelection(chosen({"{KÖLN-ROUTER}:1", "{SRV-2}:6"}));
        m_tree->setFilter(text, which);
        QTEST(shown(*m_tree), "expected");
        QCOMPARE(m_tree->shownDevices(), m_tree->rowCount());
    }

    void clicksOnDevices()
    {
        const QModelIndex ofSelected = m_tree->index(1, DeviceTree::Selected);
        click(*m_tree, item(1, 1));
        QCOMPARE(shown(*m_tree, device(1)), "[ ] CPU; [x] Latency; [ ] Ping");
        QCOMPARE(ofSelected.data().toString(), "1 of 3");
        click(*m_tree, device(1)); // what is partly marked is marked whole first
        QCOMPARE(selected(*m_tree), QStringList("{SRV-1}:3,4,5"));
        m_tree->setFilter("ping", SelectedOnly::No); // a mark is about the items that are shown
        click(*m_tree, device(1));
        QCOMPARE(selected(*m_tree), QStringList("{SRV-1}:3,4"));
        m_tree->setFilter({}, SelectedOnly::Yes);
        click(*m_tree, item(0, 0));
        QCOMPARE(shown(*m_tree), "[-] srv-1 ([ ] CPU; [x] Latency)"); // rows stay for now
        m_tree->setFilter({}, SelectedOnly::Yes);
        QCOMPARE(shown(*m_tree), "[-] srv-1 ([x] Latency)");
    }

    void marksInBulk()
    {
        using enum DeviceTree::Devices;
        const int cpu = int(m_tree->itemNames().indexOf("CPU"));
        m_tree->setSelection(chosen({"{SRV-1}:4,5"}));
        QSignalSpy changed(m_tree.get(), &DeviceTree::selectionChanged);
        m_tree->setFilter("disk", SelectedOnly::No);
        m_tree->setKind(cpu, Shown, true); // no device shown has it
        QCOMPARE(selected(*m_tree), QStringList("{SRV-1}:4,5"));
        m_tree->setFilter("latency", SelectedOnly::No);
        m_tree->setKind(cpu, Shown, true); // though the search hides it
        QCOMPARE(selected(*m_tree), QStringList("{SRV-1}:4,5,3"));
        m_tree->setKind(cpu, All, true);
        QCOMPARE(selected(*m_tree), QStringList({"{SRV-1}:4,5,3", "{KÖLN-ROUTER}:1"}));
        m_tree->setShown(false);
        QCOMPARE(selected(*m_tree), QStringList({"{SRV-1}:5,3", "{KÖLN-ROUTER}:1"}));
        QCOMPARE(changed.size(), 4);
    }

    /// A device without items, what the database lacks, an item of another device, another case.
    void selectionIsKept()
    {
        const QStringList selection{"{GONE}:8,7", "{SRV-2}:", "{SRV-1}:99,1,3", "{köln-router}:2"};
        DeviceTree tree; // nothing is read yet
        tree.setSelection(chosen(selection));
        const QString text = tree.selectionText();
        for (const QStringList &devices : {QStringList(), site, QStringList(), site}) {
            QCOMPARE(selected(tree).join(u'|').toUpper(), selection.join(u'|').toUpper());
            QCOMPARE(tree.selectionText(), text);
            tree.setMonitored(monitored(devices));
        }
        QCOMPARE(selected(tree).last(), "{KÖLN-ROUTER}:2"); // of the database
    }

    void missingOnes()
    {
        m_tree->setSelection(chosen({"{GONE}:7,8", "{BARE}:", "{SRV-1}:3,99"}));
        const QModelIndex group = device(0);
        QCOMPARE(shown(*m_tree, group),
                 "[x] {GONE} ([x] Data item 7; [x] Data item 8); [x] {BARE}; "
                 "[x] srv-1 ([x] Data item 99)");
        QCOMPARE(m_tree->counts().devices, 3); // srv-1 once
        click(*m_tree, item(0, 1));
        click(*m_tree, m_tree->index(0, 0, item(0, 0)));
        QCOMPARE(selected(*m_tree), QStringList({"{GONE}:8", "{SRV-1}:3,99"}));
        click(*m_tree, group);
        QCOMPARE(selected(*m_tree), QStringList({"{GONE}:7,8", "{BARE}:", "{SRV-1}:3,99"}));
        click(*m_tree, group);
        QCOMPARE(selected(*m_tree), QStringList("{SRV-1}:3"));
        QCOMPARE(m_tree->rowCount(group), 3); // still there to be marked again
    }
};

QTEST_MAIN(tst_DeviceTree)
#include "tst_DeviceTree.moc"
