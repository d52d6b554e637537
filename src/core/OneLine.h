#pragma once

#include <QString>

/// Texts on their way to a terminal, a log or a list. Names come from the database, from definition
/// files and servers: nothing in them may steer a terminal, turn the direction of writing, or pass
/// for a line or column of the program's own. What would is shown as a blank.

QString oneLine(QString text);

/// The same for a text of the program's own lines and columns: line breaks and tabs stay.
QString printable(QString text);
