#include "base/Files.h"
#include "base/ProgramState.h"
#include "support/AccessTables.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>

#include <cmath>
#include <cstdio>

/// Writes a home folder whose reports show every kind of page: with and without failures, with gaps
/// and without data, long series, and names that are markup or attacks.

namespace {

const QString markup = "<script>window.owned=1</script>"
                       "<b onmouseover=\"window.owned=2\">\"Tom\" & 'Jerry' <3</b>";

struct Item
{
    int ident = 0;
    QString name;
    int scale = 0;
};

struct Device
{
    int ident = 0;
    QString name;
    std::vector<Item> items;
    QString description = "What it is for";

    QString muid() const { return ident == 6 ? "{M-\"'?#%41:<6}" : QString("{M-%1}").arg(ident); }
};

const QString leave = "<meta http-equiv=refresh content=\"0;url=TOP.HTM\">"
                      "<base href=\"//example.com/\"><a href=javascript:owned=3>x";
const QString breakOut = "\"' autofocus onfocus='window.owned=4' x=\"</title></dd>"
                         "<script src=\"../../owned.csv\"></script></script><b><i>";
const QString placeholders = "%%report.list%%%%device.list%%%%state.detail%%%%dev.varblist%%"
                             "%%detail.list%%%%detail.items%%%%page.nonce%%%%report.title%%";

constexpr int state = 21;
constexpr int milliseconds = 3;
constexpr int bitsPerSecond = 4;
constexpr int hostileScale = 5;
constexpr int silentItem = 32;
constexpr int days = 7;
constexpr qint64 interval = 300;

const std::vector<Device> devices = {
    {1, "Router", {{11, "Ping", state}, {12, "Uplink in", bitsPerSecond}}},
    {2, markup, {{21, markup, state}, {22, markup, milliseconds}}},
    {3, "Quiet device", {{31, "Ping", state}, {silentItem, "Latency", milliseconds}}},
    {4,
     "A device with a name of many words, to see how lists, tables and bars cope",
     {{41, "Ping", state}}},
    {5, "core1<!--", {{51, leave, state}, {52, breakOut, hostileScale}}, leave},
    {6, placeholders, {{61, placeholders, state}, {62, breakOut, state}}, breakOut},
};

/// Devices 1 and 2 fail and pause now and then, 3 has nothing at all, 4 never fails.
bool isGap(const Device &device, qint64 n)
{
    return device.ident == 3 || (device.ident < 3 && n % 700 < 24);
}

bool fails(const Device &device, qint64 n)
{
    return device.ident < 3 && (n % 500 < 9 || n % 97 == 0);
}

double valueOf(const Item &item, qint64 n)
{
    const double wave = std::sin(static_cast<double>(n) / 46) + 1.2;
    return item.scale == bitsPerSecond ? wave * 4.1e7 + static_cast<double>(n % 13) * 1e6
                                       : wave * 12;
}

void writeDatabase(const QString &path)
{
    using enum demo::FieldType;
    const qint64 now = QDateTime::currentSecsSinceEpoch() * 1000;
    std::vector<Row> machines;
    std::vector<Row> fields;
    std::vector<Row> values;
    for (const Device &device : devices) {
        const bool isMarkup = device.ident == 2;
        machines.push_back(
            {device.ident, device.muid(), device.name, isMarkup ? markup : device.description});
        for (const Item &item : device.items)
            fields.push_back({item.ident, device.ident, item.name,
                              isMarkup ? markup : "What it tells", item.scale, 1});
    }
    const qint64 count = days * 86'400 / interval;
    for (qint64 n = 0; n < count; ++n) {
        for (const Device &device : devices) {
            if (isGap(device, n))
                continue;
            for (const Item &item : device.items)
                values.push_back({item.ident, now - (count - n) * interval * 1000,
                                  item.scale == state && fails(device, n) ? 0 : 1,
                                  item.scale == state ? 0.0 : valueOf(item, n)});
        }
    }
    writeTables(path,
                {{"Devices",
                  {{"IDent", Long}, {"MUID", Text}, {"MachName", Text}, {"MachDesc", Text}},
                  machines},
                 {"DataFields",
                  {{"DataIDent", Long},
                   {"IDent", Long},
                   {"DataName", Text},
                   {"DataDesc", Text},
                   {"iScale", Long},
                   {"IsGlobal", Integer}},
                  fields},
                 {"Scales",
                  {{"iScale", Long}, {"ScaleName", Text}, {"ScaleAbbr", Text}},
                  {{state, "State", "State"},
                   {milliseconds, "Milliseconds", "ms"},
                   {hostileScale, breakOut, breakOut},
                   {bitsPerSecond, "Bits per second", "bit/s"}}},
                 {"DataValues",
                  {{"DataIDent", Long}, {"iDate", DateTime}, {"iState", Long}, {"iValue", Double}},
                  values}});
}

QString reportElement(const QString &id, const QString &title, const QString &chart,
                      const QList<int> &idents)
{
    QString text = QString("<CUSTOMREPORT ReportID=\"{R-%1}\" ReportTitle=\"%2\" ChartID=\"{%3}\" "
                           "Target=\"99.5\" ServiceHours=\"Mon-Sun 06:00-23:00\">\n")
                       .arg(id, title.toHtmlEscaped(), chart);
    for (const Device &device : devices) {
        if (!idents.contains(device.ident))
            continue;
        text += "<DEVICE MUID=\"" + device.muid().toHtmlEscaped() + "\">";
        for (const Item &item : device.items)
            text += QString("<DATUM DataIDent=\"%1\"/>").arg(item.ident);
        text += "</DEVICE>\n";
    }
    return text + "</CUSTOMREPORT>\n";
}

QString chartElement(const QString &id, const QString &title, int frequency, int minutes, int count)
{
    return QString("<CHART ChartID=\"{%1}\" Title=\"%2\" SampleLabel=\"Average\" "
                   "Frequency=\"%3\" SubFreq=\"0\" MinuteInterval=\"%4\" IntervalCount=\"%5\" "
                   "StateFile=\"StateChart.HTML\" CountFile=\"CountChart.HTML\" "
                   "ChartDuration=\"0\" ChartQuality=\"2\"/>\n")
        .arg(id, title.toHtmlEscaped())
        .arg(frequency)
        .arg(minutes)
        .arg(count);
}

void writeHome(const QString &home)
{
    QDir().mkpath(home + "/VTRDataRoot");
    QDir().mkpath(home + "/Config");
    writeDatabase(home + "/VTRDataRoot/VTRGData.MDB");
    const QString charts = chartElement("hours", "Last week by hour", 1, 60, 168) +
                           chartElement("minutes", "Last week by 5 minutes", 0, 5, 2016) +
                           chartElement("hostile", breakOut + placeholders, 1, 60, 168);
    QString reports =
        reportElement("all", "All devices", "hours", {1, 2, 3, 4}) +
        reportElement("fine", "Nothing failed", "hours", {4}) +
        reportElement("long", "Long series", "minutes", {1}) +
        reportElement("silent", "Nothing heard", "hours", {3}) +
        reportElement("never", "Never run & <b>named</b> so", "hours", {1}) +
        reportElement("hostile", leave + placeholders + breakOut, "hostile", {5, 6, 1});
    for (int i = 1; i <= 5; ++i) // more than one takes in at a glance
        reports +=
            reportElement(QString("spare%1").arg(i), QString("Spare %1").arg(i), "hours", {});
    saveFile(home + "/Config/ChartDefs.XML",
             ("<CHARTDEFS>\n" + charts + "</CHARTDEFS>\n").toUtf8());
    saveFile(home + "/Config/ChartSelection.XML",
             ("<REPORTDEFINITIONS>\n" + reports + "</REPORTDEFINITIONS>\n").toUtf8());
}

} // namespace

int main(int argc, char *argv[])
{
    const ProgramState state;
    const QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fputs("Usage: pages-home FOLDER\n", stderr);
        return 2;
    }
    writeHome(QString::fromLocal8Bit(argv[1]));
    return 0;
}
