#pragma once

#include <QString>

#include <chrono>

/// The rule that one instance at a time works.
///
/// Two things decide. The lock of the tool's data folder: of any number that start in the same
/// moment exactly one gets it, and one that got it only because the winner's run was over before
/// its own start-up was, gives way all the same. And the count of processes with this program's
/// image name, of this user or root, that make reports; it also sees instances of other data
/// folders and those that cannot have the lock: the lock's holder gives way to those that began
/// before it, so that of two at least one goes on. Those that began before it but lost the lock to
/// it are about to end; it waits for them.

/// Whether another instance keeps this one from running. If not, this process holds the lock until
/// it ends or releaseInstance(). `patience` is how long the number of earlier processes may stay
/// the same before they count as running. Not thread-safe.
bool anotherInstanceRuns(std::chrono::milliseconds patience = std::chrono::seconds(3));

/// The same for a window that asks its user to wait: checks only the current state, without
/// patience, and ignores that a run has ended since this process started.
bool anotherInstanceWorks();

/// The folder of another instance that makes reports, as its option --home names it, where that is
/// not this one's; empty when there is none, or it does not say.
QString otherHome();
/// " It makes the reports of '<folder>'."; empty for an empty folder.
QString workOf(const QString &home);

/// Releases the lock, when the program ends or waits for another instance.
void releaseInstance();
