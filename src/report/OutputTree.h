#pragma once

#include <QDateTime>
#include <QString>

/// Where the files of a run go. Folders end in a separator.

/// File name of a device's page in the device's folder.
inline const QString devicePageName = QStringLiteral("DEVREP.HTM");

QString outputFolder();
QString reportFolder(const QString &reportId);
QString reportPage(const QString &reportId); ///< its page, whether it is there or not
QString deviceFolder(const QString &reportId, const QString &muid);

/// Creates a folder with all its parents. On failure false; `errorText` then holds
/// "Unable to create work path: '<path>'", which is shown as a status line too.
bool createWorkPath(const QString &path, QString &errorText);

/// The same for the folder of a report or a device. A symbolic link is refused, and so is an
/// identifier that makes no single folder's name: pages stay where they belong.
bool createReportFolder(const QString &reportId, QString &errorText);
bool createDeviceFolder(const QString &reportId, const QString &muid, QString &errorText);

/// A wall time in a form of QLocale::toString, in the user's language. Months and days have no
/// point behind them, even where the language writes one.
QString localTimeText(const QDateTime &wall, const QString &form);

/// The placeholders of the time at which the run began: "report.date", "report.time".
QString reportDateText(const QDateTime &runDate);
QString reportTimeText(const QDateTime &runDate);

/// "dd-MMM-yyyy HH:mm to dd-MMM-yyyy HH:mm"
QString dateRangeText(const QDateTime &start, const QDateTime &end);

/// "yyyy-MM-dd HH:mm to yyyy-MM-dd HH:mm", as charts show it.
QString periodText(const QDateTime &start, const QDateTime &end);

/// The language of dates on pages, for the HTML attribute "lang".
QString pageLanguage();
