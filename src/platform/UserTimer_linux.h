#pragma once

#include "platform/TaskScheduler.h"

#include <QByteArray>

/// A task as texts for systemd and cron. Pure functions; Error(InvalidFileFormat) when a setting
/// contains a line break, which neither supports.
namespace platform {

/// The ".service" and ".timer" unit files of a user's systemd manager.
QByteArray serviceUnit(const ScheduledTask &task);
QByteArray timerUnit(const ScheduledTask &task);

/// A crontab with the task's lines between two marks; existing ones are replaced, everything else
/// stays byte for byte. Error(InvalidFileFormat) when a mark is missing.
QByteArray withTask(const QByteArray &crontab, const ScheduledTask &task);
QByteArray withoutTask(const QByteArray &crontab, const QString &name);

/// The names of the tasks between marks in a crontab, and the lines of one of them.
QStringList tasksOf(const QByteArray &crontab);
QByteArray linesOf(const QByteArray &crontab, const QString &name);

/// The working directory in a ".service" file or in a task's crontab lines, as written by the
/// functions above; empty without one.
QString directoryOfService(const QByteArray &serviceUnit);
QString directoryOfLines(const QByteArray &lines);

} // namespace platform
