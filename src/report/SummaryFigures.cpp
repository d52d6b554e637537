#include "report/SummaryFigures.h"

void SummaryFigures::addDevice(qint64 deviceSuccesses, qint64 deviceFailures)
{
    ++devices;
    troubled += deviceFailures > 0 ? 1 : 0;
    silent += deviceSuccesses + deviceFailures == 0 ? 1 : 0;
    successes += deviceSuccesses;
    failures += deviceFailures;
}

Placeholders SummaryFigures::placeholders() const
{
    return {{QLatin1String("total.rate"), total().rateText()},
            {QLatin1String("total.tests"), QString::number(total().tests())},
            {QLatin1String("total.failed"), QString::number(failures)},
            {QLatin1String("total.devices"), QString::number(devices)},
            {QLatin1String("total.troubled"), QString::number(troubled)},
            {QLatin1String("total.silent"), QString::number(silent)}};
}
