#pragma once

#include <QString>

/// The system's event log: syslog here, the Windows event log there. Source "VTRGRAPHER".

enum EventType : int { EventError = 1, EventWarning = 2, EventInformation = 4 };

/// Event number of the entries that bracket and describe an unattended run.
inline constexpr int runEvent = 6;

/// Writes one entry of one line; control characters become blanks. Never fails; a system without a
/// log service drops it.
void LogEvent(int eventId, EventType type, const QString &message);

/// Tells the system's log how to show the entries, where it has to know: on Windows an entry of the
/// registry, made by an administrator once. False with the system's reason when it cannot be made;
/// entries are written all the same, under a remark that their description is missing.
bool registerEventSource(QString &reason);

/// Also hands each entry to `observer` (null: nobody); for tests.
using EventObserver = void (*)(int eventId, EventType type, const QString &message);
void setEventObserver(EventObserver observer);
