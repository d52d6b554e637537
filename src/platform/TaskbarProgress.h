#pragma once

#include <QtGlobal>

namespace platform {

/// Shows in the system's task bar how far the work of a window is; `all` 0: nothing. Where the
/// system has no such thing, as here on Linux, nothing happens. Main thread only.
///
/// `window`: the system's handle of the top-level window.
void showTaskbarProgress(quintptr window, int done, int all);

} // namespace platform
