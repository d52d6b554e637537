#include "platform/ProductSettings.h"

#include <QSettings>

namespace platform {

QString productSetting(const QString &productKey, const QString &name)
{
    const QSettings store(QSettings::NativeFormat, QSettings::UserScope,
                          QStringLiteral("Orlek INC"), productKey);
    return store.value(name).toString();
}

} // namespace platform
