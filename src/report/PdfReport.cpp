#include "report/PdfReport.h"

#include "base/Durations.h"
#include "base/Numbers.h"
#include "charts/ChartFramePainter.h"
#include "charts/ChartPainter.h"
#include "report/PdfSections.h"
#include "report/ReportTimeline.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace {

constexpr double gap = 8;          ///< between charts, tiles and columns
constexpr double chartWidth = 640; ///< logical pixels of a chart as wide as the page
constexpr double timelineWidth = 760;

QPageSize paperSize()
{
    return QPageSize(QLocale().measurementSystem() == QLocale::ImperialUSSystem ? QPageSize::Letter
                                                                                : QPageSize::A4);
}

QString number(qint64 count)
{
    return groupedNumber(static_cast<double>(count), 0);
}

/// What is told of a device above its charts; empty without tests.
QString figuresText(const DeviceFigures &device)
{
    const Availability &present = device.present;
    if (present.tests == 0)
        return isWithoutData(device) ? QStringLiteral("No data in this period.") : QString();
    QString text =
        QStringLiteral("%1 of %2 tests succeeded").arg(rateText(present), number(present.tests));
    if (const QString points = pointsText(present, device.preceding); !points.isEmpty())
        text += QStringLiteral(", %1 points against the period before").arg(points);
    if (present.downtime.outages > 0)
        text += QStringLiteral("; down %1 in %2 %3")
                    .arg(durationText(present.downtime.seconds), number(present.downtime.outages),
                         present.downtime.outages == 1 ? QLatin1String("outage")
                                                       : QLatin1String("outages"));
    if (device.target)
        text += QStringLiteral("; target %1 %2")
                    .arg(targetText(device.target->target),
                         device.target->isMet() ? QLatin1String("met") : QLatin1String("missed"));
    return text + u'.';
}

void drawChart(QPainter &painter, const PaperChart &chart, const QRectF &box, const PdfStyle &style)
{
    if (!chart.chart) {
        painter.setPen(linePen(ink::border, 0.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(box);
        const double room = box.width() - 2 * gap;
        drawText(painter, style.strong, ink::text, box.left() + gap, box.top() + gap,
                 style.strong.elided(shownName(chart.item), room));
        drawText(
            painter, style.text, ink::failure, box.left() + gap, box.top() + gap + 14,
            style.text.elided(
                QStringLiteral("This chart could not be drawn: %1").arg(shownName(chart.problem)),
                room));
        return;
    }
    const double scale = box.width() / chartWidth;
    painter.save();
    painter.translate(box.topLeft());
    painter.scale(scale, scale);
    paintChart(painter, *chart.chart, QSizeF(chartWidth, std::floor(box.height() / scale)));
    painter.restore();
}

} // namespace

PdfReport::PdfReport(const ReportContext &context, const QString &path)
    : m_context(context)
    , m_document(path, paperSize(), shownName(context.plan.title))
    , m_pages(m_document, QStringLiteral("%1, %2, %3")
                              .arg(shownName(context.plan.title), context.period, context.zone))
{}

void PdfReport::addDevice(const DeviceFigures &device, const std::vector<PaperChart> &charts)
{
    constexpr size_t few = 2;
    const QString name = shownName(device.name);
    m_pageOfDevice.insert(device.folder, m_document.pageCount());
    m_devices.push_back({name, QString::number(m_devicePages + 1), m_document.pageCount(), 1});
    m_pages.begin(name, QString::number(++m_devicePages));
    if (const QString figures = figuresText(device); !figures.isEmpty())
        m_pages.paragraph(m_pages.style.text, ink::quietText, figures);
    m_pages.skip(gap);
    const int perPage = charts.size() <= few ? 2 : 4;
    if (charts.empty())
        m_pages.paragraph(m_pages.style.lead, ink::text,
                          QStringLiteral("The report has no charts of this device."));
    drawCharts(name, charts, perPage);
}

void PdfReport::drawCharts(const QString &heading, std::span<const PaperChart> charts, int perPage)
{
    const double fullHeight = m_pages.room().height();
    const double height = std::floor((fullHeight - gap * (perPage - 1)) / perPage);
    for (size_t i = 0; i < charts.size(); ++i) {
        if (i > 0 && i % static_cast<size_t>(perPage) == 0) {
            m_pages.begin(heading, QString::number(++m_devicePages));
            m_pages.skip(gap);
        }
        const QRectF room = m_pages.room();
        drawChart(m_pages.painter(), charts[i],
                  QRectF(room.topLeft(), QSizeF(room.width(), height)), m_pages.style);
        m_pages.skip(height + gap);
    }
}

void PdfReport::finish(const ReportFigures &figures)
{
    const int title = m_document.pageCount();
    m_pages.numberBy([this] { return nextFrontNumber(); });
    drawTitleSheet(figures);
    const int afterTitle = m_document.pageCount();

    // The contents come before the sections, but know their pages only after them.
    const std::vector<PdfSection> sections = pdfSections(figures, m_pageOfDevice);
    const size_t entryCount = sections.size() + m_devices.size();
    const size_t contentsPages = (entryCount + 2 * entriesOfColumn() - 1) / (2 * entriesOfColumn());
    const int contentsNumber = m_frontNumber;
    m_frontNumber += static_cast<int>(contentsPages);
    std::vector<Entry> entries;
    for (const PdfSection &section : sections) {
        if (entries.empty())
            m_pages.begin(QString(), nextFrontNumber());
        m_pages.heading(section.heading);
        entries.push_back(
            {section.heading, romanNumber(m_frontNumber), m_document.pageCount() - 1, 0});
        for (const PdfTable &table : section.tables)
            m_pages.table(table);
    }
    const int contents = m_document.pageCount();
    m_frontNumber = contentsNumber;
    const size_t sectionCount = entries.size();
    entries.insert(entries.end(), m_devices.begin(), m_devices.end());
    drawContents(entries);

    m_document.addBookmark(shownName(m_context.plan.title), title);
    if (!entries.empty())
        m_document.addBookmark(QStringLiteral("Contents"), contents);
    for (size_t i = 0; i < sectionCount; ++i)
        m_document.addBookmark(entries[i].text, entries[i].page);
    if (!m_devices.empty())
        m_document.addBookmark(QStringLiteral("Devices"), m_devices.front().page);
    for (const Entry &device : m_devices)
        m_document.addBookmark(device.text, device.page, 1);

    PdfDocument::Binding binding;
    const auto bind = [&binding](int first, int end) {
        for (int page = first; page < end; ++page)
            binding.order.push_back(page);
    };
    bind(title, afterTitle);
    bind(contents, m_document.pageCount());
    bind(afterTitle, contents);
    binding.frontPages = static_cast<int>(binding.order.size());
    bind(0, title);
    binding.language = QStringLiteral("en");
    binding.creationTime = QDateTime::fromMSecsSinceEpoch(m_context.plan.latest, Qt::UTC);
    m_document.finish(binding);
}

void PdfReport::drawTitleSheet(const ReportFigures &figures)
{
    m_pages.begin(QString(), nextFrontNumber());
    const PdfStyle &style = m_pages.style;
    m_pages.paragraph(style.title, ink::text, shownName(m_context.plan.title));
    m_pages.paragraph(
        style.text, ink::quietText,
        QStringLiteral("%1, %2. Made %3 by the Vantrel Graphing Tool.")
            .arg(m_context.period, m_context.zone, storyTime(floorSeconds(m_context.plan.latest))));
    m_pages.skip(gap);
    const ReportStory story = storyOf(figures);
    m_pages.paragraph(style.lead, ink::text, story.sentences.join(u' '));
    m_pages.skip(gap);
    drawTiles(story.tiles);
    drawTimeline(figures);
}

void PdfReport::drawTiles(const std::vector<StoryTile> &tiles)
{
    const size_t perRow = tiles.size() == 4 ? 4 : 3;
    constexpr double height = 58;
    constexpr double lineHeight = 10;
    const PdfStyle &style = m_pages.style;
    for (size_t i = 0; i < tiles.size(); ++i) {
        const QRectF room = m_pages.room();
        const double width = (room.width() + gap) / static_cast<double>(perRow) - gap;
        const QRectF box(room.left() + static_cast<double>(i % perRow) * (width + gap), room.top(),
                         width, height);
        const StoryTile &tile = tiles[i];
        QPainter &painter = m_pages.painter();
        painter.setPen(linePen(ink::border, 0.75));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(box);
        const double left = box.left() + gap;
        const double inside = width - 2 * gap;
        const QRgb color = tile.tone == Tone::Bad    ? ink::failure
                           : tile.tone == Tone::Good ? ink::better
                                                     : ink::text;
        drawText(painter, style.small, ink::quietText, left, box.top() + 5,
                 style.small.elided(tile.label, inside));
        drawText(painter, style.value, color, left, box.top() + 16,
                 style.value.elided(tile.value, inside));
        const QStringList details = wrappedText(tile.detail, style.small, inside).mid(0, 2);
        for (qsizetype line = 0; line < details.size(); ++line)
            drawText(painter, style.small, ink::quietText, left,
                     box.top() + 36 + static_cast<double>(line) * lineHeight, details[line]);
        if (i % perRow == perRow - 1 || i + 1 == tiles.size())
            m_pages.skip(height + gap);
    }
}

void PdfReport::drawTimeline(const ReportFigures &figures)
{
    TimelineChart empty = timelineChart(m_context, figures, 0);
    const double base = timelineChartHeight(empty);
    empty.rows.resize(10);
    const double rowHeight = (timelineChartHeight(empty) - base) / 10;
    const double scale = m_pages.room().width() / timelineWidth;
    const double rows = std::floor((m_pages.room().height() / scale - base) / rowHeight);
    TimelineChart chart =
        timelineChart(m_context, figures, static_cast<size_t>(std::max(1.0, rows)));
    if (chart.rows.empty())
        return;
    chart.frame.quality = 2;
    chart.frame.credit.clear();
    const double height = timelineChartHeight(chart) * scale;
    if (height > m_pages.room().height())
        m_pages.begin(QString(), nextFrontNumber());
    const QRectF room = m_pages.room();
    QPainter &painter = m_pages.painter();
    painter.save();
    painter.translate(room.topLeft());
    painter.scale(scale, scale);
    paintChart(painter, chart, QSizeF(timelineWidth, timelineChartHeight(chart)));
    painter.restore();
    m_pages.skip(height + gap);
}

size_t PdfReport::entriesOfColumn() const
{
    return 50; // of 13 points each: as many as a page of either size holds
}

/// In two columns, which are read one after the other.
void PdfReport::drawContents(const std::vector<Entry> &entries)
{
    constexpr double lineHeight = 13;
    const PdfStyle &style = m_pages.style;
    const size_t perColumn = entriesOfColumn();
    for (size_t i = 0; i < entries.size(); ++i) {
        if (i % (2 * perColumn) == 0)
            m_pages.begin(QStringLiteral("Contents"), nextFrontNumber());
        const QRectF room = m_pages.room();
        const double width = (room.width() - 3 * gap) / 2;
        const bool isSecond = i % (2 * perColumn) >= perColumn;
        const double left = room.left() + (isSecond ? width + 3 * gap : 0);
        const double top = room.top() + static_cast<double>(i % perColumn) * lineHeight;
        const Entry &entry = entries[i];
        const TypeFace &face = entry.level == 0 ? style.strong : style.text;
        const double numberWidth = style.text.width(entry.number);
        drawText(m_pages.painter(), face, ink::text, left, top,
                 face.elided(entry.text, width - numberWidth - gap));
        drawText(m_pages.painter(), style.text, ink::quietText, left + width, top, entry.number,
                 Qt::AlignRight);
        m_document.addLink(m_pages.page(), QRectF(left, top, width, lineHeight), entry.page);
    }
}
