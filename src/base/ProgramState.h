#pragma once

#include <cstddef>
#include <memory>
#include <vector>

/// All that lasts and changes while the program runs, in one object. main() makes it first and
/// destroys it last; a test makes its own, which begins afresh.
///
/// Each room keeps its part as a struct with its first values beside the members, and reaches it by
/// one handle:
///
///     struct Counter { int value = 0; };
///     const StatePart<Counter> counter;
///     ...
///     ++counter->value;
///
/// The state that was made last is in force; when it is destroyed, the one before it is again. That
/// happens on the main thread, while no other uses any part. The parts are made with the state, in
/// no order: none may use another's in its constructor or destructor.
class ProgramState
{
public:
    ProgramState();
    ~ProgramState();
    ProgramState(const ProgramState &) = delete;
    ProgramState &operator=(const ProgramState &) = delete;

private:
    template <typename Part>
    friend class StatePart;

    using Maker = std::shared_ptr<void> (*)();
    /// Before main() alone. Returns the part's index in m_parts.
    static size_t add(Maker maker);
    static void *part(size_t index);

    std::vector<std::shared_ptr<void>> m_parts;
    ProgramState *m_former;
};

/// The handle of a part: a constant at namespace scope, usable on any thread between the making and
/// the destruction of a state.
template <typename Part>
class StatePart
{
public:
    StatePart()
        : m_index(
              ProgramState::add([]() -> std::shared_ptr<void> { return std::make_shared<Part>(); }))
    {}
    StatePart(const StatePart &) = delete;
    StatePart &operator=(const StatePart &) = delete;

    Part &operator*() const { return *static_cast<Part *>(ProgramState::part(m_index)); }
    Part *operator->() const { return &**this; }

private:
    size_t m_index;
};
