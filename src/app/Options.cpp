#include "app/Options.h"

#include <QDir>

bool Options::unattended() const
{
    return list || !run.isEmpty() ||
           systemText.contains(QLatin1String("/AUTO"), Qt::CaseInsensitive);
}

Options parseOptions(const QStringList &arguments)
{
    Options options;
    QStringList rest;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        QString name = arguments[i];
        if (!name.startsWith(QLatin1String("--"))) {
            rest.append(name);
            continue;
        }
        QString value;
        const qsizetype equals = name.indexOf(u'=');
        bool hasValue = equals >= 0;
        if (hasValue) {
            value = name.mid(equals + 1);
            name.truncate(equals);
        }
        const bool takesValue = name == u"--home" || name == u"--dbpath" || name == u"--run";
        if (takesValue && !hasValue && i + 1 < arguments.size()) {
            value = arguments[++i];
            hasValue = true;
        }
        if (takesValue != hasValue || (takesValue && value.isEmpty())) {
            options.error = takesValue ? QStringLiteral("%1 needs a value").arg(name)
                                       : QStringLiteral("%1 takes no value").arg(name);
            return options;
        }
        if (name == u"--auto")
            rest.append(QStringLiteral("/AUTO"));
        else if (name == u"--dbpath")
            options.dataPath = QDir().absoluteFilePath(value);
        else if (name == u"--home")
            options.home = value;
        else if (name == u"--run")
            options.run.append(value);
        else if (name == u"--list")
            options.list = true;
        else if (name == u"--help")
            options.help = true;
        else if (name == u"--version")
            options.version = true;
        else {
            options.error = QStringLiteral("unknown option %1").arg(name);
            return options;
        }
    }
    options.systemText = rest.join(u' ');
    return options;
}

QString usageText()
{
    return QStringLiteral(
        R"(Usage: VantrelGrapher [/AUTO] [/DBPATH=<folder>] [option...]

Draws the reports of the Vantrel network monitor: HTML pages, PNG charts and CSV files.

  /AUTO              run every report that is due, then exit; needs no display
  /DBPATH=<folder>   folder of the monitoring database VTRGData.MDB; the value is used in upper
                     case and ends at the next "/", so off Windows use --dbpath

  --auto             the same as /AUTO
  --dbpath DIR       folder of the monitoring database
  --home DIR         the program's folder: configuration, definitions and reports; a folder
                     without factory files is filled with them. Also the environment variable
                     VANTREL_GRAPHER_HOME
  --run REPORT       run a report now, by its id or title, whatever its schedule says; repeatable
  --list             list the reports
  --help             show this text
  --version          show the version

Exit status: 0 done, nothing due included; 1 a report failed; 2 wrong options or unreadable
configuration; 3 another instance runs; 4 cancelled.
)");
}
