#pragma once

#include "core/platform/TaskScheduler.h"

#include <QByteArray>

/// A task as texts of the system's two services. Pure functions; Error(InvalidFileFormat) when a
/// setting holds a line break, which neither service can carry.
namespace platform {

/// The ".service" and ".timer" unit files of a user's systemd manager.
QByteArray serviceUnit(const ScheduledTask &task);
QByteArray timerUnit(const ScheduledTask &task);

/// A crontab with the task's lines between two marks; those of a former one are replaced, all else
/// stays byte for byte. Error(InvalidFileFormat) when a mark is missing.
QByteArray withTask(const QByteArray &crontab, const ScheduledTask &task);
QByteArray withoutTask(const QByteArray &crontab, const QString &name);

/// The names of the tasks that a crontab has between marks, and the lines of one of them.
QStringList tasksOf(const QByteArray &crontab);
QByteArray linesOf(const QByteArray &crontab, const QString &name);

/// The working directory in a ".service" file or in a task's lines of a crontab, as written by the
/// functions above; empty: none.
QString directoryOfService(const QByteArray &serviceUnit);
QString directoryOfLines(const QByteArray &lines);

} // namespace platform
