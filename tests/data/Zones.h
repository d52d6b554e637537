#pragma once

#include "core/TimeZone.h"

#include <QByteArray>

/// Puts the process into a time zone.
inline void setZone(const char *name)
{
    qputenv("TZ", name);
    reloadTimeZone();
}

/// A wall time or a UTC date-time from ISO text.
inline QDateTime at(const char *text)
{
    QDateTime time = QDateTime::fromString(QString::fromLatin1(text), Qt::ISODateWithMs);
    time.setTimeSpec(Qt::UTC);
    return time;
}

/// An instant from ISO text in UTC.
inline qint64 utc(const char *text)
{
    return at(text).toMSecsSinceEpoch();
}
