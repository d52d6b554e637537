#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// What has to be known of an Access-dialect SQL text before SQLite runs it. Pure functions.

/// The text without the word DISTINCTROW, which SQLite does not know: what it asks for is the case
/// anyway wherever rows are grouped, and the tool's queries all group them.
QString withoutDistinctRow(const QString &sql);

/// Whether a text asks for membership in an empty list, "in ()": an error in Access and on servers,
/// which SQLite would let pass.
bool hasEmptyList(const QString &sql);

/// The words and the names in brackets or double quotes that stand in a text, as written; what
/// stands in apostrophes is left out.
QStringList namesIn(const QString &sql);

/// The query for one data item's samples in a period, as GetDataValuesSQL writes it.
struct SampleQuery
{
    qint64 dataIdent = 0;
    qint64 from = 0; ///< instants, both inclusive
    qint64 to = 0;
};

/// Recognises the text that GetDataValuesSQL builds in the Access dialect, to the letter; any other
/// text gives nothing and is SQLite's business.
std::optional<SampleQuery> parsedSampleQuery(const QString &sql);

/// Recognises "Select Count(1) as TCOUNT from DataValues", to the letter but for case.
bool isSampleCountQuery(const QString &sql);
