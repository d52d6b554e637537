#pragma once

#include <QString>

#include <functional>

/// What work in progress says to whoever watches it.

/// How far a whole run is: `done` of the `all` data items of all its reports.
struct Progress
{
    QString report;
    QString device;
    QString item;
    int done = 0;
    int all = 0;
};

/// Whoever watches: an unattended run's output, the window, a test. A function that is not set
/// takes nothing. They are called on the thread that works.
struct Observer
{
    std::function<void(const QString &line)> status;
    std::function<void(const Progress &progress)> progress;
    /// Takes errors, in words of their own, for those who are not there to see the status lines.
    std::function<void(const QString &text)> trouble;
};

/// The one that watches the main thread. Main thread only.
Observer &observer();

/// Shows a status line of the main thread's work; control characters become blanks. Before
/// `gStartupDone` is set the call does nothing visible.
void ShowStatus(const QString &text);
