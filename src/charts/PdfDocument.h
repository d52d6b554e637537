#pragma once

#include <QDateTime>
#include <QPageSize>
#include <QPainter>
#include <QRectF>
#include <QString>

#include <memory>
#include <vector>

/// A PDF file, written page by page with vectors and embedded fonts; memory does not grow with its
/// pages but by some hundred bytes each. Positions are points (1/72 inch) from the top left. Used
/// by one thread at a time, which may be any; fonts are warm by then (charts/ChartStyle.h).
class PdfDocument
{
public:
    /// Nothing stands at `path` before finish(). Throws Error that names the file.
    PdfDocument(const QString &path, const QPageSize &pageSize, const QString &title);
    ~PdfDocument(); ///< what is not finished is removed
    PdfDocument(const PdfDocument &) = delete;
    PdfDocument &operator=(const PdfDocument &) = delete;

    QSizeF pageSize() const;

    /// Begins the next page and returns its painter, which is valid until the next one. Throws
    /// Error once the file could not be written.
    QPainter &newPage();
    /// How many pages were begun; they are numbered in this order from 0.
    int pageCount() const { return m_pages; }

    /// An area of a page that leads to another page.
    void addLink(int page, const QRectF &area, int target);

    /// A bookmark below the last one of the level above, 0 being the highest. Those below level 0
    /// are folded.
    void addBookmark(const QString &title, int page, int level = 0);

    /// What finish() needs to know.
    struct Binding
    {
        std::vector<int> order; ///< all pages as they are bound
        int frontPages = 0;     ///< how many of them are labelled i, ii, iii; the others 1, 2, 3
        QString language;       ///< of the texts, "en"
        QDateTime creationTime; ///< UTC
    };
    /// Adds bookmarks and links, and puts the file in its place. Throws Error. Once.
    void finish(const Binding &binding);

    /// What is added to the pages in the end.
    struct Link
    {
        int page = 0;
        QRectF area;
        int target = 0;
    };
    struct Bookmark
    {
        QString title;
        int page = 0;
        int level = 0;
    };

private:
    class Sink;
    class Writer;

    QString m_path;
    QString m_title;
    std::unique_ptr<Sink> m_sink;
    std::unique_ptr<Writer> m_writer;
    QPainter m_painter;
    int m_pages = 0;
    std::vector<Link> m_links;
    std::vector<Bookmark> m_bookmarks;
};
