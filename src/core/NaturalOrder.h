#pragma once

#include <QString>

/// How people look for and order names. Pure functions, safe on any thread.

/// The text without regard to case and accents: two texts that readers take for the same are equal
/// in this form, and a part of one is found in the other.
QString foldedText(const QString &text);

/// A key by whose plain comparison texts stand in the order that people expect: as `foldedText`,
/// with numbers inside by their value ("srv-2" before "srv-10").
QString naturalKey(const QString &text);
