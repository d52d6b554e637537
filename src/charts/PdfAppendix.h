#pragma once

#include "charts/PdfDocument.h"

#include <QByteArray>

/// What QPdfWriter leaves out of a PDF file: the order of pages, links between them, bookmarks,
/// page labels, language. It is appended as an incremental update: the file gets new versions of a
/// few objects, and a second table of objects.
struct PdfAppendix
{
    PdfDocument::Binding binding;
    QString title;
    double pageHeight = 0; ///< points
    std::vector<PdfDocument::Link> links;
    std::vector<PdfDocument::Bookmark> bookmarks;
};

/// The bytes to append to a file that QPdfWriter has just written. Reads its table of objects and
/// some of them. Throws Error where the file is not as expected.
QByteArray pdfAppendix(const QString &path, const PdfAppendix &appendix);
