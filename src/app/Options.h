#pragma once

#include <QString>
#include <QStringList>

/// The command line: the long options, and beside them the system's own syntax, which stays a text
/// for InitGrapher (core/StartUp.h).
struct Options
{
    bool help = false;
    bool version = false;
    bool list = false;
    QString home;       ///< --home
    QString dataPath;   ///< --dbpath, made absolute
    QStringList run;    ///< --run: report ids or titles
    QString systemText; ///< all that is no long option; "/AUTO" for --auto
    QString error;      ///< not empty: what is wrong with the options

    /// Whether the program runs without a window.
    bool unattended() const;
};

/// Takes the arguments behind the program's name.
Options parseOptions(const QStringList &arguments);

/// The text of --help.
QString usageText();
