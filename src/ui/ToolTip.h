#pragma once

#include <QString>

/// A tool tip that wraps, for texts of any length, such as errors, names and paths: plain ones
/// become as wide as their longest line. Empty for an empty text.
QString wrappingToolTip(const QString &text);
