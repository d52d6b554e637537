#pragma once

#include "charts/ChartStyle.h"
#include "charts/PdfDocument.h"

#include <QStringList>

#include <functional>

/// The pages of a report on paper: head, foot, headings and tables that go on over several pages.
/// Lengths are points.

/// The typefaces of all pages.
struct PdfStyle
{
    TypeFace title{22, QFont::DemiBold, true};
    TypeFace heading{14, QFont::DemiBold, true};
    TypeFace value{15, QFont::DemiBold, true};
    TypeFace lead{11, QFont::Normal, true};
    TypeFace text{9, QFont::Normal, true};
    TypeFace strong{9, QFont::DemiBold, true};
    TypeFace small{8, QFont::Normal, true};
};

struct PdfTable
{
    struct Column
    {
        QString title;
        bool isNumber = false; ///< flush right
    };
    struct Cell
    {
        QString text;
        int target = -1; ///< page to which it leads
        bool isBad = false;
    };
    QString title; ///< above it; may be empty
    std::vector<Column> columns;
    std::vector<std::vector<Cell>> rows;
    QString note; ///< below it; may be empty
};

/// Begins pages, and knows how far down the last one is filled. All texts are kept inside the
/// margins: they are elided, sentences wrapped.
class PdfPages
{
public:
    /// `footer` stands at the foot of all pages.
    PdfPages(PdfDocument &document, QString footer);

    const PdfStyle style;

    /// Begins a page, with a heading unless that is empty. `number` is shown at its foot.
    void begin(const QString &heading, const QString &number);
    /// How the following pages are numbered that a table needs.
    void numberBy(std::function<QString()> number) { m_nextNumber = std::move(number); }

    QRectF room() const; ///< what is left of the page
    QPainter &painter() { return *m_painter; }
    int page() const { return m_document.pageCount() - 1; } ///< the present one
    void skip(double height) { m_top += height; }

    /// A heading inside of a page, or on the next one where at most a few rows would fit below.
    void heading(const QString &text) { heading(style.heading, text); }
    void paragraph(const TypeFace &face, QRgb color, const QString &text);
    void table(const PdfTable &table);

private:
    void heading(const TypeFace &face, const QString &text);
    void beginNext();
    void drawHead(const PdfTable &table, const std::vector<double> &widths);
    void drawRow(const PdfTable &table, const std::vector<PdfTable::Cell> &row,
                 const std::vector<double> &widths);
    std::vector<double> widthsOf(const PdfTable &table) const;

    PdfDocument &m_document;
    QString m_footer;
    QPainter *m_painter = nullptr;
    std::function<QString()> m_nextNumber;
    double m_top = 0;
};

/// "i", "ii", "iii", ... from 1 on.
QString romanNumber(int number);
