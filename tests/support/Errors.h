#pragma once

#include "base/Error.h"

/// The error that an action throws; number 0 when it throws none.
template <typename Action>
Error errorOf(Action action)
{
    try {
        action();
    } catch (const Error &error) {
        return error;
    }
    return Error(0, QString());
}

/// The same as "[number] description"; empty where it throws none.
template <typename Action>
QString failureOf(const Action &action)
{
    const Error error = errorOf(action);
    return error.number == 0 ? QString() : errorTail(error);
}
