#include "app/Options.h"

#include "base/FileSystem.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "config/StartUp.h"

#include <QDir>

#include <array>
#include <optional>

namespace {

constexpr std::array<std::pair<QLatin1String, Command>, 10> commands = {{
    {QLatin1String("--help"), Command::Help},
    {QLatin1String("--version"), Command::Version},
    {QLatin1String("--list"), Command::List},
    {QLatin1String("--history"), Command::History},
    {QLatin1String("--check"), Command::Check},
    {QLatin1String("--register"), Command::Register},
    {QLatin1String("--unregister"), Command::Unregister},
    {QLatin1String("--registered"), Command::Registered},
    {QLatin1String("--mail-test"), Command::MailTest},
    {QLatin1String("--outbox"), Command::Outbox},
}};

const QStringList valueOptions = {QStringLiteral("--home"), QStringLiteral("--dbpath"),
                                  QStringLiteral("--run"),  QStringLiteral("--metrics"),
                                  QStringLiteral("--mail"), QStringLiteral("--pdf")};

std::optional<Command> commandOf(const QString &name)
{
    for (const auto &[text, command] : commands) {
        if (name == text)
            return command;
    }
    return std::nullopt;
}

/// Relative to the current folder. A path that this system does not allow stays, to be refused
/// later.
QString absoluteFolder(const QString &folder)
{
    if (!platform::nameFault(folder).isEmpty())
        return folder;
    return QDir::toNativeSeparators(
        QDir::cleanPath(QDir().absoluteFilePath(QDir::fromNativeSeparators(folder))));
}

/// Handles one long option; false for an unknown name.
bool take(Options &options, QStringList &rest, const QString &name, const QString &value)
{
    if (name == u"--mail")
        options.mail.append(value);
    if (name == u"--mail-test")
        options.testRecipient = value;
    const std::optional<Command> command = name == u"--mail" ? Command::Mail : commandOf(name);
    if (command) {
        if (options.command != Command::None && options.command != *command)
            options.error =
                QStringLiteral("%1 cannot be combined with the option before it").arg(name);
        options.command = *command;
    } else if (name == u"--auto") {
        rest.append(QStringLiteral("/AUTO"));
    } else if (name == u"--dbpath") {
        options.dataPath = absoluteFolder(value);
    } else if (name == u"--home") {
        options.home = absoluteFolder(value);
    } else if (name == u"--metrics") {
        options.metrics = absoluteFolder(value);
    } else if (name == u"--run") {
        options.run.append(value);
    } else if (name == u"--pdf") {
        options.pdfReport = value;
    } else {
        return false;
    }
    return true;
}

} // namespace

bool Options::unattended() const
{
    return command != Command::None || makesReports();
}

bool Options::makesReports() const
{
    return command == Command::None &&
           (!run.isEmpty() || !pdfFile.isEmpty() ||
            systemText.contains(QLatin1String("/AUTO"), Qt::CaseInsensitive));
}

QString Options::dataFolder() const
{
    return dataPath.isEmpty() ? dataPathIn(systemText).value_or(QString()) : dataPath;
}

QStringList Options::folderOptions() const
{
    QStringList result;
    if (const QString folder = home.isEmpty() ? qEnvironmentVariable(homeVariable) : home;
        !folder.isEmpty())
        result << QStringLiteral("--home") << absoluteFolder(folder);
    if (const QString folder = dataFolder(); !folder.isEmpty())
        result << QStringLiteral("--dbpath") << absoluteFolder(nativePath(folder));
    return result;
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
        const bool takesValue = valueOptions.contains(name) || (name == u"--mail-test" && hasValue);
        if (takesValue && !hasValue && i + 1 < arguments.size()) {
            value = arguments[++i];
            hasValue = true;
        }
        if (takesValue != hasValue || (takesValue && value.isEmpty()))
            options.error = takesValue ? QStringLiteral("%1 needs a value").arg(name)
                                       : QStringLiteral("%1 takes no value").arg(name);
        else if (!take(options, rest, name, value))
            options.error = QStringLiteral("unknown option %1").arg(name);
        else if (name == u"--pdf" && (++i == arguments.size() || arguments[i].isEmpty()))
            options.error = QStringLiteral("--pdf needs a report and a file");
        else if (name == u"--pdf")
            options.pdfFile = absoluteFolder(arguments[i]);
        if (!options.error.isEmpty())
            return options;
    }
    options.systemText = rest.join(u' ');
    if (!options.pdfFile.isEmpty() &&
        (options.command != Command::None || !options.run.isEmpty() || !options.metrics.isEmpty() ||
         options.systemText.contains(QLatin1String("/AUTO"), Qt::CaseInsensitive)))
        options.error = QStringLiteral("--pdf goes with --home and --dbpath alone");
    if (!options.metrics.isEmpty() && !options.makesReports())
        options.error = QStringLiteral("--metrics goes with /AUTO or --run");
    return options;
}

QString usageText()
{
    return QStringLiteral(
        R"(Usage: VantrelGrapher [/AUTO] [/DBPATH=<folder>] [option...]

Draws the reports of the Vantrel network monitor: HTML pages, PNG charts and CSV files.
Opens its window, unless one of these options says what to do without it:
/AUTO, --auto, --run, --pdf, --list, --history, --check, --mail, --mail-test, --outbox, --register,
--unregister, --registered.

  /AUTO              run every report that is due, then exit; needs no display
  /DBPATH=<folder>   folder of the monitoring database VTRGData.MDB; the value is used in upper
                     case and ends at the next "/", so off Windows use --dbpath

  --auto             the same as /AUTO
  --dbpath DIR       folder of the monitoring database
  --home DIR         the program's folder: configuration, definitions and reports; a folder
                     without factory files is filled with them. Also the environment variable
                     VANTREL_GRAPHER_HOME
  --metrics FILE     after the run write how it ended to FILE, as Prometheus text
  --run REPORT       run a report now, by its id or title, whatever its schedule says; repeatable
  --pdf REPORT FILE  make a report into this PDF file; its pages and dates stay as they are

  --list             list the reports: last run, next run, whether due now, and why
  --history          list the last 400 runs and what became of each report
  --check            read every definition, configuration and template, follow every reference,
                     and print what is wrong as file:line:column: text

  --mail REPORT      mail the last finished result of a report to all its subscribers now;
                     repeatable
  --mail-test[=ADDRESS]
                     send a test message, to the sender's address if none is named, and say what
                     is wrong
  --outbox           list the mails that wait: since when, how often tried, and the last error

  --register         have the system start /AUTO every hour, with the folders named here: a
                     systemd user timer, else the crontab; on Windows the Task Scheduler
  --unregister       take that back
  --registered       show whether and how the program is registered

  --help             show this text
  --version          show the version

Exit status: 0 done, nothing due included; 1 a report failed or lacks charts, something could not
be saved, or a mail was not sent and is not tried again; 2 wrong options, configuration or definitions that cannot be read, findings of
--check; 3 another instance runs; 4 cancelled. Errors go to standard error, too.
)");
}
