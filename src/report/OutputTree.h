#pragma once

#include <QDateTime>
#include <QString>

class RunLog;
class clsGrapherConfig;

/// File name of a device's page in the device's folder.
inline const QString devicePageName = QStringLiteral("DEVREP.HTM");
/// File name of a report's PDF in the report's folder.
inline const QString pdfName = QStringLiteral("REPORT.PDF");

/// Where the files of a run go. Folders end in a separator. A value, for any thread.
class OutputTree
{
public:
    explicit OutputTree(const clsGrapherConfig &settings);

    const QString &folder() const { return m_folder; }
    QString contentsPage() const { return m_folder + m_contentsName; }
    QString reportFolder(const QString &reportId) const;
    QString reportPage(const QString &reportId) const; ///< whether it is there or not
    QString deviceFolder(const QString &reportId, const QString &muid) const;

    /// Takes a report's folder out of the tree by giving it another name, under which it can be
    /// removed at leisure. Returns that path; empty when there is no such folder. A symbolic link
    /// is refused. Throws Error that names the folder.
    QString setAside(const QString &reportId) const;

    /// Create the folder of the tree, with all its parents, of a report, or of a device. A symbolic
    /// link below the tree is refused, and so is an identifier that makes no single folder's name:
    /// pages stay where they belong. Throw ShownError: "Unable to create work path: '<path>'".
    void create(const RunLog &log) const;
    void createReportFolder(const QString &reportId, const RunLog &log) const;
    void createDeviceFolder(const QString &reportId, const QString &muid, const RunLog &log) const;

private:
    QString m_folder;
    QString m_contentsName;
    QString m_reportName;
};

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
