#pragma once

#include <QStringList>

#include <cstdio>

/// The terminal, or console, that the program was started from.
namespace platform {

/// The arguments behind the program's name.
QStringList programArguments(int argc, char *argv[]);

/// Lets the standard streams reach the console that the program was started from, where the system
/// does not connect them by itself; streams that lead to files or pipes stay. For a program that
/// shows texts or runs unattended: one with a window would end with the console.
void attachTerminal();

/// Columns of the terminal that a stream writes to; 0 when it writes to something else, or to a
/// terminal on which a line cannot be rewritten.
int terminalColumns(std::FILE *stream);

/// Whether two streams end at the same place: one terminal, file or pipe.
bool endTogether(std::FILE *a, std::FILE *b);

/// From here on a write beyond the limit of a file's size fails, and does not end the process.
void letLimitedWritesFail();

/// Calls `handler` when the user or the system asks the process to end: an interrupt key or signal,
/// or the closing of its console. A second request ends it at once. The handler may run on any
/// thread, in the middle of anything. A reader of the standard output that goes away is no request.
void onCancelRequest(void (*handler)());

} // namespace platform
