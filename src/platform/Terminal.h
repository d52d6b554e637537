#pragma once

#include <QStringList>

#include <cstdio>

/// The terminal, or console, that the program was started from.
namespace platform {

/// The arguments without the program's name.
QStringList programArguments(int argc, char *argv[]);

/// Connects the standard streams to the console that the program was started from, where the system
/// does not do so; redirected streams stay. For a program without a window, as one with a window
/// would end with the console.
void attachTerminal();

/// Columns of the terminal that a stream writes to; 0 when it is not a terminal, or one on which a
/// line cannot be rewritten.
int terminalColumns(std::FILE *stream);

/// Whether two streams lead to the same terminal, file or pipe.
bool haveSameTarget(std::FILE *a, std::FILE *b);

/// Makes writes beyond the limit of a file's size fail instead of ending the process.
void letLimitedWritesFail();

/// Calls `handler` when the user or the system asks the process to end: an interrupt key or signal,
/// or the closing of its console. A second request ends it at once. The handler may run on any
/// thread, at any time. A closed standard output is not such a request. Null: the first request has
/// no effect from here on.
void onCancelRequest(void (*handler)());

} // namespace platform
