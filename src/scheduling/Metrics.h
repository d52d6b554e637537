#pragma once

#include "scheduling/RunHistory.h"

#include <QByteArray>

/// The state of the runs for a monitoring system: Prometheus text exposition format 0.0.4, for the
/// textfile collector of its node exporter.

struct RunState
{
    int status = 0;                ///< what the last run ended with, an ExitStatus
    qsizetype waitingMessages = 0; ///< in the outbox
};

/// `runs` are all on record, newest first. A report shows the last run that came to it.
QByteArray metricsText(const std::vector<RunRecord> &runs, const RunState &state);

/// Writes the file in one step. False, and an event, when that failed; `error` says why then. Does
/// nothing where `path` is empty. Any thread.
bool saveMetrics(const QString &path, const RunHistory &history, const RunState &state,
                 QString *error = nullptr);
