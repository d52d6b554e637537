#pragma once

#include <QLatin1String>
#include <QString>

#include <utility>
#include <vector>

/// Page templates: texts with placeholders "%%name%%". Pure functions but for loading.

/// The part of a template before the first occurrence of a marker, or the part behind it.
///
/// Before: the whole text when the marker is absent. Behind: the rest and one added blank; empty
/// when the marker is absent or fewer than two characters stand behind it. Pages rely on both
/// oddities, users' own templates included.
QString GetHTIPart(const QString &text, QLatin1String marker, bool before);

/// Names of placeholders (without the percent signs) and what replaces them.
using Placeholders = std::vector<std::pair<QLatin1String, QString>>;

/// Replaces every occurrence of each placeholder, in one pass from left to right. Names are
/// compared with regard to case; values go in raw; an unknown placeholder stays as it is, and a
/// value that looks like a placeholder is not looked at again.
QString fillTemplate(const QString &text, const Placeholders &values);

/// A text made safe for an HTML attribute or element.
QString htmlEscaped(const QString &text);

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

    /// Reads all thirteen. A missing file gives an empty template, and a status line that names it.
    void LoadTOCTemplates();
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
