#pragma once

#include "core/Error.h"

#include <QLatin1String>
#include <QString>

#include <optional>
#include <utility>
#include <vector>

/// Page templates: texts with placeholders "%%name%%". Pure functions but for loading.

/// The part of a template before the first occurrence of a marker, or the part behind it.
///
/// Before: the whole text when the marker is absent. Behind: the rest and one added blank; empty
/// when the marker is absent or fewer than two characters stand behind it. Pages rely on both
/// oddities, users' own templates included.
QString GetHTIPart(const QString &text, QLatin1String marker, bool before);

/// What replaces a placeholder: a text of anybody's making, or markup of the program's own. A text
/// is made safe for element text and quoted attributes, so names may hold anything.
class PageValue
{
public:
    /// A text: `<b> <i> <u> <em> <strong> <small> <sub> <sup> <code> <br>` without attributes stay,
    /// and end where the text ends; every other "<" that could begin a tag, a comment or a
    /// declaration is escaped, and so are quotes. Entities stay.
    PageValue(const QString &text); // NOLINT(google-explicit-constructor): the safe kind
    /// Markup that goes in as it is. Never for what comes from a database, a file or a server.
    static PageValue html(const QString &markup);
    /// A text of which nothing is markup, entities included.
    static PageValue plain(const QString &text);

    const QString &markup() const { return m_markup; }

private:
    PageValue() = default;
    QString m_markup;
};

/// Names of placeholders (without the percent signs) and what replaces them. Of two equal names the
/// first one counts.
using Placeholders = std::vector<std::pair<QLatin1String, PageValue>>;

/// The values of a page with what each page has: "page.lang", and "page.nonce", which allows a page
/// its own scripts and cannot be foreseen. To be called for each page.
Placeholders onNewPage(const Placeholders &values);

/// Replaces every occurrence of each placeholder, in one pass from left to right. Names are
/// compared with regard to case; an unknown placeholder stays as it is, and a value that looks like
/// a placeholder is not looked at again.
QString fillTemplate(const QString &text, const Placeholders &values);

/// A page, a section or a table with a list in its middle.
struct ListParts
{
    QString before;
    QString behind;
};
/// Cuts a template at its marker (GetHTIPart), and only then fills both parts: no value can be
/// taken for the marker.
ListParts fillListTemplate(const QString &text, QLatin1String marker, const Placeholders &values);

/// The name of a file or folder as links want it, percent-encoded.
QString linkText(const QString &name);

/// The page templates of one run, each a file's whole text.
class clsChartOutputBuilder
{
public:
    QString folder; ///< ends in a separator; empty: the configuration's PTH_Config

    QString TOC;
    QString TOC_ReportItem;
    QString REPORT;
    QString REP_TOC;
    QString REP_DeviceItem;
    QString REP_Top;
    QString REP_Summary;
    QString STATE_Detail;
    QString STATE_DetailItem;
    QString COUNT_Detail;
    QString COUNT_DetailItem;
    QString DEV_Rep;
    QString VARB_Item;

    /// Reads all thirteen. One that cannot be read is empty, and named in a status line.
    void LoadTOCTemplates();

    /// Throw the Error of the first one that could not be read, of the master table of contents
    /// (TOC and TOC_ReportItem) or of reports: nothing is to be written from it.
    void requireMasterTemplates() const;
    void requireReportTemplates() const;

private:
    std::optional<Error> m_masterError;
    std::optional<Error> m_reportError;
};

/// A page that is put together in pieces; each piece ends in a line break.
class PageText
{
public:
    void write(const QString &piece);
    const QString &text() const { return m_text; }
    QByteArray bytes() const { return m_text.toUtf8(); }

private:
    QString m_text;
};
