#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// What goes wrong in a run, told to those who are not there to see it. Main thread only.

/// Takes one error of a run, in words of its own; nobody by default.
using TroubleSink = std::function<void(const QString &text)>;
void setTroubleSink(TroubleSink sink);

/// Hands an error to the sink. The status line that shows it where it happens is another's.
void tellTrouble(const QString &text);

/// Writes an error to the event log, unless a text that holds it has been written already as
/// LoggedToday says.
void logTrouble(const QString &text);

/// Remembers what the event log has been told as long as it lives, so that what goes wrong hour
/// after hour fills no log. One at a time.
class LoggedToday
{
public:
    /// `texts`: what earlier runs of the day have logged.
    explicit LoggedToday(QStringList texts);
    ~LoggedToday();
    LoggedToday(const LoggedToday &) = delete;
    LoggedToday &operator=(const LoggedToday &) = delete;
};
