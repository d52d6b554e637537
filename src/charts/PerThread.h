#pragma once

#include <QThreadStorage>

/// The calling thread's own T, made on first use and freed once the thread has ended: for large
/// things that all charts of a thread use one after the other. `Tag` tells several of one type
/// apart.
///
/// Not thread_local, whose destructors run too late in a program for Windows that brings the
/// compiler's libraries along: when the objects' memory is gone already.
template <typename T, typename Tag>
T &perThread()
{
    static auto *const storage = new QThreadStorage<T>; // outlives every thread
    return storage->localData();
}
