#pragma once

#include "config/Status.h"

#include <QString>

#include <cstdio>

/// Shows an unattended run on a stream: the status lines, and on a terminal one live line below
/// them. Errors go to a second stream as well, a line each, unless both streams end at the same
/// place. Takes the place of observer() for as long as it lives. Main thread only.
class RunDisplay
{
public:
    RunDisplay(std::FILE *stream, std::FILE *errors);
    ~RunDisplay();
    RunDisplay(const RunDisplay &) = delete;
    RunDisplay &operator=(const RunDisplay &) = delete;

private:
    void showStatus(const QString &line);
    void show(const Progress &progress);

    std::FILE *m_stream;
    QString m_live;     ///< empty: none is shown
    qint64 m_start = 0; ///< instant of the first progress
};

/// "25 % (10 of 40), 0:30 left: report, device, item", shortened to `columns`; `elapsed` in
/// milliseconds. No time is named before the first item is done.
QString progressLine(const Progress &progress, qint64 elapsed, int columns);
