#pragma once

#include "base/Error.h"
#include "config/Status.h"
#include "platform/EventLog.h"

#include <QStringList>

/// Whether somebody is there to see what a run says.
enum class Attendance { Attended, Unattended };

/// What a run says: to its observer, and to the system's event log. Used on the run's thread.
class RunLog
{
public:
    /// `logged`: errors that the event log has been told today already.
    explicit RunLog(Observer observer, Attendance attendance = Attendance::Attended,
                    QStringList logged = {});

    // To the observer. Control characters become blanks.
    void status(const QString &text) const;
    void progress(const Progress &progress) const;
    void trouble(const QString &text) const;

    /// To the event log. An error goes there once, so that what goes wrong hour after hour fills no
    /// log: not when a known text holds it.
    void event(EventType type, const QString &text);
    /// The same, unless somebody is there.
    void unattendedEvent(EventType type, const QString &text);

private:
    const Observer m_observer;
    const Attendance m_attendance;
    QStringList m_logged;
};

/// An Error whose description is a routine's whole text for the user, shown as a status line.
class ShownError : public Error
{
public:
    /// Shows the text.
    ShownError(const RunLog &log, int errorNumber, const QString &text);
};
