#include "charts/ChartFramePainter.h"

#include "charts/TextCache.h"
#include "definitions/clsGraphDef.h"

#include <QPaintEngine>

#include <algorithm>
#include <cmath>

namespace {

constexpr int maxTranslucentRows = 24; // logical pixels; up to 95 of the device

/// Draws the footer from the bottom up; returns its top.
double drawFoot(QPainter &painter, const ChartFrame &frame, const QRectF &inside,
                const ChartStyle &style, const QStringList &footers)
{
    QStringList lines;
    for (const QString &footer : footers)
        lines += wrappedText(footer, style.small, inside.width());
    const QString credit = style.small.elided(frame.credit.simplified(), inside.width());
    const double gap = style.px(16);
    const bool ownLine =
        !credit.isEmpty() &&
        (lines.isEmpty() ||
         style.small.width(lines.last()) + gap + style.small.width(credit) > inside.width());
    const double lineHeight = std::ceil(style.small.height());
    double top = inside.bottom() - lineHeight;
    if (!credit.isEmpty())
        drawText(painter, style.small, ink::quietText, inside.right(), top, credit, Qt::AlignRight);
    if (ownLine && !lines.isEmpty())
        top -= lineHeight;
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        drawText(painter, style.small, ink::quietText, inside.left(), top, *line);
        if (line + 1 != lines.rend())
            top -= lineHeight;
    }
    return lines.isEmpty() && credit.isEmpty() ? inside.bottom() : top;
}

/// Draws title and subtitle at the left, period and time zone at the right, or below them if the
/// chart is too narrow. Returns the bottom.
double drawHead(QPainter &painter, const ChartFrame &frame, const QRectF &inside,
                const ChartStyle &style)
{
    const QString period = frame.period.simplified();
    const QString zone = frame.zone.simplified();
    const QString title = frame.title.simplified();
    const QString subtitle = frame.subtitle.simplified();
    const double gap = style.px(20);
    const double sideWidth = std::max(style.label.width(period), style.label.width(zone));
    const bool beside = sideWidth + gap <= inside.width() * 0.48;
    const double titleWidth = inside.width() - (beside ? sideWidth + gap : 0);

    double top = inside.top();
    const double firstBase = top + style.title.ascent();
    const double titleRoom =
        style.compact && !subtitle.isEmpty()
            ? std::max(titleWidth * 0.45, titleWidth - style.px(8) - style.subtitle.width(subtitle))
            : titleWidth;
    const QString shownTitle = style.title.elided(title, titleRoom);
    drawText(painter, style.title, ink::text, inside.left(), top, shownTitle);
    if (beside)
        drawText(painter, style.label, ink::quietText, inside.right(),
                 firstBase - style.label.ascent(), period, Qt::AlignRight);
    if (style.compact) {
        const double left = inside.left() + style.title.width(shownTitle) + style.px(8);
        drawText(painter, style.subtitle, ink::quietText, left, firstBase - style.subtitle.ascent(),
                 style.subtitle.elided(subtitle, inside.left() + titleWidth - left));
    }
    top += std::ceil(style.title.height()) + style.px(1);
    if (beside || (!subtitle.isEmpty() && !style.compact)) {
        if (!style.compact)
            drawText(painter, style.subtitle, ink::quietText, inside.left(), top,
                     style.subtitle.elided(subtitle, titleWidth));
        if (beside)
            drawText(painter, style.label, ink::quietText, inside.right(),
                     top + style.subtitle.ascent() - style.label.ascent(), zone, Qt::AlignRight);
        top += std::ceil(style.subtitle.height());
    }
    if (beside)
        return top;
    const QString separator = QStringLiteral("  \u00B7  ");
    const QString both =
        period.isEmpty() || zone.isEmpty() ? period + zone : QString(period + separator + zone);
    const bool oneRow = style.label.width(both) <= inside.width();
    for (const QString &row : oneRow ? QStringList{both} : QStringList{period, zone}) {
        if (row.isEmpty())
            continue;
        drawText(painter, style.label, ink::quietText, inside.left(), top,
                 style.label.elided(row, inside.width()));
        top += std::ceil(style.label.height());
    }
    return top;
}

void drawMark(QPainter &painter, const LegendEntry &entry, const QRectF &box,
              const ChartStyle &style)
{
    const double edge = style.px(2);
    switch (entry.mark) {
    case LegendMark::Success:
        fillBox(painter, box, ink::successFill);
        fillBox(painter, QRectF(box.left(), box.top(), box.width(), edge), ink::success);
        return;
    case LegendMark::Partial:
        fillBox(painter, box, ink::partialFill);
        fillBox(painter, QRectF(box.left(), box.top(), box.width(), std::ceil(box.height() / 2.5)),
                ink::failure);
        return;
    case LegendMark::SomeFailed:
        fillBox(painter, box, ink::successFill);
        fillBox(painter, box.adjusted(0, std::ceil(box.height() / 2), 0, 0), ink::someFailed);
        return;
    case LegendMark::NoData:
        drawNoData(painter, box, style);
        return;
    case LegendMark::Excluded:
        drawExcluded(painter, box, style);
        return;
    case LegendMark::Area:
        fillBox(painter, box, ink::valueFill);
        fillBox(painter, QRectF(box.left(), box.top(), box.width(), edge), ink::value);
        return;
    case LegendMark::Solid:
        painter.fillRect(box, entry.pen.color());
        return;
    case LegendMark::Line:
        break;
    }
    painter.setPen(entry.pen);
    const double y = std::floor(box.center().y()) + 0.5;
    painter.drawLine(QPointF(box.left(), y), QPointF(box.right(), y));
}

struct LegendLayout
{
    struct Cell
    {
        double x = 0;
        int row = 0;
        double width = 0;
    };
    std::vector<Cell> cells; ///< one for each entry
    int rows = 0;
};

double markWidth(const LegendEntry &entry, const ChartStyle &style)
{
    return entry.mark == LegendMark::Line ? style.px(18) : style.px(11);
}

double entryWidth(const LegendEntry &entry, const ChartStyle &style)
{
    const double value = entry.value.isEmpty() ? 0 : style.px(4) + style.strong.width(entry.value);
    return markWidth(entry, style) + style.px(5) + style.label.width(entry.name) + value;
}

double legendGap(const ChartStyle &style)
{
    return style.px(style.compact ? 8 : 14);
}

/// Lays the entries out in rows, the first one from `firstLeft`; an entry wider than a row is
/// elided when drawn.
LegendLayout layOutLegend(const std::vector<LegendEntry> &legend, const ChartStyle &style,
                          double width, double firstLeft)
{
    LegendLayout layout;
    double x = firstLeft;
    for (const LegendEntry &entry : legend) {
        const double wide = std::min(entryWidth(entry, style), width);
        if (layout.rows == 0)
            layout.rows = 1;
        if (x > 0 && x + wide > width) {
            ++layout.rows;
            x = 0;
        }
        layout.cells.push_back({x, layout.rows - 1, wide});
        x += wide + legendGap(style);
    }
    return layout;
}

void drawLegendEntry(QPainter &painter, const LegendEntry &entry, double x, double top,
                     double width, const ChartStyle &style)
{
    const double mark = markWidth(entry, style);
    const double side = style.px(11);
    const double markTop = std::round(top + style.label.ascent() - side + style.px(1));
    drawMark(painter, entry, QRectF(std::round(x), markTop, mark, side), style);
    const double nameLeft = x + mark + style.px(5);
    const double valueWidth = entry.value.isEmpty() ? 0 : style.strong.width(entry.value);
    const double nameRoom =
        x + width - nameLeft - (valueWidth > 0 ? valueWidth + style.px(4) : 0) + 0.01;
    const QString name = style.label.elided(entry.name, nameRoom);
    drawText(painter, style.label, ink::quietText, nameLeft, top, name);
    if (valueWidth > 0)
        drawText(painter, style.strong, ink::text, nameLeft + style.label.width(name) + style.px(4),
                 top, entry.value);
}

/// Draws the axis title at the left and the legend at the right of one row, or the title below the
/// legend. Returns the bottom.
double drawLegend(QPainter &painter, const QRectF &inside, double top, const ChartStyle &style,
                  const ChartSurroundings &surroundings)
{
    const double rowHeight = std::ceil(style.label.height()) + style.px(2);
    const QString axisTitle =
        style.label.elided(surroundings.axisTitle.simplified(), inside.width());
    const double titleWidth = style.label.width(axisTitle);
    const double besideTitle = axisTitle.isEmpty() ? 0 : titleWidth + style.px(16);
    LegendLayout layout = layOutLegend(surroundings.legend, style, inside.width(), besideTitle);
    const bool beside = layout.rows <= 1 || style.compact;
    if (!beside)
        layout = layOutLegend(surroundings.legend, style, inside.width(), 0);

    const bool flushRight = beside && layout.rows == 1;
    const double left = flushRight
                            ? inside.right() - layout.cells.back().x - layout.cells.back().width
                            : inside.left();
    for (size_t i = 0; i < layout.cells.size(); ++i) {
        const LegendLayout::Cell &cell = layout.cells[i];
        drawLegendEntry(painter, surroundings.legend[i], left + cell.x, top + cell.row * rowHeight,
                        cell.width, style);
    }
    const int titleRow = beside ? 0 : layout.rows;
    drawText(painter, style.label, ink::quietText, inside.left(), top + titleRow * rowHeight,
             axisTitle);
    const int rows = axisTitle.isEmpty() ? layout.rows : std::max(layout.rows, titleRow + 1);
    return top + rows * rowHeight;
}

void drawHatching(QPainter &painter, const QRectF &area, const QList<QLineF> &lines, QRgb color)
{
    painter.save();
    painter.setClipRect(area, Qt::IntersectClip);
    painter.setPen(linePen(color, 1));
    painter.drawLines(lines);
    painter.restore();
}

bool isOnPaper(const QPainter &painter)
{
    return painter.paintEngine()->type() == QPaintEngine::Pdf;
}

/// A font whose texts can be found and copied: fonts have other glyphs for a "-" or ":" between
/// digits, which stand for no character.
QFont searchable(QFont font)
{
    font.setStyleStrategy(
        static_cast<QFont::StyleStrategy>(font.styleStrategy() | QFont::PreferNoShaping));
    return font;
}

} // namespace

QStringList wrappedText(const QString &text, const TypeFace &face, double width)
{
    if (face.width(text) <= width)
        return {text};
    QStringList lines;
    QString line;
    const QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    for (const QString &word : words) {
        const QString longer = line.isEmpty() ? word : QString(line + u' ' + word);
        if (!line.isEmpty() && face.width(longer) > width) {
            lines.append(line);
            line = word;
        } else {
            line = longer;
        }
    }
    lines.append(line);
    for (QString &done : lines)
        done = face.elided(done, width);
    return lines;
}

void drawText(QPainter &painter, const TypeFace &face, QRgb color, double x, double top,
              const QString &text, Qt::Alignment alignment)
{
    if (text.isEmpty())
        return;
    double left = x;
    if (alignment & Qt::AlignRight)
        left -= face.width(text);
    else if (alignment & Qt::AlignHCenter)
        left -= face.width(text) / 2;
    painter.setPen(QColor::fromRgba(color));
    if (isOnPaper(painter)) {
        painter.setFont(searchable(face.font()));
        painter.drawText(QPointF(left, top + face.ascent()), text);
        return;
    }
    // Baselines on whole pixels keep texts crisp.
    const QPointF baseline(std::round(left), std::round(top + face.ascent()));
    if (TextCache *cache = TextCache::current()) {
        cache->draw(painter, face.font(), baseline, text);
        return;
    }
    painter.setFont(face.font());
    painter.drawText(baseline, text);
}

void fillBox(QPainter &painter, const QRectF &box, QRgb color)
{
    const QRect all = box.toRect();
    // Qt divides translucent fills of more rows among its threads and waits for them: too slow for
    // a grid line, and forever where no thread can be started.
    const int rows = qAlpha(color) == 255 ? all.height() : maxTranslucentRows;
    for (int y = all.top(); y <= all.bottom(); y += rows)
        painter.fillRect(QRect(all.left(), y, all.width(), std::min(rows, all.bottom() + 1 - y)),
                         QColor::fromRgba(color));
}

QPen linePen(QRgb color, double width, const QList<qreal> &dashes)
{
    QPen pen(QColor::fromRgba(color), width, dashes.isEmpty() ? Qt::SolidLine : Qt::CustomDashLine,
             Qt::FlatCap, Qt::BevelJoin);
    if (!dashes.isEmpty())
        pen.setDashPattern(dashes);
    return pen;
}

void drawNoData(QPainter &painter, const QRectF &area, const ChartStyle &style)
{
    fillBox(painter, area, ink::noDataFill);
    // The lines have fixed positions in the chart, so that the hatching of adjacent areas matches.
    const double pitch = style.px(7);
    const double height = area.height();
    QList<QLineF> lines;
    const double first = std::floor((area.left() + area.top()) / pitch) * pitch;
    for (double sum = first; sum <= area.right() + area.bottom(); sum += pitch)
        lines.append(
            QLineF(sum - area.bottom(), area.bottom(), sum - area.bottom() + height, area.top()));
    drawHatching(painter, area, lines, ink::noDataHatch);
}

void drawExcluded(QPainter &painter, const QRectF &area, const ChartStyle &style)
{
    fillBox(painter, area, ink::excludedFill);
    const double pitch = style.px(4);
    const double height = area.height();
    QList<QLineF> lines;
    const double first = std::floor((area.left() - area.bottom()) / pitch) * pitch;
    for (double difference = first; difference <= area.right() - area.top(); difference += pitch)
        lines.append(QLineF(difference + area.top(), area.top(), difference + area.top() + height,
                            area.bottom()));
    drawHatching(painter, area, lines, ink::excludedHatch);
}

void drawNoDataMessage(QPainter &painter, const QRectF &plot, const ChartStyle &style)
{
    const QString text = style.title.elided(QStringLiteral("No data in this period"), plot.width());
    const double width = style.title.width(text) + style.px(24);
    const double height = style.title.height() + style.px(12);
    fillBox(painter,
            QRectF(std::round(plot.center().x() - width / 2),
                   std::round(plot.center().y() - height / 2), std::round(width),
                   std::round(height))
                .intersected(plot),
            ink::ground);
    drawText(painter, style.title, ink::quietText, plot.center().x(),
             plot.center().y() - style.title.height() / 2, text, Qt::AlignHCenter);
}

QString bucketText(const DataSeries &series)
{
    switch (series.axis->frequency()) {
    case ByMinute:
        return series.axis->minuteInterval() > 1
                   ? QStringLiteral("by %1 minutes").arg(series.axis->minuteInterval())
                   : QStringLiteral("by minute");
    case ByHour:
        return QStringLiteral("by hour");
    case ByDay:
        return QStringLiteral("by day");
    case ByMonth:
        return QStringLiteral("by month");
    default:
        return QStringLiteral("by year");
    }
}

QRectF insideOf(const QSizeF &size, const ChartStyle &style)
{
    const double side = style.px(style.compact ? 10 : 16);
    return QRectF(QPointF(0, 0), size)
        .adjusted(side, style.px(style.compact ? 6 : 12), -side, -style.px(style.compact ? 5 : 10));
}

QRectF drawSurroundings(QPainter &painter, const ChartFrame &frame, const QSizeF &size,
                        const ChartStyle &style, const ChartSurroundings &surroundings)
{
    painter.setRenderHint(QPainter::Antialiasing, style.smooth);
    painter.setRenderHint(QPainter::TextAntialiasing, frame.quality >= 1);
    const QRectF all(QPointF(0, 0), size);
    fillBox(painter, all, ink::border);
    fillBox(painter, all.adjusted(1, 1, -1, -1), ink::ground);

    const QRectF inside = insideOf(size, style);
    const double foot = drawFoot(painter, frame, inside, style, surroundings.footers);
    double top = drawHead(painter, frame, inside, style);
    top += style.px(style.compact ? 3 : 10);
    top = drawLegend(painter, inside, top, style, surroundings);
    const double gap = style.px(style.compact ? 2 : 6);
    return QRectF(QPointF(inside.left(), top + gap),
                  QPointF(inside.right(), std::max(top + gap + 1, foot - gap)));
}
