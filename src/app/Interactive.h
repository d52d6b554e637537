#pragma once

#include "app/Options.h"
#include "core/platform/TaskScheduler.h"

#include <QCoreApplication>

#include <functional>
#include <memory>

/// The program with its window. In a build without windows both functions that start it end in an
/// Error that says so.

class frmGrapherMain;

/// The application object of a program with windows. Where there is no display to show them on, the
/// process ends here with status 2 and a text that says what can be done.
std::unique_ptr<QCoreApplication> createWindowApplication(int &argc, char *argv[]);

/// Goes on from InitGrapher: layout, instance check, configuration, report list, timer; returns the
/// exit status when the window has closed. Throws Error for a configuration that cannot be read.
int runInteractive(const Options &options);

/// Shows why the program cannot start in a message box, where there is a window system.
void showStartError(const QString &why);

/// Asks the user to wait as long as `anotherRuns()`; false when the program is to end. The window
/// is disabled meanwhile. A running hourly job that is registered no more is ended first.
bool waitForOtherInstance(frmGrapherMain &window, platform::TaskScheduler &scheduler,
                          const std::function<bool()> &anotherRuns);
