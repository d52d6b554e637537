#include "database/MonitoredDevices.h"
#include "database/MonitoringDatabase.h"
#include "database/RuleMatches.h"
#include "support/Rows.h"

#include <QTest>

namespace {
using Selection = std::vector<SelectionRow>;

/// A database that answers the question for the selection alone.
class ListDatabase : public MonitoringDatabase
{
public:
    explicit ListDatabase(Selection rows)
        : m_rows(std::move(rows))
    {}
    std::shared_ptr<const Inventory> inventory() override { return {}; }
    qint64 sampleCount() override { return 0; }
    std::optional<qint64> newestSample() override { return {}; }
    void answer(std::span<ItemQuestion>, std::span<SummaryQuestion>) override {}
    bool answersManyAtOnce() const override { return false; }
    void readSelection(const std::function<void(const SelectionRow &)> &take) override
    {
        for (const SelectionRow &row : m_rows)
            take(row);
    }

private:
    Selection m_rows;
};

SelectionRow row(const char *muid, int ident, const char *name, int dataIdent, const char *item,
                 int scale = 21)
{
    return {{ident, muid, name, QString("about %1").arg(name), false},
            {dataIdent, ident, item, "", scale, true},
            {scale, "Name", scale == 2 ? "%" : " "}};
}

/// "device: item ident, ..." of each device.
QStringList outline(const MonitoredDevices &devices)
{
    QStringList lines;
    for (const MonitoredDevice &device : devices.devices) {
        QStringList items;
        for (int i = device.firstItem; i < device.firstItem + device.itemCount; ++i) {
            const MonitoredItem &item = devices.items.at(static_cast<size_t>(i));
            items.append(devices.itemNames.at(item.name) + u' ' + item.dataIdent);
        }
        lines.append(device.name + ": " + items.join(", "));
    }
    return lines;
}

MonitoredDevices read(Selection rows)
{
    ListDatabase database(std::move(rows));
    return readMonitoredDevices(database);
}

} // namespace

class tst_MonitoredDevices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outlines()
    {
        const auto outlined = [](Selection rows) {
            return outline(read(std::move(rows))).join("; ");
        };
        QCOMPARE(outlined({}), "");
        QCOMPARE(outlined({row("B", 2, "srv-10", 7, "Ping"), row("A", 1, "srv-9", 4, "CPU"),
                           row("B", 2, "srv-10", 6, "CPU"), row("A", 1, "srv-9", 5, "Ping")}),
                 "srv-9: CPU 4, Ping 5; srv-10: CPU 6, Ping 7");
        QCOMPARE(outlined({row("A", 1, "a", 1, "Port 10"), row("A", 1, "a", 2, "Port 9"),
                           row("A", 1, "a", 3, "älter"), row("A", 1, "a", 10, "Zone"),
                           row("A", 1, "a", 9, "Zone")}),
                 "a: älter 3, Port 9 2, Port 10 1, Zone 9, Zone 10");
        // Two scales of one number; of two devices of one MUID the first.
        QCOMPARE(outlined({row("{ab}", 1, "first", 1, "Ping"), row("{ab}", 1, "first", 1, "Ping"),
                           row("{AB}", 2, "second", 2, "Ping"), row("{ab}", 1, "first", 3, "CPU")}),
                 "first: CPU 3, Ping 1");
        QCOMPARE(outlined({row("B", 2, "same", 2, "Ping"), row("A", 1, "same", 1, "Ping")}),
                 "same: Ping 2; same: Ping 1");
    }

    void columns()
    {
        SelectionRow counter = row("{A-1}", 1, "a", 5, "CPU", 2);
        counter.item.description = "Load";
        counter.device.isExcluded = true;
        counter.item.isGlobal = false;
        const MonitoredDevices devices = read({counter, row("B", 2, "b", 6, "Ping")});
        const MonitoredDevice &device = devices.devices.front();
        QCOMPARE(device.muid, "{A-1}");
        QCOMPARE(device.description, "about a");
        QVERIFY(device.isExcluded && !devices.devices.back().isExcluded);
        const MonitoredItem &item = devices.items.front();
        QCOMPARE(devices.itemDescriptions.at(item.description), "Load");
        QVERIFY(!item.isGlobal && devices.items.back().isGlobal);
        QCOMPARE(devices.units.value(item.scale), "%");
        QCOMPARE(devices.units.value(21), "Name"); // for want of an abbreviation
    }

    void rulesFind_data()
    {
        const Rows<std::vector<SelectionRule>, QString> row("rules", "found");
        using enum SelectionRule::Items;
        row("none", {}, "");
        row("everything", {{}}, "a2: Disk C, Ping | a10: Ping, Traffic | b: Latency");
        row("name", {{false, "A*"}}, "a2: Disk C, Ping | a10: Ping, Traffic");
        row("group", {{false, "", "core"}}, "b: Latency");
        row("description", {{false, "", "", "*two"}}, "a2: Disk C, Ping");
        row("item of devices", {{false, "a*", "", "", "Ping"}}, "a2: Ping | a10: Ping");
        row("unit's sign, unit's name", {{false, "", "", "", "", "ms|%"}},
            "a2: Disk C | b: Latency");
        row("states", {{false, "", "", "", "", "", States}}, "a2: Ping | a10: Ping");
        row("counters", {{false, "a10", "", "", "", "", Counters}}, "a10: Traffic");
        row("exception", {{}, {true, "a2"}, {true, "", "", "", "Traffic"}},
            "a10: Ping | b: Latency");
        row("exception first", {{true, "b"}, {}}, "a2: Disk C, Ping | a10: Ping, Traffic");
        row("exceptions alone", {{true, "b"}}, "");
    }
    /// Not the device that the monitor excludes, nor rows of a key that came before.
    void rulesFind()
    {
        QFETCH(std::vector<SelectionRule>, rules);
        const Inventory inventory({{1, "{10}", "a10", "ten", false},
                                   {2, "{2}", "A2", "number two", false},
                                   {3, "{3}", "b", "", false, "Core"},
                                   {4, "{4}", "away", "", true},
                                   {5, "{10}", "twin", "", false}},
                                  {{11, 1, "Traffic", "", 4, false},
                                   {12, 1, "Ping", "", 21, true},
                                   {21, 2, "Ping", "", 21, true},
                                   {22, 2, "Disk C", "", 2, false},
                                   {22, 3, "Disk of another", "", 2, false},
                                   {31, 3, "Latency", "", 3, false},
                                   {41, 4, "Ping", "", 21, true},
                                   {51, 5, "Ping", "", 21, true},
                                   {61, 6, "Ping", "", 21, true}},
                                  {{2, "Percent", "%"}, {3, "ms", " "}, {4, "Bits", "bit/s"}});
        QStringList found;
        for (const RuleMatch &match : ruleMatches(rules, inventory)) {
            QStringList items;
            for (const ItemRow *item : match.items)
                items.append(item->name);
            found.append(match.device->name.toLower() + ": " + items.join(", "));
        }
        QTEST(found.join(" | "), "found");
    }
};

QTEST_APPLESS_MAIN(tst_MonitoredDevices)
#include "tst_MonitoredDevices.moc"
