#pragma once

#include <cstdio>

namespace platform {

/// Columns of the terminal that a stream writes to; 0 when it writes to something else, or to a
/// terminal on which a line cannot be rewritten.
int terminalColumns(std::FILE *stream);

} // namespace platform
