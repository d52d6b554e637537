#pragma once

/// What the program ends with.
namespace ExitStatus {
enum : int {
    Done = 0, ///< nothing due included
    ReportFailed = 1,
    WrongUse = 2, ///< wrong options, unreadable configuration
    OtherInstance = 3,
    Cancelled = 4,
};
} // namespace ExitStatus
