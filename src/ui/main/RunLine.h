#pragma once

#include "config/Status.h"

/// "Servers, last week – srv-17 – 120 of 800 data items, about 2 minutes left"; `elapsed` in
/// milliseconds. No time is named before the first items are done. Pure.
QString runLine(const Progress &progress, qint64 elapsed);
