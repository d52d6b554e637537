#pragma once

#include <QString>

#include <functional>

/// The system's event log: the Windows event log, elsewhere syslog. Source "VTRGRAPHER".

enum EventType : int { EventError = 1, EventWarning = 2, EventInformation = 4 };

/// Event number of the entries about an unattended run.
inline constexpr int runEvent = 6;

/// Writes one entry of one line; control characters become blanks. Never fails; a system without a
/// log service drops it. On any thread.
void LogEvent(int eventId, EventType type, const QString &message);

/// Registers the texts of the entries with the system's log: on Windows once, in the registry, by
/// an administrator. Throws Error with the system's reason when that fails; entries are written all
/// the same, with a remark that their description is missing.
void registerEventSource();

/// Also hands each entry to `observer`, one at a time, on the thread that writes it; for tests.
using EventObserver = std::function<void(int eventId, EventType type, const QString &message)>;
void setEventObserver(EventObserver observer);

namespace platform {
/// The system's end of LogEvent: writes a message of one line.
void writeEvent(int eventId, EventType type, const QString &message);
} // namespace platform
