#include "core/Status.h"

#include "core/State.h"

namespace {
StatusSink statusSink;
ProgressSink progressSink;
std::function<void()> yieldHook;
} // namespace

void setStatusSink(StatusSink sink)
{
    statusSink = std::move(sink);
}

void ShowStatus(const QString &text)
{
    if (gStartupDone && statusSink)
        statusSink(text);
}

void setProgressSink(ProgressSink sink)
{
    progressSink = std::move(sink);
}

void showProgress(const Progress &progress)
{
    if (progressSink)
        progressSink(progress);
}

void setYieldHook(std::function<void()> hook)
{
    yieldHook = std::move(hook);
}

void yieldToUser()
{
    if (yieldHook)
        yieldHook();
}
