#include "config/Program.h"

#include "base/ProgramState.h"

namespace {
const StatePart<Program> thisProgram;
}

Program &program()
{
    return *thisProgram;
}
