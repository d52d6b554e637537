#include "ui/main/UndoSteps.h"

#include "definitions/Definitions.h"

/// Steps whose changes are gone vanish; changes that nobody has named become a step.
void UndoSteps::follow()
{
    const qsizetype count = definitions().changeCount();
    while (!m_steps.empty() && m_steps.back().end > count)
        m_steps.pop_back();
    const qsizetype end = m_steps.empty() ? 0 : m_steps.back().end;
    if (end < count)
        m_steps.push_back({QStringLiteral("the last change"), end, count});
}

void UndoSteps::add(const QString &what, qsizetype count)
{
    follow();
    if (m_steps.empty() || m_steps.back().end <= count)
        return;
    Step &last = m_steps.back();
    if (last.first < count) {
        const qsizetype end = last.end;
        last.end = count;
        m_steps.push_back({what, count, end});
    } else {
        last.what = what;
    }
    Q_EMIT changed();
}

QString UndoSteps::next()
{
    follow();
    return m_steps.empty() ? QString() : m_steps.back().what;
}

void UndoSteps::undo()
{
    follow();
    if (m_steps.empty())
        return;
    definitions().takeBack(m_steps.back().first);
    m_steps.pop_back();
    Q_EMIT changed();
}
