#pragma once

#include <QString>
#include <QStringList>

/// What the program should do instead of running reports; it ends after that.
enum class Command {
    None, ///< the window, or the run that the rest of the command line names
    Help,
    Version,
    List,
    History,
    Check,
    Register,
    Unregister,
    Registered,
    Mail,
    MailTest,
    Outbox,
};

/// The command line: the long options, and beside them the system's own syntax, which stays a text
/// for InitGrapher (config/StartUp.h).
struct Options
{
    Command command = Command::None;
    QString home;          ///< --home, made absolute
    QString dataPath;      ///< --dbpath, made absolute
    QStringList run;       ///< --run: report ids or titles
    QString metrics;       ///< --metrics, made absolute: the file that says how the run ended
    QStringList mail;      ///< --mail: report ids or titles
    QString testRecipient; ///< --mail-test: empty if none is named
    QString pdfReport;     ///< --pdf: a report's id or title; empty: none
    QString pdfFile;       ///< the file that it becomes, made absolute
    QString systemText;    ///< everything that is not a long option; "/AUTO" for --auto
    QString error;         ///< not empty: what is wrong with the options

    /// Whether the program runs without a window.
    bool unattended() const;

    /// Whether it makes reports without a window.
    bool makesReports() const;

    /// The folder of the monitoring data that either syntax names; empty: none.
    QString dataFolder() const;

    /// The options that a scheduled run needs to find the same folders.
    QStringList folderOptions() const;
};

/// Parses the arguments after the program's name.
Options parseOptions(const QStringList &arguments);

/// The text of --help.
QString usageText();
