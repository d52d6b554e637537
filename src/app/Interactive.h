#pragma once

#include "app/Options.h"
#include "platform/TaskScheduler.h"

#include <QCoreApplication>

#include <functional>
#include <memory>

/// The program with its window. In a build without windows both functions that start it throw
/// Error.

class frmGrapherMain;

/// The application object of a program with windows. Without a display the process ends here with
/// status 2 and a text that says what can be done.
std::unique_ptr<QCoreApplication> createWindowApplication(int &argc, char *argv[]);

/// Goes on from InitGrapher: layout, instance check, configuration, report list, timer; returns the
/// exit status when the window has closed. Throws Error for a configuration that cannot be read.
int runInteractive(const Options &options);

/// Shows why the program cannot start in a message box, where there is a window system.
void showStartError(const QString &why);

/// Asks the user to wait while `anotherRuns()`; false when the program should end. The window is
/// disabled in the meantime. A running hourly job that is no longer registered is ended first.
bool waitForOtherInstance(frmGrapherMain &window, platform::TaskScheduler &scheduler,
                          const std::function<bool()> &anotherRuns);
