#pragma once

#include <QString>

namespace platform {

/// A value of the monitoring product's set-up in the system's settings store, key
/// "Orlek INC\<productKey>": the registry on Windows, ~/.config elsewhere. Empty when missing.
QString productSetting(const QString &productKey, const QString &name);

} // namespace platform
