#include "core/Trouble.h"

#include "core/OneLine.h"
#include "core/platform/EventLog.h"

#include <algorithm>
#include <optional>

namespace {
TroubleSink troubleSink;
std::optional<QStringList> logged; ///< nothing: each error is logged
} // namespace

void setTroubleSink(TroubleSink sink)
{
    troubleSink = std::move(sink);
}

void tellTrouble(const QString &text)
{
    if (troubleSink)
        troubleSink(oneLine(text));
}

void logTrouble(const QString &text)
{
    if (logged && std::any_of(logged->begin(), logged->end(),
                              [&](const QString &known) { return known.contains(text); }))
        return;
    if (logged)
        logged->append(text);
    LogEvent(runEvent, EventError, text);
}

LoggedToday::LoggedToday(QStringList texts)
{
    logged = std::move(texts);
}

LoggedToday::~LoggedToday()
{
    logged.reset();
}
