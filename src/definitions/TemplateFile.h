#pragma once

#include <QString>

/// The files of page templates. Their text is published, so not every file can be one.

/// Where a template is that a chart definition names: in the configuration folder, or at the name
/// itself when it has a separator.
QString chartTemplatePath(const QString &name);

/// Why a file cannot be a template; empty when it can. It is a regular file whose name ends in
/// ".htm" or ".html", and so does the name of what a symbolic link leads to: never a configuration.
QString templateFault(const QString &path);

/// Why a file of the configuration folder cannot be copied beside the pages; empty when it can. Its
/// name has no folder, and neither it nor what a symbolic link of that name leads to is a
/// configuration or definition file (*.config, *.xml, *.fac).
QString companionFault(const QString &name);

/// A template's text. A character set that it declares becomes the one of pages, UTF-8. Throws
/// Error that names the file.
QString readTemplate(const QString &path);
