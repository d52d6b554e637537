#include "config/Status.h"

#include "base/OneLine.h"
#include "base/ProgramState.h"
#include "config/Program.h"

namespace {
const StatePart<Observer> theObserver;
}

Observer &observer()
{
    return *theObserver;
}

void ShowStatus(const QString &text)
{
    if (program().gStartupDone && observer().status)
        observer().status(oneLine(text));
}
