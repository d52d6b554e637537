#pragma once

#include "base/TimeZone.h"

#include <QByteArray>

/// Puts the process into a time zone.
inline void setZone(const QByteArray &name)
{
    qputenv("TZ", name);
    reloadTimeZone();
}

/// A wall time or a UTC date-time from ISO text.
inline QDateTime at(const QByteArray &text)
{
    QDateTime time = QDateTime::fromString(QString::fromLatin1(text), Qt::ISODateWithMs);
    time.setTimeSpec(Qt::UTC);
    return time;
}

/// An instant from ISO text in UTC.
inline qint64 utc(const QByteArray &text)
{
    return at(text).toMSecsSinceEpoch();
}
