#include "report/OutputTree.h"

#include "core/GrapherConfig.h"
#include "core/Paths.h"
#include "core/State.h"
#include "core/Status.h"
#include "definitions/Dates.h"

#include <QLocale>

QString outputFolder()
{
    return NormalizeFolder(gConfig->PTH_Output());
}

QString reportFolder(const clsReportDef &report)
{
    return outputFolder() + folderSafe(report.ReportID) + pathSeparator;
}

QString deviceFolder(const clsReportDef &report, const QString &muid)
{
    return reportFolder(report) + folderSafe(muid) + pathSeparator;
}

bool createWorkPath(const QString &path, QString &errorText)
{
    QString message;
    if (EnsureFolder(path, message) == 0)
        return true;
    errorText = QStringLiteral("Unable to create work path: '%1'").arg(path);
    ShowStatus(errorText);
    return false;
}

QString reportDateText(const QDateTime &runDate)
{
    return QLocale().toString(runDate, u"yyyy-MMM-dd");
}

QString reportTimeText(const QDateTime &runDate)
{
    return QLocale().toString(runDate, u"HH:mm:ss");
}

QString dateRangeText(const QDateTime &start, const QDateTime &end)
{
    const QLocale locale;
    return locale.toString(start, u"dd-MMM-yyyy HH:mm") + QLatin1String(" to ") +
           locale.toString(end, u"dd-MMM-yyyy HH:mm");
}

QString periodText(const QDateTime &start, const QDateTime &end)
{
    const QString form = QStringLiteral("yyyy-MM-dd HH:mm");
    return start.toString(form) + QLatin1String(" to ") + end.toString(form);
}

QString pageLanguage()
{
    const QLocale locale;
    return locale.language() == QLocale::C ? QStringLiteral("en") : locale.bcp47Name();
}
