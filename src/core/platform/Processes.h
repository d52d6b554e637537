#pragma once

#include <QString>

/// Running processes of the system.
namespace platform {

/// How many running processes have the given image name ("VantrelGrapher"; ".exe" is added where
/// the system has it), this process included.
int countProcesses(const QString &imageName);

/// The image name of this process, as countProcesses takes it.
QString ownImageName();

} // namespace platform
