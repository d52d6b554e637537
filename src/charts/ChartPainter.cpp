#include "charts/ChartPainter.h"

#include "base/Error.h"
#include "base/Files.h"
#include "charts/ImageFile.h"

#include <algorithm>

namespace {

constexpr int maxHeight = 8'000;
constexpr int maxWidth = 16'000;

const ChartFrame &frameOf(const Chart &chart)
{
    return std::visit([](const auto &kind) -> const ChartFrame & { return kind.frame; }, chart);
}

} // namespace

void paintChart(QPainter &painter, const Chart &chart, const QSizeF &logicalSize)
{
    painter.save();
    if (const auto *state = std::get_if<StateChart>(&chart))
        paintStateChart(painter, *state, logicalSize);
    else if (const auto *counter = std::get_if<CounterChart>(&chart))
        paintCounterChart(painter, *counter, logicalSize);
    else if (const auto *devices = std::get_if<DeviceRateChart>(&chart))
        paintDeviceRateChart(painter, *devices, logicalSize);
    else if (const auto *timeline = std::get_if<TimelineChart>(&chart))
        paintTimelineChart(painter, *timeline, logicalSize);
    painter.restore();
}

QSize chartSize(const Chart &chart)
{
    QSize size = frameOf(chart).size;
    if (const auto *devices = std::get_if<DeviceRateChart>(&chart))
        size.setHeight(std::max(size.height(), deviceRateChartHeight(*devices)));
    else if (const auto *timeline = std::get_if<TimelineChart>(&chart))
        size.setHeight(timelineChartHeight(*timeline));
    return {std::clamp(size.width(), 160, maxWidth), std::clamp(size.height(), 120, maxHeight)};
}

QImage drawChart(const Chart &chart)
{
    const QSize size = chartSize(chart);
    const int ratio = frameOf(chart).quality >= 3 ? 2 : 1;
    QImage image(size * ratio, QImage::Format_RGB32);
    if (image.isNull())
        throw Error(Overflow, QStringLiteral("No memory for a chart of %1 by %2 pixels")
                                  .arg(size.width() * ratio)
                                  .arg(size.height() * ratio));
    image.setDevicePixelRatio(ratio);
    QPainter painter(&image);
    paintChart(painter, chart, size);
    painter.end();
    image.setDevicePixelRatio(1);
    return image;
}

void saveChart(const Chart &chart, const QString &path, const QString &format)
{
    const Compression compression =
        frameOf(chart).quality <= 0 ? Compression::Small : Compression::Fast;
    saveExactFile(path, encodeImage(drawChart(chart), format, compression));
}
