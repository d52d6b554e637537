#pragma once

#include "base/Error.h"

#include <QLatin1String>
#include <QString>

#include <optional>
#include <utility>
#include <vector>

class RunLog;
class clsGrapherConfig;

/// Page templates: texts with placeholders "%%name%%". Pure functions but for loading.

/// The part of a template before the first occurrence of a marker, or the part after it.
///
/// Before: the whole text if there is no marker. After: the rest and one added blank; empty if
/// there is no marker or fewer than two characters after it. Users' own templates rely on both
/// oddities.
QString GetHTIPart(const QString &text, QLatin1String marker, bool before);

/// What replaces a placeholder: an untrusted text, or markup of the program's own. A text is made
/// safe for element text and quoted attributes, so names may contain anything.
class PageValue
{
public:
    /// A text: `<b> <i> <u> <em> <strong> <small> <sub> <sup> <code> <br>` without attributes stay,
    /// and are closed at its end; every other "<" that could start a tag, a comment or a
    /// declaration is escaped, and so are quotes. Entities stay.
    PageValue(const QString &text); // NOLINT(google-explicit-constructor): the safe kind
    /// Markup, inserted unchanged. Never for texts from a database, a file or a server.
    static PageValue html(const QString &markup);
    /// A text without any markup, entities included.
    static PageValue plain(const QString &text);

    const QString &markup() const { return m_markup; }

private:
    PageValue() = default;
    QString m_markup;
};

/// Names of placeholders (without the percent signs) and their values. Of equal names the first one
/// counts.
using Placeholders = std::vector<std::pair<QLatin1String, PageValue>>;

/// The values of a page plus those of every page: "page.lang", and "page.nonce", a random value
/// that allows a page its own scripts. Call it for each page.
Placeholders onNewPage(const Placeholders &values);

/// Replaces every occurrence of each placeholder, in one pass from left to right. Names are
/// case-sensitive; unknown placeholders stay, and placeholders in a value are not replaced.
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

    /// Reads all thirteen from the configuration folder. One that cannot be read is empty, and
    /// named in a status line.
    void LoadTOCTemplates(const clsGrapherConfig &settings, const RunLog &log);

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
