#pragma once

#include <QString>

/// The system's event log: syslog here, the Windows event log there. Source "VTRGRAPHER".

enum EventType : int { EventError = 1, EventWarning = 2, EventInformation = 4 };

/// Event number of the entries that bracket and describe an unattended run.
inline constexpr int runEvent = 6;

/// Writes one entry. Never fails; a system without a log service drops it.
void LogEvent(int eventId, EventType type, const QString &message);

/// Also hands each entry to `observer` (null: nobody); for tests.
using EventObserver = void (*)(int eventId, EventType type, const QString &message);
void setEventObserver(EventObserver observer);
