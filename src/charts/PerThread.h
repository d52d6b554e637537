#pragma once

#include <QThreadStorage>

/// The calling thread's own T, made on first use and freed when the thread ends: for large buffers
/// that all charts of a thread use in turn. `Tag` distinguishes several of one type.
///
/// Not thread_local: in a Windows program that is linked with the compiler's libraries its
/// destructors run after the memory has been freed.
template <typename T, typename Tag>
T &perThread()
{
    static auto *const storage = new QThreadStorage<T>; // outlives every thread
    return storage->localData();
}
