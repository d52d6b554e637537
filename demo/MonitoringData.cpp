#include "demo/MonitoringData.h"

#include "demo/AccessWriter.h"
#include "demo/Random.h"

#include <algorithm>
#include <cmath>

namespace demo {

namespace {

constexpr double secondsPerDay = 86400;

Field field(const char16_t *name, FieldType type, int size = 255)
{
    return {QString::fromUtf16(name), type, size};
}

void writeScales(AccessWriter &writer, const MonitoringPlan &plan)
{
    using enum FieldType;
    TableWriter &table = writer.addTable(
        QStringLiteral("Scales"), {field(u"iScale", Long), field(u"ScaleName", Text, 50),
                                   field(u"ScaleAbbr", Text, 20), field(u"ScaleFactor", Double)});
    for (const Scale &scale : plan.scales) {
        table.setInteger(0, scale.scale);
        table.setText(1, scale.name);
        table.setText(2, scale.abbreviation);
        table.setNumber(3, 1);
        table.append();
    }
}

void writeDevices(AccessWriter &writer, const MonitoringPlan &plan)
{
    using enum FieldType;
    TableWriter &table = writer.addTable(
        QStringLiteral("Devices"),
        {field(u"IDent", Long), field(u"MUID", Text, 50), field(u"MachName", Text, 100),
         field(u"MachAddress", Text, 100), field(u"MachDesc", Text, 255),
         field(u"MachGroup", Text, 100), field(u"MachExclude", Boolean),
         field(u"MachAdded", DateTime), field(u"MachNotes", Memo)});
    for (const MonitoredDevice &device : plan.devices) {
        table.setInteger(0, device.ident);
        table.setText(1, device.muid);
        table.setText(2, device.name);
        table.setText(3, device.address);
        table.setText(4, device.description);
        table.setText(5, device.group);
        table.setBoolean(6, device.isExcluded);
        table.setNumber(7, accessDays(device.monitored.from * 1000));
        if (!device.notes.isEmpty())
            table.setText(8, device.notes);
        table.append();
    }
}

void writeDataFields(AccessWriter &writer, const MonitoringPlan &plan)
{
    using enum FieldType;
    TableWriter &table = writer.addTable(
        QStringLiteral("DataFields"),
        {field(u"DataIDent", Long), field(u"IDent", Long), field(u"DataName", Text, 100),
         field(u"DataDesc", Text, 255), field(u"iScale", Long), field(u"IsGlobal", Integer),
         field(u"Interval", Long), field(u"DataLimit", Double)});
    for (const MonitoredDevice &device : plan.devices) {
        for (const MonitoredItem &item : device.items) {
            table.setInteger(0, item.dataIdent);
            table.setInteger(1, device.ident);
            table.setText(2, item.name);
            table.setText(3, item.description);
            table.setInteger(4, item.scale);
            table.setInteger(5, item.isGlobal ? -1 : 0);
            table.setInteger(6, plan.options.interval);
            table.append();
        }
    }
}

/// Whether ascending times are within one of a list of ascending spans.
class SpanWalk
{
public:
    explicit SpanWalk(const std::vector<Span> &spans)
        : m_spans(&spans)
    {}

    bool contains(qint64 time)
    {
        while (m_next < m_spans->size() && (*m_spans)[m_next].to <= time)
            ++m_next;
        return m_next < m_spans->size() && (*m_spans)[m_next].from <= time;
    }

private:
    const std::vector<Span> *m_spans;
    std::size_t m_next = 0;
};

/// How busy people are, 0 to 1: working days from eight to six, with a dip at noon; little on
/// weekends.
double businessAt(double hourOfDay, bool isWeekend)
{
    const double morning = std::exp(-std::pow((hourOfDay - 10.3) / 2.1, 2));
    const double afternoon = std::exp(-std::pow((hourOfDay - 15.1) / 2.5, 2));
    return std::min(1.0, morning + 0.94 * afternoon) * (isWeekend ? 0.16 : 1.0);
}

/// A moment in a device's local time.
struct Moment
{
    double business;
    bool nightJobs;
    double days; ///< since 1970
};

Moment momentAt(qint64 time, int zone)
{
    const double local = double(time + zone * 3600) / secondsPerDay;
    const double wholeDays = std::floor(local);
    const double hourOfDay = (local - wholeDays) * 24;
    const int weekday = int(qint64(wholeDays) % 7); // 0: Thursday
    return {businessAt(hourOfDay, weekday == 2 || weekday == 3), hourOfDay >= 1 && hourOfDay < 2.75,
            double(time) / secondsPerDay};
}

struct ItemState
{
    const MonitoredItem *item;
    SpanWalk failures;
    double wander = 0; ///< noise that follows its own past
    bool failed = false;
};

struct DeviceState
{
    const MonitoredDevice *device;
    SpanWalk outages;
    SpanWalk pauses;
    std::vector<ItemState> items;
};

class Sampler
{
public:
    Sampler(AccessWriter &writer, const MonitoringPlan &plan);

    /// Tests every device once, in the interval that starts at `tick`.
    void run(qint64 tick);
    qint64 count() const { return m_count; }

private:
    enum Fields { Sequence, DataIDent, Date, State, Value, Message };

    void testDevice(DeviceState &state, qint64 time);
    void addState(ItemState &state, qint64 time, bool deviceFails);
    void addCounter(ItemState &state, qint64 time, const Moment &moment);
    void add(const MonitoredItem &item, qint64 time, bool isGood, double value,
             QStringView message);

    const MonitoringOptions &m_options;
    TableWriter &m_table;
    Random m_random;
    SpanWalk m_pauses;
    std::vector<DeviceState> m_devices;
    qint64 m_count = 0;
};

Sampler::Sampler(AccessWriter &writer, const MonitoringPlan &plan)
    : m_options(plan.options)
    , m_table(writer.addTable(
          QStringLiteral("DataValues"),
          {field(u"iSequence", FieldType::Long), field(u"DataIDent", FieldType::Long),
           field(u"iDate", FieldType::DateTime), field(u"iState", FieldType::Integer),
           field(u"iValue", FieldType::Double), field(u"iMessage", FieldType::Text, 80)}))
    , m_random(plan.options.seed ^ 0xD3A0'5A3Fu)
    , m_pauses(plan.pauses)
{
    for (const MonitoredDevice &device : plan.devices) {
        DeviceState state{&device, SpanWalk(device.outages), SpanWalk(device.pauses), {}};
        for (const MonitoredItem &item : device.items)
            state.items.push_back({&item, SpanWalk(item.failures)});
        m_devices.push_back(std::move(state));
    }
}

void Sampler::run(qint64 tick)
{
    // The devices' turns are spread over the interval; a turn comes a few seconds late at most.
    const auto devices = qint64(m_devices.size());
    const qint64 turn = m_options.interval / devices;
    for (qint64 i = 0; i < devices; ++i) {
        const qint64 late =
            turn > 1 ? qint64(m_random.share() * double(std::min<qint64>(4, turn))) : 0;
        testDevice(m_devices[std::size_t(i)], tick + i * m_options.interval / devices + late);
    }
}

void Sampler::testDevice(DeviceState &state, qint64 time)
{
    const MonitoredDevice &device = *state.device;
    const bool isMonitored =
        time >= device.monitored.from && time < device.monitored.to && time <= m_options.until;
    if (!isMonitored || m_pauses.contains(time) || state.pauses.contains(time))
        return;

    const Moment moment = momentAt(time, device.zone);
    const bool deviceFails = state.outages.contains(time);
    for (ItemState &item : state.items) {
        if (item.item->scale == stateScale)
            addState(item, time, deviceFails);
        else if (!deviceFails)
            addCounter(item, time, moment);
    }
}

void Sampler::addState(ItemState &state, qint64 time, bool deviceFails)
{
    constexpr double lostPacket = 0.0006;
    const bool itemFails = state.failures.contains(time);
    const bool fails = deviceFails || itemFails || m_random.chance(lostPacket);
    QStringView message;
    if (fails)
        message = deviceFails ? u"Host unreachable" : itemFails ? u"No answer" : u"Timed out";
    else if (state.failed)
        message = u"Recovered";
    state.failed = fails;
    add(*state.item, time, !fails, fails ? 0 : 1, message);
}

void Sampler::addCounter(ItemState &state, qint64 time, const Moment &moment)
{
    const CounterModel &model = state.item->counter;
    // Three quarters of the noise lasts from one sample to the next.
    state.wander = 0.8 * state.wander + 0.6 * m_random.normal();
    double value = model.base + model.work * moment.business +
                   model.noise * (0.75 * state.wander + 0.6 * m_random.normal());
    if (moment.nightJobs)
        value += model.night;
    if (model.resetDays > 0) {
        const double offset = double(state.item->dataIdent % 97) / 97 * model.resetDays;
        value += model.drift * std::fmod(moment.days + offset, model.resetDays);
    }
    const bool isSpike = model.spikeChance > 0 && m_random.chance(model.spikeChance);
    if (isSpike)
        value += model.spike * m_random.between(1, 3);
    value = std::round(std::clamp(value, model.low, model.high) * 100) / 100;
    add(*state.item, time, !isSpike, value,
        isSpike ? QStringView(u"Out of limits") : QStringView());
}

void Sampler::add(const MonitoredItem &item, qint64 time, bool isGood, double value,
                  QStringView message)
{
    m_table.setInteger(Sequence, ++m_count);
    m_table.setInteger(DataIDent, item.dataIdent);
    m_table.setNumber(Date, accessDays(time * 1000));
    m_table.setInteger(State, isGood ? 1 : 0);
    m_table.setNumber(Value, value);
    if (!message.isEmpty())
        m_table.setText(Message, message);
    m_table.append();
}

} // namespace

qint64 writeMonitoringData(const QString &path, const MonitoringPlan &plan,
                           const WriteProgress &progress)
{
    AccessWriter writer(path, plan.options.until * 1000);
    writeScales(writer, plan);
    writeDevices(writer, plan);
    writeDataFields(writer, plan);

    Sampler sampler(writer, plan);
    const qint64 length = qint64(plan.options.days) * qint64(secondsPerDay);
    const qint64 begin = plan.options.until - length;
    int tenths = -1;
    for (qint64 tick = begin; tick <= plan.options.until; tick += plan.options.interval) {
        sampler.run(tick);
        const int done = int((tick - begin) * 10 / length);
        if (progress && done != tenths)
            progress(double(tenths = done) / 10);
    }
    writer.finish();
    return sampler.count();
}

} // namespace demo
