#include "core/Files.h"
#include "demo/AccessWriter.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>

#include <algorithm>
#include <cmath>
#include <cstdio>

/// Writes a home folder whose reports show every kind of page: with and without failures, with gaps
/// and without data, long series, and names that are markup or attacks.

namespace {

using demo::FieldType;

const QString markup = QStringLiteral("<script>window.owned=1</script>"
                                      "<b onmouseover=\"window.owned=2\">\"Tom\" & 'Jerry' <3</b>");

demo::Field field(const char *name, FieldType type)
{
    demo::Field made;
    made.name = QLatin1String(name);
    made.type = type;
    return made;
}

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
    QString description = QStringLiteral("What it is for");

    QString muid() const
    {
        return QStringLiteral("{M-%1}").arg(ident == 6 ? QStringLiteral("\"'?#%41:<6")
                                                       : QString::number(ident));
    }
};

const QString leave = QStringLiteral("<meta http-equiv=refresh content=\"0;url=TOP.HTM\">"
                                     "<base href=\"//example.com/\"><a href=javascript:owned=3>x");
const QString breakOut = QStringLiteral("\"' autofocus onfocus='window.owned=4' x=\"</title></dd>"
                                        "<script src=\"../../owned.csv\"></script></script><b><i>");
const QString placeholders =
    QStringLiteral("%%report.list%%%%device.list%%%%state.detail%%%%dev.varblist%%"
                   "%%detail.list%%%%detail.items%%%%page.nonce%%%%report.title%%");

constexpr int state = 21;
constexpr int milliseconds = 3;
constexpr int bitsPerSecond = 4;
constexpr int hostileScale = 5;
constexpr int silentItem = 32;
constexpr int days = 7;
constexpr qint64 interval = 300;

const std::vector<Device> devices = {
    {1,
     QStringLiteral("Router"),
     {{11, QStringLiteral("Ping"), state}, {12, QStringLiteral("Uplink in"), bitsPerSecond}}},
    {2, markup, {{21, markup, state}, {22, markup, milliseconds}}},
    {3,
     QStringLiteral("Quiet device"),
     {{31, QStringLiteral("Ping"), state}, {silentItem, QStringLiteral("Latency"), milliseconds}}},
    {4,
     QStringLiteral("A device with a name of many words, to see how lists, tables and bars cope"),
     {{41, QStringLiteral("Ping"), state}}},
    {5, QStringLiteral("core1<!--"), {{51, leave, state}, {52, breakOut, hostileScale}}, leave},
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
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    demo::AccessWriter file(path, now * 1000);
    demo::TableWriter &machines =
        file.addTable(QStringLiteral("Devices"),
                      {field("IDent", FieldType::Long), field("MUID", FieldType::Text),
                       field("MachName", FieldType::Text), field("MachDesc", FieldType::Text)});
    demo::TableWriter &fields =
        file.addTable(QStringLiteral("DataFields"),
                      {field("DataIDent", FieldType::Long), field("IDent", FieldType::Long),
                       field("DataName", FieldType::Text), field("DataDesc", FieldType::Text),
                       field("iScale", FieldType::Long), field("IsGlobal", FieldType::Integer)});
    demo::TableWriter &scales =
        file.addTable(QStringLiteral("Scales"),
                      {field("iScale", FieldType::Long), field("ScaleName", FieldType::Text),
                       field("ScaleAbbr", FieldType::Text)});
    demo::TableWriter &values =
        file.addTable(QStringLiteral("DataValues"),
                      {field("DataIDent", FieldType::Long), field("iDate", FieldType::DateTime),
                       field("iState", FieldType::Long), field("iValue", FieldType::Double)});
    const auto addScale = [&](int scale, const QString &name, const QString &unit) {
        scales.setInteger(0, scale);
        scales.setText(1, name);
        scales.setText(2, unit);
        scales.append();
    };
    addScale(state, QStringLiteral("State"), QStringLiteral("State"));
    addScale(milliseconds, QStringLiteral("Milliseconds"), QStringLiteral("ms"));
    addScale(hostileScale, breakOut, breakOut);
    addScale(bitsPerSecond, QStringLiteral("Bits per second"), QStringLiteral("bit/s"));

    for (const Device &device : devices) {
        machines.setInteger(0, device.ident);
        machines.setText(1, device.muid());
        machines.setText(2, device.name);
        machines.setText(3, device.ident == 2 ? markup : device.description);
        machines.append();
        for (const Item &item : device.items) {
            fields.setInteger(0, item.ident);
            fields.setInteger(1, device.ident);
            fields.setText(2, item.name);
            fields.setText(3, device.ident == 2 ? markup : QStringLiteral("What it tells"));
            fields.setInteger(4, item.scale);
            fields.setInteger(5, 1);
            fields.append();
        }
    }
    const qint64 count = days * 86'400 / interval;
    for (qint64 n = 0; n < count; ++n) {
        const double date = static_cast<double>(now - (count - n) * interval) / 86'400 + 25'569;
        for (const Device &device : devices) {
            if (isGap(device, n))
                continue;
            for (const Item &item : device.items) {
                values.setInteger(0, item.ident);
                values.setNumber(1, date);
                values.setInteger(2, item.scale == state && fails(device, n) ? 0 : 1);
                values.setNumber(3, item.scale == state ? 0 : valueOf(item, n));
                values.append();
            }
        }
    }
    file.finish();
}

QString reportElement(const QString &id, const QString &title, const QString &chart,
                      const std::vector<int> &idents)
{
    QString text =
        QStringLiteral("<CUSTOMREPORT ReportID=\"{R-%1}\" ReportTitle=\"%2\" ChartID=\"{%3}\">\n")
            .arg(id, title.toHtmlEscaped(), chart);
    for (const Device &device : devices) {
        if (std::find(idents.begin(), idents.end(), device.ident) == idents.end())
            continue;
        text += QStringLiteral("<DEVICE MUID=\"%1\">").arg(device.muid().toHtmlEscaped());
        for (const Item &item : device.items)
            text += QStringLiteral("<DATUM DataIDent=\"%1\"/>").arg(item.ident);
        text += QLatin1String("</DEVICE>\n");
    }
    return text + QLatin1String("</CUSTOMREPORT>\n");
}

QString chartElement(const QString &id, const QString &title, int frequency, int minutes, int count)
{
    return QStringLiteral(
               "<CHART ChartID=\"{%1}\" Title=\"%2\" SampleLabel=\"Average\" Frequency=\"%3\" "
               "SubFreq=\"0\" "
               "MinuteInterval=\"%4\" IntervalCount=\"%5\" StateFile=\"StateChart.HTML\" "
               "CountFile=\"CountChart.HTML\" ChartDuration=\"0\" ChartQuality=\"2\"/>\n")
        .arg(id, title)
        .arg(frequency)
        .arg(minutes)
        .arg(count);
}

void writeHome(const QString &home)
{
    QDir().mkpath(home + QLatin1String("/VTRDataRoot"));
    QDir().mkpath(home + QLatin1String("/Config"));
    writeDatabase(home + QLatin1String("/VTRDataRoot/VTRGData.MDB"));
    const QString charts =
        chartElement(QStringLiteral("hours"), QStringLiteral("Last week by hour"), 1, 60, 168) +
        chartElement(QStringLiteral("minutes"), QStringLiteral("Last week by 5 minutes"), 0, 5,
                     2016) +
        chartElement(QStringLiteral("hostile"), (breakOut + placeholders).toHtmlEscaped(), 1, 60,
                     168);
    QString reports =
        reportElement(QStringLiteral("all"), QStringLiteral("All devices"), QStringLiteral("hours"),
                      {1, 2, 3, 4}) +
        reportElement(QStringLiteral("fine"), QStringLiteral("Nothing failed"),
                      QStringLiteral("hours"), {4}) +
        reportElement(QStringLiteral("long"), QStringLiteral("Long series"),
                      QStringLiteral("minutes"), {1}) +
        reportElement(QStringLiteral("silent"), QStringLiteral("Nothing heard"),
                      QStringLiteral("hours"), {3}) +
        reportElement(QStringLiteral("never"), QStringLiteral("Never run & <b>named</b> so"),
                      QStringLiteral("hours"), {1}) +
        reportElement(QStringLiteral("hostile"), leave + placeholders + breakOut,
                      QStringLiteral("hostile"), {5, 6, 1});
    for (int i = 1; i <= 5; ++i) // more than one takes in at a glance
        reports += reportElement(QStringLiteral("spare%1").arg(i),
                                 QStringLiteral("Spare %1").arg(i), QStringLiteral("hours"), {});
    saveFile(home + QLatin1String("/Config/ChartDefs.XML"),
             QStringLiteral("<CHARTDEFS>\n%1</CHARTDEFS>\n").arg(charts).toUtf8());
    saveFile(home + QLatin1String("/Config/ChartSelection.XML"),
             QStringLiteral("<REPORTDEFINITIONS>\n%1</REPORTDEFINITIONS>\n").arg(reports).toUtf8());
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fputs("Usage: pages-home FOLDER\n", stderr);
        return 2;
    }
    writeHome(QString::fromLocal8Bit(argv[1]));
    return 0;
}
