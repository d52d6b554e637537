#include "charts/PdfDocument.h"

#include "base/Error.h"
#include "base/FileWriter.h"
#include "charts/PdfAppendix.h"

#include <QDateTime>
#include <QIODevice>
#include <QPageLayout>
#include <QPdfWriter>

#include <optional>

/// Gathers the small pieces that QPdfWriter writes, and keeps the error that it does not look for.
class PdfDocument::Sink : public QIODevice
{
public:
    explicit Sink(const QString &path)
        : m_file(path)
    {
        open(QIODevice::WriteOnly);
    }

    bool isSequential() const override { return true; }

    FileWriter &file() { return m_file; }

    /// Throws what has gone wrong so far.
    void check() const
    {
        if (m_error)
            throw *m_error;
    }

    void flush()
    {
        if (m_error || m_pieces.isEmpty())
            return;
        try {
            m_file.write(m_pieces);
        } catch (const std::exception &exception) { // Qt's code is not made for exceptions
            m_error = errorOf(exception);
        }
        m_pieces.resize(0);
    }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        constexpr qsizetype enough = 1024 * 1024;
        m_pieces.append(data, size);
        if (m_pieces.size() >= enough)
            flush();
        return m_error ? -1 : size;
    }

private:
    FileWriter m_file;
    QByteArray m_pieces;
    std::optional<Error> m_error;
};

class PdfDocument::Writer : public QPdfWriter
{
public:
    using QPdfWriter::QPdfWriter;
};

PdfDocument::PdfDocument(const QString &path, const QPageSize &pageSize, const QString &title)
    : m_path(path)
    , m_title(title)
    , m_sink(std::make_unique<Sink>(path))
    , m_writer(std::make_unique<Writer>(m_sink.get()))
{
    constexpr int pointsAnInch = 72;
    m_writer->setPdfVersion(QPagedPaintDevice::PdfVersion_1_4);
    m_writer->setResolution(pointsAnInch);
    m_writer->setPageLayout(QPageLayout(pageSize, QPageLayout::Portrait, QMarginsF()));
}

PdfDocument::~PdfDocument()
{
    if (m_painter.isActive())
        m_painter.end();
}

QSizeF PdfDocument::pageSize() const
{
    return m_writer->pageLayout().fullRect(QPageLayout::Point).size();
}

QPainter &PdfDocument::newPage()
{
    if (m_pages == 0 && !m_painter.begin(m_writer.get()))
        throw Error(DeviceIO, QStringLiteral("Cannot begin '%1'").arg(m_path));
    if (m_pages > 0)
        m_writer->newPage();
    m_sink->check();
    ++m_pages;
    return m_painter;
}

void PdfDocument::addLink(int page, const QRectF &area, int target)
{
    m_links.push_back({page, area, target});
}

void PdfDocument::addBookmark(const QString &title, int page, int level)
{
    m_bookmarks.push_back({title, page, level});
}

void PdfDocument::finish(const Binding &binding)
{
    m_painter.end();
    m_sink->flush();
    m_sink->check();
    FileWriter &file = m_sink->file();
    file.write(pdfAppendix(file.temporaryPath(), {binding, m_title, pageSize().height(),
                                                  std::move(m_links), std::move(m_bookmarks)}));
    file.commit();
}
