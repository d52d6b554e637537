#include "report/PdfPages.h"

#include "charts/ChartFramePainter.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double margin = 40;
constexpr double footHeight = 22;
constexpr double rowHeight = 15;
constexpr double columnGap = 10;

void drawRule(QPainter &painter, double left, double right, double y, QRgb color)
{
    painter.setPen(linePen(color, 0.5));
    painter.drawLine(QPointF(left, y), QPointF(right, y));
}

} // namespace

PdfPages::PdfPages(PdfDocument &document, QString footer)
    : m_document(document)
    , m_footer(std::move(footer))
{}

void PdfPages::begin(const QString &heading, const QString &number)
{
    m_painter = &m_document.newPage();
    m_top = margin;
    const QRectF all(QPointF(0, 0), m_document.pageSize());
    const double left = margin;
    const double right = all.right() - margin;
    const double foot = all.bottom() - margin - style.small.height();
    drawRule(*m_painter, left, right, foot - 5, ink::border);
    const double numberWidth = style.small.width(number);
    drawText(*m_painter, style.small, ink::quietText, right, foot, number, Qt::AlignRight);
    drawText(*m_painter, style.small, ink::quietText, left, foot,
             style.small.elided(m_footer, right - left - numberWidth - columnGap));
    if (heading.isEmpty())
        return;
    drawText(*m_painter, style.heading, ink::text, left, m_top,
             style.heading.elided(heading, right - left));
    m_top += std::ceil(style.heading.height()) + 4;
}

void PdfPages::beginNext()
{
    begin(QString(), m_nextNumber());
}

QRectF PdfPages::room() const
{
    const QSizeF page = m_document.pageSize();
    return QRectF(QPointF(margin, m_top),
                  QPointF(page.width() - margin, page.height() - margin - footHeight));
}

void PdfPages::heading(const TypeFace &face, const QString &text)
{
    constexpr double fewRows = 6 * rowHeight;
    if (room().height() < fewRows)
        beginNext();
    else if (m_top > margin)
        m_top += face.height();
    drawText(*m_painter, face, ink::text, margin, m_top, face.elided(text, room().width()));
    m_top += std::ceil(face.height()) + 4;
}

void PdfPages::paragraph(const TypeFace &face, QRgb color, const QString &text)
{
    const double lineHeight = std::ceil(face.height() * 1.25);
    for (const QString &line : wrappedText(text, face, room().width())) {
        if (room().height() < lineHeight)
            beginNext();
        drawText(*m_painter, face, color, margin, m_top, line);
        m_top += lineHeight;
    }
}

/// As wide as the texts need; where that is too much, columns of texts give way.
std::vector<double> PdfPages::widthsOf(const PdfTable &table) const
{
    constexpr size_t looked = 500; // rows that are measured
    std::vector<double> widths;
    double all = 0;
    double texts = 0;
    for (size_t i = 0; i < table.columns.size(); ++i) {
        double width = style.small.width(table.columns[i].title);
        for (size_t row = 0; row < std::min(looked, table.rows.size()); ++row)
            width = std::max(width, style.strong.width(table.rows[row][i].text));
        widths.push_back(std::ceil(width) + columnGap);
        all += widths.back();
        texts += table.columns[i].isNumber ? 0 : widths.back();
    }
    const double excess = all - room().width();
    for (size_t i = 0; i < widths.size() && texts > 0; ++i) {
        if (!table.columns[i].isNumber)
            widths[i] = std::max(2 * columnGap, widths[i] - excess * widths[i] / texts);
    }
    return widths;
}

void PdfPages::drawHead(const PdfTable &table, const std::vector<double> &widths)
{
    double left = margin;
    for (size_t i = 0; i < widths.size(); ++i) {
        const PdfTable::Column &column = table.columns[i];
        const double inside = widths[i] - columnGap;
        drawText(*m_painter, style.small, ink::quietText, column.isNumber ? left + inside : left,
                 m_top + 3, style.small.elided(column.title, inside + 0.01),
                 column.isNumber ? Qt::AlignRight : Qt::AlignLeft);
        left += widths[i];
    }
    m_top += rowHeight;
    drawRule(*m_painter, margin, room().right(), m_top, ink::axis);
}

void PdfPages::drawRow(const PdfTable &table, const std::vector<PdfTable::Cell> &row,
                       const std::vector<double> &widths)
{
    double left = margin;
    for (size_t i = 0; i < widths.size(); ++i) {
        const PdfTable::Cell &cell = row[i];
        const bool isNumber = table.columns[i].isNumber;
        const double inside = widths[i] - columnGap;
        const TypeFace &face = cell.isBad ? style.strong : style.text;
        drawText(*m_painter, face,
                 cell.isBad         ? ink::failure
                 : cell.target >= 0 ? ink::success
                                    : ink::text,
                 isNumber ? left + inside : left, m_top + 2, face.elided(cell.text, inside + 0.01),
                 isNumber ? Qt::AlignRight : Qt::AlignLeft);
        if (cell.target >= 0)
            m_document.addLink(page(), QRectF(left, m_top, inside, rowHeight), cell.target);
        left += widths[i];
    }
    m_top += rowHeight;
    drawRule(*m_painter, margin, room().right(), m_top, ink::border);
}

void PdfPages::table(const PdfTable &table)
{
    const std::vector<double> widths = widthsOf(table);
    if (!table.title.isEmpty())
        heading(style.strong, table.title);
    drawHead(table, widths);
    for (const std::vector<PdfTable::Cell> &row : table.rows) {
        if (room().height() < rowHeight) {
            beginNext();
            drawHead(table, widths);
        }
        drawRow(table, row, widths);
    }
    if (table.note.isEmpty())
        return;
    m_top += 4;
    paragraph(style.small, ink::quietText, table.note);
}

QString romanNumber(int number)
{
    struct Digit
    {
        int value;
        const char16_t *text;
    };
    constexpr std::array digits = {
        Digit{1000, u"m"}, Digit{900, u"cm"}, Digit{500, u"d"}, Digit{400, u"cd"}, Digit{100, u"c"},
        Digit{90, u"xc"},  Digit{50, u"l"},   Digit{40, u"xl"}, Digit{10, u"x"},   Digit{9, u"ix"},
        Digit{5, u"v"},    Digit{4, u"iv"},   Digit{1, u"i"}};
    QString text;
    for (const auto &[value, digit] : digits) {
        for (; number >= value; number -= value)
            text += QString::fromUtf16(digit);
    }
    return text;
}
