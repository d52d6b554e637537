#pragma once

#include "app/Options.h"
#include "config/ExitStatus.h"

#include <QCoreApplication>

#include <memory>

/// Prints a text to standard output.
int printText(const QString &text);

/// Prints "VantrelGrapher: <why>" to standard error, and returns WrongUse.
int refuse(const QString &why);

/// The application object that the options call for; an unattended run needs no display.
std::unique_ptr<QCoreApplication> createApplication(int &argc, char *argv[],
                                                    const Options &options);

/// Starts up in the system's order and does what the options say. Returns an ExitStatus.
int runApplication(const Options &options);
