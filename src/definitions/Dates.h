#pragma once

#include <QDateTime>
#include <QString>

#include <pugixml.hpp>

/// Dates and identifiers of the definition files. Date-times in memory are wall times as
/// base/Clock.h explains; in the files they are in UTC. Main thread only.

/// The date-time that means "none yet": 1899-12-30 00:00:00.
QDateTime zeroDate();

/// A wall time from a date and a time of day.
QDateTime wallDateTime(const QDate &date, const QTime &time = QTime(0, 0));

/// A range of wall times, both ends in it.
struct DateRange
{
    QDateTime start;
    QDateTime end;
};
/// From midnight to the last second of the last day.
DateRange wholeDays(const QDate &first, const QDate &last);

/// The date of a year, month and day, where month and day may be out of range: month 0 is December
/// of the year before, 30 February is 1 or 2 March. Years are limited to 100 to 9999.
QDate dateSerial(int year, int month, int day);

/// "yyyy-MM-ddTHH:mm:ss-00:00" of a wall time, in UTC; fractions of a second are dropped and an
/// invalid date-time is written as `zeroDate`.
QString DateToXML(const QDateTime &date);

/// The wall time of a text of that form: digits where it has digits, any character in place of the
/// colons and of the last minus sign. Numbers out of range roll over as in `dateSerial`. A text of
/// any other form is read as the current time *in UTC*: there are files that rely on this.
QDateTime XMLToDate(const QString &text);
/// Whether a text has that form.
bool isXmlDate(const QString &text);

/// The wall time in an attribute; the current one, to the second, if it is missing.
QDateTime dateAttr(const pugi::xml_node &element, const char *name);

/// A new identifier: a GUID in braces, upper case, 38 characters.
QString NewID();

/// An identifier as part of a file or folder name: without "{", "}", ".", "-" and ",".
QString folderSafe(QString identifier);
