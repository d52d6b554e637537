#pragma once

#include <QDateTime>
#include <QString>

#include <utility>
#include <vector>

/// The hours of a week in which a promise holds, by the clock on the wall of the local zone:
/// "Mon-Fri 08:00-18:00, Sat 09:00-12:00". An end that is not after its begin is one of the next
/// day; "24:00" is a day's end. A value; empty means all hours.
class ServiceHours
{
public:
    ServiceHours() = default;
    /// Throws Error(TypeMismatch) that cites the part of the text that is not of that form.
    explicit ServiceHours(const QString &text);

    bool isEmpty() const { return m_spans.empty(); }
    const QString &text() const { return m_text; } ///< as it was given

    /// The service hours that touch a stretch of time between two instants in seconds since
    /// 1970-01-01 UTC, as begin and end; in order, they may overlap and reach beyond it.
    std::vector<std::pair<qint64, qint64>> stretches(qint64 from, qint64 to) const;

private:
    struct Span
    {
        int weekday = 1; ///< Monday 1 to Sunday 7
        int begin = 0;   ///< minutes since midnight
        int end = 0;     ///< after `begin`, maybe on the next day
    };
    QString m_text;
    std::vector<Span> m_spans;
};
