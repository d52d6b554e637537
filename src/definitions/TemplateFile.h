#pragma once

#include "config/clsGrapherConfig.h"

#include <QString>

/// The files of page templates. Their text is published, so not every file can be one.

/// The path of a template in a chart definition: in the configuration folder, or the name itself if
/// it has a separator.
QString chartTemplatePath(const QString &name, const QString &folder = configurationFolder());

/// Why a file cannot be a template; empty when it can. It must be a regular file whose name ends in
/// ".htm" or ".html", and so must the target of a symbolic link: never a configuration.
QString templateFault(const QString &path);

/// Why a file of the configuration folder cannot be copied beside the pages; empty when it can. Its
/// name must not have a folder, and neither it nor the target of a symbolic link of that name may
/// be a configuration or definition file (*.config, *.xml, *.fac).
QString companionFault(const QString &name, const QString &folder = configurationFolder());

/// A template's text. A character set that it declares is replaced by UTF-8. Throws Error that
/// names the file.
QString readTemplate(const QString &path);
