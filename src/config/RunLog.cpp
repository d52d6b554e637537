#include "config/RunLog.h"

#include "base/OneLine.h"

#include <algorithm>

RunLog::RunLog(Observer observer, Attendance attendance, QStringList logged)
    : m_observer(std::move(observer))
    , m_attendance(attendance)
    , m_logged(std::move(logged))
{}

void RunLog::status(const QString &text) const
{
    if (m_observer.status)
        m_observer.status(oneLine(text));
}

void RunLog::progress(const Progress &progress) const
{
    if (m_observer.progress)
        m_observer.progress(progress);
}

void RunLog::trouble(const QString &text) const
{
    if (m_observer.trouble)
        m_observer.trouble(oneLine(text));
}

void RunLog::event(EventType type, const QString &text)
{
    if (type == EventError) {
        const auto holdsText = [&text](const QString &known) { return known.contains(text); };
        if (std::any_of(m_logged.begin(), m_logged.end(), holdsText))
            return;
        m_logged.append(text);
    }
    LogEvent(runEvent, type, text);
}

void RunLog::unattendedEvent(EventType type, const QString &text)
{
    if (m_attendance == Attendance::Unattended)
        event(type, text);
}

ShownError::ShownError(const RunLog &log, int errorNumber, const QString &text)
    : Error(errorNumber, text)
{
    log.status(text);
}
