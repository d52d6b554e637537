#pragma once

#include "app/Options.h"

#include <QCoreApplication>

#include <memory>

/// Exit statuses of the program.
enum ExitStatus : int {
    Done = 0, ///< nothing due included
    ReportFailed = 1,
    WrongUse = 2, ///< wrong options, unreadable configuration
    OtherInstance = 3,
    Cancelled = 4,
};

/// Prints a text to standard output.
int show(const QString &text);

/// Prints "VantrelGrapher: <why>" to standard error, and returns WrongUse.
int refuse(const QString &why);

/// The application object that the options call for; an unattended run needs no display.
std::unique_ptr<QCoreApplication> createApplication(int &argc, char *argv[],
                                                    const Options &options);

/// Starts up in the system's order and does what the options say. Returns an ExitStatus.
int runApplication(const Options &options);
