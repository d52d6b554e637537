#include "base/ProgramState.h"

#include <QtGlobal>

#include <utility>

namespace {

using Maker = std::shared_ptr<void> (*)();

ProgramState *inForce = nullptr;

/// Grows while the program's constants are made, and stays as it is from then on.
std::vector<Maker> &makers()
{
    static std::vector<Maker> all;
    return all;
}

} // namespace

ProgramState::ProgramState()
    : m_former(std::exchange(inForce, this))
{
    for (const Maker make : makers())
        m_parts.push_back(make());
}

ProgramState::~ProgramState()
{
    // A test may make its next state before it destroys the last one.
    ProgramState **link = &inForce;
    while (*link != this)
        link = &(*link)->m_former;
    *link = m_former;
}

size_t ProgramState::add(Maker maker)
{
    makers().push_back(maker);
    return makers().size() - 1;
}

void *ProgramState::part(size_t index)
{
    if (!inForce)
        qFatal("There is no ProgramState");
    return inForce->m_parts[index].get();
}
