#include "demo/MonitoringPlan.h"

#include "demo/Random.h"

#include <QUuid>

#include <algorithm>
#include <array>
#include <iterator>

namespace demo {

namespace {

constexpr qint64 minute = 60;
constexpr qint64 hour = 60 * minute;
constexpr qint64 day = 24 * hour;

enum ScaleNumber {
    Milliseconds = 1,
    Percent,
    BitsPerSecond,
    Megabytes,
    Celsius,
    Count,
    Volts,
    Seconds
};

struct ItemTemplate
{
    const char16_t *name;
    const char16_t *description;
    int scale;
    CounterModel counter;
    double failuresPerMonth; ///< of a state item, of its own
};

// Values: base, work, night, noise, spike chance, spike, drift, reset days, low, high.
constexpr CounterModel none{};
constexpr CounterModel latency{14, 11, 3, 2.2, 0.004, 60, 0, 0, 0.4, 2000};
constexpr CounterModel lanLatency{1.2, 1.1, 0.4, 0.3, 0.003, 12, 0, 0, 0.1, 500};
constexpr CounterModel routerCpu{12, 26, 5, 4, 0.003, 18, 0, 0, 1, 100};
constexpr CounterModel serverCpu{9, 34, 45, 7, 0.006, 15, 0, 0, 1, 100};
constexpr CounterModel memory{46, 14, 5, 1.2, 0.001, 8, 0.9, 14, 5, 99};
constexpr CounterModel trafficIn{38e6, 190e6, 60e6, 14e6, 0.004, 90e6, 0, 0, 2e5, 1e9};
constexpr CounterModel trafficOut{15e6, 70e6, 260e6, 8e6, 0.004, 60e6, 0, 0, 1e5, 1e9};
constexpr CounterModel loss{0.05, 0.1, 0, 0.08, 0.005, 1.5, 0, 0, 0, 100};
constexpr CounterModel temperature{38, 5, 1, 0.5, 0, 0, 0, 0, 15, 90};
constexpr CounterModel roomTemperature{21.5, 2.4, 0, 0.25, 0.0005, 2, 0, 0, 12, 45};
constexpr CounterModel humidity{44, 5, 0, 1.1, 0, 0, 0, 0, 10, 95};
constexpr CounterModel diskFree{412'000, -1500, -5200, 160, 0, 0, -3800, 21, 500, 900'000};
constexpr CounterModel processes{118, 42, 9, 3, 0.001, 12, 0, 0, 20, 900};
constexpr CounterModel portsInUse{17, 21, 0, 0.7, 0, 0, 0, 0, 0, 48};
constexpr CounterModel toner{97, 0, 0, 0.1, 0, 0, -2.3, 38, 0, 100};
constexpr CounterModel paper{92, -22, 0, 1, 0, 0, -14, 5, 0, 100};
constexpr CounterModel pages{0.4, 18, 0, 2.5, 0.003, 25, 0, 0, 0, 400};
constexpr CounterModel upsLoad{31, 17, 6, 1.6, 0.001, 9, 0, 0, 0, 100};
constexpr CounterModel battery{100, 0, 0, 0.2, 0.0004, -20, 0, 0, 5, 100};
constexpr CounterModel mains{230.5, -2.5, 1, 0.9, 0.001, -9, 0, 0, 180, 260};
constexpr CounterModel runtime{2900, -700, -200, 35, 0.0004, -600, 0, 0, 60, 5000};
constexpr CounterModel response{180, 150, 40, 26, 0.006, 500, 0, 0, 20, 30'000};
constexpr CounterModel requests{35, 420, 20, 28, 0.003, 300, 0, 0, 0, 9000};
constexpr CounterModel pageSize{1.42, 0, 0, 0.03, 0, 0, 0.004, 30, 0.1, 20};
constexpr CounterModel clients{3, 46, 0, 2.2, 0.001, 15, 0, 0, 0, 200};
constexpr CounterModel channelUse{11, 34, 3, 3.5, 0.004, 20, 0, 0, 0, 100};
constexpr CounterModel daysToExpiry{88, 0, 0, 0, 0, 0, -1, 60, 0, 90};

constexpr ItemTemplate routerItems[] = {
    {u"Ping", u"Answers to ICMP echo", stateScale, none, 2},
    {u"Latency", u"Round-trip time", Milliseconds, latency, 0},
    {u"WAN in", u"Traffic received on the uplink", BitsPerSecond, trafficIn, 0},
    {u"WAN out", u"Traffic sent on the uplink", BitsPerSecond, trafficOut, 0},
    {u"CPU", u"Load of the route processor", Percent, routerCpu, 0},
    {u"Memory", u"Memory in use", Percent, memory, 0},
    {u"BGP session", u"Session with the provider", stateScale, none, 4},
    {u"Temperature", u"Inlet temperature", Celsius, temperature, 0},
    {u"Packet loss", u"Lost of 20 packets", Percent, loss, 0},
    {u"SSH port", u"TCP port 22", stateScale, none, 1},
};
constexpr ItemTemplate switchItems[] = {
    {u"Ping", u"Answers to ICMP echo", stateScale, none, 1},
    {u"Latency", u"Round-trip time", Milliseconds, lanLatency, 0},
    {u"Uplink in", u"Traffic received on the uplink", BitsPerSecond, trafficIn, 0},
    {u"Uplink out", u"Traffic sent on the uplink", BitsPerSecond, trafficOut, 0},
    {u"Ports in use", u"Ports with a link", Count, portsInUse, 0},
    {u"CPU", u"Processor load", Percent, routerCpu, 0},
    {u"Fans", u"All fans run", stateScale, none, 0.3},
    {u"Temperature", u"Temperature of the board", Celsius, temperature, 0},
    {u"Memory", u"Memory in use", Percent, memory, 0},
    {u"SSH port", u"TCP port 22", stateScale, none, 1},
};
constexpr ItemTemplate serverItems[] = {
    {u"Ping", u"Answers to ICMP echo", stateScale, none, 1},
    {u"Latency", u"Round-trip time", Milliseconds, lanLatency, 0},
    {u"CPU", u"Load of all processors", Percent, serverCpu, 0},
    {u"Memory", u"Memory in use", Percent, memory, 0},
    {u"Disk C: free", u"Free space on the system disk", Megabytes, diskFree, 0},
    {u"Network in", u"Traffic received", BitsPerSecond, trafficIn, 0},
    {u"Network out", u"Traffic sent", BitsPerSecond, trafficOut, 0},
    {u"File service", u"TCP port 445", stateScale, none, 3},
    {u"Processes", u"Running processes", Count, processes, 0},
    {u"Backup agent", u"The backup service runs", stateScale, none, 2},
};
constexpr ItemTemplate printerItems[] = {
    {u"Ping", u"Answers to ICMP echo", stateScale, none, 6},
    {u"Latency", u"Round-trip time", Milliseconds, lanLatency, 0},
    {u"Print service", u"TCP port 9100", stateScale, none, 5},
    {u"Toner black", u"Toner left", Percent, toner, 0},
    {u"Pages", u"Pages printed since the last test", Count, pages, 0},
    {u"Paper tray 1", u"Paper left", Percent, paper, 0},
    {u"Web page", u"TCP port 80", stateScale, none, 2},
    {u"Temperature", u"Temperature of the fuser", Celsius, temperature, 0},
};
constexpr ItemTemplate upsItems[] = {
    {u"Ping", u"Answers to ICMP echo", stateScale, none, 0.5},
    {u"On mains", u"Runs on mains, not on battery", stateScale, none, 1},
    {u"Load", u"Share of the rated power", Percent, upsLoad, 0},
    {u"Battery", u"Charge of the battery", Percent, battery, 0},
    {u"Input voltage", u"Voltage of the mains", Volts, mains, 0},
    {u"Runtime left", u"On battery at the present load", Seconds, runtime, 0},
    {u"Temperature", u"Temperature of the battery", Celsius, roomTemperature, 0},
    {u"Self-test", u"The last self-test passed", stateScale, none, 0.3},
};
constexpr ItemTemplate webItems[] = {
    {u"HTTPS", u"The start page answers with status 200", stateScale, none, 5},
    {u"Response time", u"Time to the last byte", Milliseconds, response, 0},
    {u"Certificate", u"The certificate is valid", stateScale, none, 0.2},
    {u"Requests", u"Requests a minute", Count, requests, 0},
    {u"Sign-in", u"A test user can sign in", stateScale, none, 7},
    {u"Page size", u"Size of the start page", Megabytes, pageSize, 0},
    {u"DNS", u"The name resolves", stateScale, none, 0.5},
    {u"Certificate days", u"Days to the certificate's end", Count, daysToExpiry, 0},
};
constexpr ItemTemplate accessPointItems[] = {
    {u"Ping", u"Answers to ICMP echo", stateScale, none, 3},
    {u"Latency", u"Round-trip time", Milliseconds, lanLatency, 0},
    {u"Clients", u"Associated clients", Count, clients, 0},
    {u"Traffic in", u"Traffic from the clients", BitsPerSecond, trafficOut, 0},
    {u"Traffic out", u"Traffic to the clients", BitsPerSecond, trafficIn, 0},
    {u"Channel use 2.4 GHz", u"Share of air time", Percent, channelUse, 0},
    {u"Channel use 5 GHz", u"Share of air time", Percent, channelUse, 0},
    {u"Controller link", u"Managed by the controller", stateScale, none, 2},
};
constexpr ItemTemplate climateItems[] = {
    {u"Ping", u"Answers to ICMP echo", stateScale, none, 1},
    {u"Temperature", u"Temperature of the cold aisle", Celsius, roomTemperature, 0},
    {u"Humidity", u"Relative humidity", Percent, humidity, 0},
    {u"Door", u"The door is shut", stateScale, none, 20},
    {u"Leak sensor", u"No water under the floor", stateScale, none, 0.1},
    {u"Temperature hot aisle", u"Temperature of the hot aisle", Celsius, temperature, 0},
    {u"Voltage", u"Voltage of the rack's feed", Volts, mains, 0},
    {u"Fan wall", u"All fans run", stateScale, none, 0.5},
};

struct Templates
{
    const ItemTemplate *items;
    int count;
};

Templates templatesOf(DeviceKind kind)
{
    switch (kind) {
    case DeviceKind::Router:
        return {routerItems, int(std::size(routerItems))};
    case DeviceKind::Switch:
        return {switchItems, int(std::size(switchItems))};
    case DeviceKind::Server:
        return {serverItems, int(std::size(serverItems))};
    case DeviceKind::Printer:
        return {printerItems, int(std::size(printerItems))};
    case DeviceKind::Ups:
        return {upsItems, int(std::size(upsItems))};
    case DeviceKind::WebSite:
        return {webItems, int(std::size(webItems))};
    case DeviceKind::AccessPoint:
        return {accessPointItems, int(std::size(accessPointItems))};
    case DeviceKind::Climate:
        break;
    }
    return {climateItems, int(std::size(climateItems))};
}

struct DeviceTemplate
{
    DeviceKind kind;
    const char16_t *name;
    const char16_t *description;
    const char16_t *group;
    int zone;
};

constexpr DeviceTemplate deviceTemplates[] = {
    {DeviceKind::Router, u"Zürich-Core-01", u"Core router, data centre Zürich", u"Network core", 1},
    {DeviceKind::Server, u"Kraków-FS2", u"File server, office Kraków", u"Servers", 1},
    {DeviceKind::Router, u"東京-edge", u"Edge router, office 東京", u"Network core", 9},
    {DeviceKind::WebSite, u"www.example.org", u"Public web site", u"Web", 0},
    {DeviceKind::Switch, u"Zürich-SW-A1", u"Distribution switch, rack A1", u"Network core", 1},
    {DeviceKind::Server, u"sql-prod-01", u"Database server", u"Servers", 1},
    {DeviceKind::Ups, u"UPS-Zürich-1", u"Battery room, data centre Zürich", u"Power", 1},
    {DeviceKind::AccessPoint, u"AP-Málaga-Café", u"Wireless in the café, Málaga", u"Wireless", 1},
    {DeviceKind::Printer, u"Drucker Empfang", u"Printer at the reception, Köln", u"Printers", 1},
    {DeviceKind::Climate, u"Rack-A-Klima", u"Sensors of rack A", u"Power", 1},
    {DeviceKind::Switch, u"São-Paulo-SW1", u"Access switch, office São Paulo", u"Network core", -3},
    {DeviceKind::Server, u"mail-гейт", u"Mail gateway", u"Servers", 3},
    {DeviceKind::WebSite, u"shop.example.org", u"Web shop", u"Web", 0},
    {DeviceKind::Router, u"Göteborg-RTR", u"Router, office Göteborg", u"Network core", 1},
    {DeviceKind::AccessPoint, u"AP-Ειρήνη-2", u"Wireless, second floor, Athína", u"Wireless", 2},
    {DeviceKind::Server, u"backup-nas", u"Backup storage", u"Servers", 1},
    {DeviceKind::Printer, u"Plotter \"A0\" & Co", u"Plotter of the <drawing> office", u"Printers",
     1},
    {DeviceKind::Switch, u"lab-switch", u"Switch of the test laboratory", u"Network core", 1},
    {DeviceKind::Ups, u"UPS-Kraków", u"Office Kraków", u"Power", 1},
    {DeviceKind::Server, u"O'Brien-PC", u"Workstation, Dublin", u"Servers", 0},
    {DeviceKind::WebSite, u"intranet.example.org", u"Intranet", u"Web", 0},
    {DeviceKind::AccessPoint, u"AP-Lager", u"Wireless in the warehouse", u"Wireless", 1},
    {DeviceKind::Climate, u"Rack-B-Klima", u"Sensors of rack B", u"Power", 1},
    {DeviceKind::Router, u"Łódź-VPN", u"VPN gateway, office Łódź", u"Network core", 1},
};
constexpr int templateCount = int(std::size(deviceTemplates));

/// Spans that start `mean` seconds apart on average. Most are short; one in `oneLongIn` is long.
std::vector<Span> misfortunes(Random &random, Span within, double mean, int oneLongIn)
{
    std::vector<Span> spans;
    auto at = double(within.from) + random.waiting(mean);
    while (at < double(within.to)) {
        const bool isLong = random.chance(1.0 / oneLongIn);
        const double length = isLong ? random.between(2.0 * hour, 11.0 * hour)
                                     : random.between(4.0 * minute, 40.0 * minute);
        spans.push_back({qint64(at), qint64(at + length)});
        at += length + random.waiting(mean);
    }
    return spans;
}

/// Outages in the last day and the last week.
void addRecentOutages(std::vector<Span> &spans, const MonitoringOptions &options, int index)
{
    if (index % 4 == 0)
        spans.push_back({options.until - 9 * hour, options.until - 9 * hour + 50 * minute});
    if (index % 5 == 1)
        spans.push_back({options.until - 76 * hour, options.until - 71 * hour});
    std::sort(spans.begin(), spans.end(),
              [](const Span &a, const Span &b) { return a.from < b.from; });
}

/// Maintenance: an hour or two on every second Sunday morning.
std::vector<Span> maintenance(Random &random, Span within)
{
    constexpr qint64 firstSunday = 3 * day; // 1970-01-04
    constexpr qint64 fortnight = 14 * day;
    std::vector<Span> spans;
    qint64 at = (within.from / fortnight) * fortnight + firstSunday + 2 * hour;
    for (; at < within.to; at += fortnight)
        spans.push_back({at, at + qint64(random.between(1.0 * hour, 2.5 * hour))});
    return spans;
}

QString upperText(const QUuid &id)
{
    return id.toString().toUpper();
}

MonitoredItem planItem(Random &random, const MonitoredDevice &device, int index)
{
    const Templates templates = templatesOf(device.kind);
    const ItemTemplate &source = templates.items[index % templates.count];
    const int round = index / templates.count;

    MonitoredItem item;
    item.name = QString::fromUtf16(source.name);
    if (round > 0)
        item.name += QStringLiteral(" (%1)").arg(round + 1);
    item.description = QString::fromUtf16(source.description);
    item.scale = source.scale;
    item.counter = source.counter;
    // No two devices are alike.
    const double size = random.between(0.65, 1.35);
    const bool isFixed = source.scale == Celsius || source.scale == Volts;
    if (!isFixed && source.counter.high > 100)
        item.counter.base *= size;
    item.counter.work *= random.between(0.7, 1.2);
    item.counter.night *= random.between(0.5, 1.2);
    item.counter.drift *= random.between(0.8, 1.2);
    if (source.scale == stateScale && source.failuresPerMonth > 0)
        item.failures =
            misfortunes(random, device.monitored, 30.0 * day / source.failuresPerMonth, 12);
    return item;
}

MonitoredDevice planDevice(Random &random, const MonitoringOptions &options, int index)
{
    const DeviceTemplate &source = deviceTemplates[index % templateCount];
    const int round = index / templateCount;

    MonitoredDevice device;
    device.ident = index + 1;
    device.kind = source.kind;
    device.name = QString::fromUtf16(source.name);
    if (round > 0)
        device.name += QStringLiteral(" %1").arg(round + 1);
    device.muid = upperText(QUuid::createUuidV5(
        QUuid(0x7A9E0C51, 0x3B64, 0x4E0F, 0x9D, 0x21, 0x5C, 0x0B, 0x8E, 0x44, 0x17, 0x3A),
        QStringLiteral("%1/%2").arg(options.seed).arg(index)));
    device.description = QString::fromUtf16(source.description);
    device.group = QString::fromUtf16(source.group);
    device.address =
        QStringLiteral("10.%1.%2.%3").arg(index / 250).arg(int(source.kind)).arg(index % 250 + 1);
    device.zone = source.zone;
    device.monitored = {options.until - options.days * day, options.until + 1};
    if (options.devices >= 4) {
        const int fromLast = options.devices - 1 - index;
        const qint64 all = options.days * day;
        if (fromLast == 0) {
            device.monitored = {options.until, options.until};
            device.notes = QStringLiteral("Ordered, not yet installed.");
        } else if (fromLast == 1) {
            device.monitored.to = options.until - std::min(21 * day, all / 2);
            device.notes = QStringLiteral("Taken out of service.");
        } else if (fromLast == 2) {
            device.monitored.from = options.until - std::min(5 * day / 2, all / 3);
            device.notes = QStringLiteral("New.");
        }
    }
    device.isExcluded = index % 17 == 9;
    const double daysBetweenOutages = index % 9 == 7 ? 1.5 : 12; // some are shaky
    device.outages = misfortunes(random, device.monitored, daysBetweenOutages * day, 8);
    addRecentOutages(device.outages, options, index);
    if (index % 3 == 1)
        device.pauses = maintenance(random, device.monitored);
    for (int i = 0; i < options.items; ++i) {
        MonitoredItem item = planItem(random, device, i);
        item.dataIdent = index * options.items + i + 1;
        item.isGlobal = i == 0 || item.dataIdent % 29 != 17;
        device.items.push_back(std::move(item));
    }
    return device;
}

} // namespace

MonitoringPlan planMonitoring(const MonitoringOptions &options)
{
    MonitoringPlan plan;
    plan.options = options;
    plan.scales = {
        {stateScale, QStringLiteral("State"), QStringLiteral("State")},
        {Milliseconds, QStringLiteral("Milliseconds"), QStringLiteral("ms")},
        {Percent, QStringLiteral("Percent"), QStringLiteral("%")},
        {BitsPerSecond, QStringLiteral("Bits per second"), QStringLiteral("bit/s")},
        {Megabytes, QStringLiteral("Megabytes"), QStringLiteral("MB")},
        {Celsius, QStringLiteral("Degrees Celsius"), QStringLiteral("°C")},
        {Count, QStringLiteral("Count"), QStringLiteral("#")},
        {Volts, QStringLiteral("Volts"), QStringLiteral("V")},
        {Seconds, QStringLiteral("Seconds"), QStringLiteral("s")},
    };
    Random random(options.seed);
    for (int i = 0; i < options.devices; ++i)
        plan.devices.push_back(planDevice(random, options, i));

    const qint64 all = options.days * day;
    const qint64 stop = options.until - all + qint64(random.between(0.5, 0.8) * double(all));
    plan.pauses.push_back({stop, stop + std::min(3 * hour, all / 20)});
    return plan;
}

} // namespace demo
