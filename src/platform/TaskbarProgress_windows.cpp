#include "platform/TaskbarProgress.h"

#include <algorithm>
#include <memory>
#include <shobjidl.h>
#include <windows.h>

namespace {

struct Release
{
    void operator()(ITaskbarList3 *list) const { list->Release(); }
};

/// Null where there is no task bar. The window's thread has joined COM already.
std::unique_ptr<ITaskbarList3, Release> taskbar()
{
    void *list = nullptr;
    if (FAILED(::CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER,
                                  __uuidof(ITaskbarList3), &list)))
        return {};
    std::unique_ptr<ITaskbarList3, Release> made(static_cast<ITaskbarList3 *>(list));
    return SUCCEEDED(made->HrInit()) ? std::move(made) : nullptr;
}

} // namespace

void platform::showTaskbarProgress(quintptr window, int done, int all)
{
    const auto list = taskbar();
    if (!list)
        return;
    auto *handle = reinterpret_cast<HWND>(window);
    if (all <= 0) {
        list->SetProgressState(handle, TBPF_NOPROGRESS);
        return;
    }
    list->SetProgressState(handle, TBPF_NORMAL);
    list->SetProgressValue(handle, static_cast<ULONGLONG>(std::clamp(done, 0, all)),
                           static_cast<ULONGLONG>(all));
}
