#pragma once

#include <QString>

/// Searching and sorting names as people expect. Pure functions, safe on any thread.

/// The text without case and accents, for comparing and searching.
QString foldedText(const QString &text);

/// A sort key: as `foldedText`, but numbers in it compare by value ("srv-2" before "srv-10").
QString naturalKey(const QString &text);
