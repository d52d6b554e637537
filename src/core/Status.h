#pragma once

#include <QString>

#include <functional>

/// The status line: the run's progress messages, one line each. Main thread only.

/// Where status lines go: standard output of an unattended run, the window's status box, a test's
/// list. The sink is called on the main thread and may yield to the message loop.
using StatusSink = std::function<void(const QString &line)>;
void setStatusSink(StatusSink sink);

/// Shows one line; control characters become blanks. Before `gStartupDone` is set the call does
/// nothing visible.
void ShowStatus(const QString &text);

/// How far a whole run is: `done` of the `all` data items of all its reports.
struct Progress
{
    QString report;
    QString device;
    QString item;
    int done = 0;
    int all = 0;
};
using ProgressSink = std::function<void(const Progress &progress)>;
void setProgressSink(ProgressSink sink);
void showProgress(const Progress &progress);

/// Long work calls this every few milliseconds, so that a window stays alive meanwhile; it costs
/// nothing where no hook is set. The hook may handle any of the user's events: call it only where
/// nothing is half done. It must not throw. On any other thread than the main one the call does
/// nothing.
void yieldToUser();
void setYieldHook(std::function<void()> hook);
