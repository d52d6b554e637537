#pragma once

#include <QString>

/// Texts for a terminal, a log or a list. Names come from the database, from definition files and
/// servers: they must not control a terminal, change the direction of writing, or look like a line
/// or column of the program's own. Characters that could do so are shown as blanks.

QString oneLine(QString text);

/// The same for a text of several lines and columns: line breaks and tabs stay.
QString printable(QString text);
