#pragma once

#include <QString>

/// A length of time for readers, the one form of all pages and messages: "45 seconds", "52
/// minutes", "5 h 03 min", "1,203 h 00 min". From a minute on it is rounded to minutes. Negative
/// ones count as none: "0 seconds". Pure; any thread.
QString durationText(qint64 seconds);
