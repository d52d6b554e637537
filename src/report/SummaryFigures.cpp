#include "report/SummaryFigures.h"

#include "core/Error.h"
#include "core/Files.h"
#include "core/Numbers.h"
#include "report/StateRow.h"

#include <QFileInfo>
#include <QStringList>

namespace {

/// The fields of the CSV record that `rest` begins with; `rest` then begins behind it.
QStringList takeRecord(QStringView &rest)
{
    QStringList fields(QString{});
    bool quoted = false;
    qsizetype at = 0;
    for (; at < rest.size(); ++at) {
        const QChar c = rest[at];
        if (c == u'"') {
            if (!quoted && at > 0 && rest[at - 1] == u'"')
                fields.last() += c;
            quoted = !quoted;
        } else if (c == u',' && !quoted) {
            fields.append(QString());
        } else if (c == u'\n' && !quoted) {
            break;
        } else {
            fields.last() += c;
        }
    }
    rest = rest.mid(std::min(at + 1, rest.size()));
    return fields;
}

} // namespace

void SummaryFigures::addDevice(double deviceSuccesses, double deviceFailures)
{
    ++devices;
    troubled += deviceFailures > 0 ? 1 : 0;
    silent += deviceSuccesses + deviceFailures == 0 ? 1 : 0;
    successes += deviceSuccesses;
    failures += deviceFailures;
}

Placeholders SummaryFigures::placeholders() const
{
    const StateRow total{QString(), successes, failures};
    return {{QLatin1String("total.rate"), total.rateText()},
            {QLatin1String("total.tests"), plainNumber(total.tests())},
            {QLatin1String("total.failed"), plainNumber(failures)},
            {QLatin1String("total.devices"), QString::number(devices)},
            {QLatin1String("total.troubled"), QString::number(troubled)},
            {QLatin1String("total.silent"), QString::number(silent)}};
}

std::optional<SummaryFigures> readSummaryFigures(const QString &csvPath)
{
    if (!QFileInfo::exists(nativePath(csvPath)))
        return {};
    try {
        const QString text = decodeText(readFile(csvPath));
        QStringView rest(text);
        takeRecord(rest); // the names of the columns
        SummaryFigures figures;
        while (!rest.isEmpty()) {
            const QStringList fields = takeRecord(rest); // name, success, failed, total, rate
            bool first = false;
            bool second = false;
            if (fields.size() != 5)
                return {};
            figures.addDevice(fields[1].toDouble(&first), fields[2].toDouble(&second));
            if (!first || !second)
                return {};
        }
        return figures;
    } catch (const Error &) {
        return {};
    }
}
