#include "data/sqlite/SqlText.h"

#include "data/DayNumbers.h"
#include "data/Queries.h"

#include <iterator>

namespace {

enum class TokenKind { Word, Name, Text, Other };

struct Token
{
    TokenKind kind = TokenKind::Other;
    qsizetype start = 0;
    qsizetype end = 0;
    QString name; ///< of words and names
};

bool isWordCharacter(QChar character)
{
    return character.isLetterOrNumber() || character == u'_';
}

/// The end of what is enclosed from `start` on; the end of the text where the closing character is
/// missing, which SQLite will complain of.
qsizetype enclosedEnd(const QString &sql, qsizetype start, QChar closing)
{
    const qsizetype end = sql.indexOf(closing, start + 1);
    return end < 0 ? sql.size() : end + 1;
}

Token tokenAt(const QString &sql, qsizetype start)
{
    const QChar first = sql[start];
    if (first == u'\'')
        return {TokenKind::Text, start, enclosedEnd(sql, start, u'\''), {}};
    if (first == u'[' || first == u'"') {
        const qsizetype end = enclosedEnd(sql, start, first == u'[' ? u']' : u'"');
        return {TokenKind::Name, start, end, sql.mid(start + 1, end - start - 2)};
    }
    if (!isWordCharacter(first))
        return {TokenKind::Other, start, start + 1, {}};
    qsizetype end = start + 1;
    while (end < sql.size() && isWordCharacter(sql[end]))
        ++end;
    return {TokenKind::Word, start, end, sql.mid(start, end - start)};
}

template <typename Visitor>
void visitTokens(const QString &sql, Visitor visit)
{
    for (qsizetype at = 0; at < sql.size();) {
        const Token token = tokenAt(sql, at);
        visit(token);
        at = token.end;
    }
}

} // namespace

QString withoutDistinctRow(const QString &sql)
{
    QString result;
    result.reserve(sql.size());
    visitTokens(sql, [&](const Token &token) {
        const bool isDistinctRow = token.kind == TokenKind::Word &&
                                   token.name.compare(u"DISTINCTROW", Qt::CaseInsensitive) == 0;
        if (!isDistinctRow)
            result += QStringView(sql).mid(token.start, token.end - token.start);
    });
    return result;
}

bool hasEmptyList(const QString &sql)
{
    static constexpr QStringView emptyList[] = {u"in", u"(", u")"};
    size_t matched = 0;
    visitTokens(sql, [&](const Token &token) {
        const QStringView text = QStringView(sql).mid(token.start, token.end - token.start);
        if (matched == std::size(emptyList) || text.trimmed().isEmpty())
            return;
        const bool goesOn = text.compare(emptyList[matched], Qt::CaseInsensitive) == 0;
        const bool starts = text.compare(emptyList[0], Qt::CaseInsensitive) == 0;
        matched = goesOn ? matched + 1 : (starts ? 1 : 0);
    });
    return matched == std::size(emptyList);
}

QStringList namesIn(const QString &sql)
{
    QStringList names;
    visitTokens(sql, [&](const Token &token) {
        if (token.kind == TokenKind::Word || token.kind == TokenKind::Name)
            names.append(token.name);
    });
    return names;
}

std::optional<SampleQuery> parsedSampleQuery(const QString &sql)
{
    // The three numbers are taken from where they have to stand; the text built around them anew
    // then has to be this one, so that nothing else can pass.
    const QString frame =
        accessSampleQuery(QString(QChar(0)), QString(QChar(1)), QString(QChar(2)));
    const qsizetype item = frame.indexOf(QChar(0));
    if (!sql.startsWith(QStringView(frame).left(item)))
        return {};
    const auto numberFrom = [&sql](qsizetype from) {
        const qsizetype end = sql.indexOf(u' ', from);
        return from < 0 || end < 0 ? QString() : sql.mid(from, end - from);
    };
    const auto boundFrom = [&](qsizetype from) {
        static const QString before = QStringLiteral("CDATE(");
        const qsizetype at = sql.indexOf(before, from);
        return at < 0 ? -1 : at + before.size();
    };
    const qsizetype from = boundFrom(item);
    const qsizetype to = boundFrom(from);
    const QString texts[] = {numberFrom(item), numberFrom(from), numberFrom(to)};
    if (from < 0 || to < 0 || sql != accessSampleQuery(texts[0], texts[1], texts[2]))
        return {};

    bool isItem = false;
    bool isFrom = false;
    bool isTo = false;
    const qint64 dataIdent = texts[0].toLongLong(&isItem);
    const double first = texts[1].toDouble(&isFrom);
    const double last = texts[2].toDouble(&isTo);
    if (!isItem || !isFrom || !isTo)
        return {};
    return SampleQuery{dataIdent, instantOfDay(first), instantOfDay(last)};
}

bool isSampleCountQuery(const QString &sql)
{
    return sql.compare(u"Select Count(1) as TCOUNT from DataValues", Qt::CaseInsensitive) == 0;
}
