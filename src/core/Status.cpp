#include "core/Status.h"

#include "core/OneLine.h"
#include "core/State.h"

#include <thread>

namespace {
const std::thread::id mainThread = std::this_thread::get_id(); // it makes all statics
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
        statusSink(oneLine(text));
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
    if (std::this_thread::get_id() == mainThread && yieldHook)
        yieldHook();
}
