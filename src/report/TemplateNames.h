#pragma once

#include <QLatin1String>
#include <QString>

#include <span>

/// The placeholders that each kind of page template may contain. Pure data.

struct TemplateNames
{
    QLatin1String attribute; ///< of the grapher's configuration or of a chart that names the file
    QLatin1String marker;    ///< where the list goes; empty when the template has none
    QLatin1String names;     ///< placeholders, separated by blanks

    bool knows(QStringView name) const;
};

/// The templates that the grapher's configuration names.
std::span<const TemplateNames> pageTemplateNames();

/// The templates that a chart definition names: "StateFile" and "CountFile".
std::span<const TemplateNames> chartTemplateNames();
