#pragma once

#include <QDateTime>
#include <QString>

#include <pugixml.hpp>

/// Dates and identifiers of the definition files. Date-times in memory are wall times as
/// core/Clock.h explains; in the files they stand in UTC. Main thread only.

/// The date-time that stands for "none yet": 1899-12-30 00:00:00.
QDateTime zeroDate();

/// A wall time from a date and a time of day.
QDateTime wallDateTime(const QDate &date, const QTime &time = QTime(0, 0));

/// The date of a year, month and day where month and day may lie outside their range: month 0 is
/// December of the year before, 30 February is 1 or 2 March. Years are held within 100 to 9999.
QDate dateSerial(int year, int month, int day);

/// "yyyy-MM-ddTHH:mm:ss-00:00" of a wall time, in UTC; fractions of a second are dropped and an
/// invalid date-time is written as `zeroDate`.
QString DateToXML(const QDateTime &date);

/// The wall time that a text of that form tells: digits where it has digits, any character in place
/// of the colons and of the last minus sign. Numbers out of range roll over as in `dateSerial`.
/// A text of any other form reads as the present moment *in UTC*: files that rely on this exist.
QDateTime XMLToDate(const QString &text);

/// The wall time that an attribute tells; the present one, to the second, where it is missing.
QDateTime dateAttr(const pugi::xml_node &element, const char *name);

/// A new identifier: a GUID in braces, upper case, 38 characters.
QString NewID();

/// An identifier as part of a file or folder name: without "{", "}", ".", "-" and ",".
QString folderSafe(QString identifier);
