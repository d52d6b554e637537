#pragma once

#include <QObject>

#include <vector>

/// The user's changes of definitions since the window was opened, each with a name, to be taken
/// back in reverse order. Main thread only.
class UndoSteps : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Makes the changes after the first `count` ones (Definitions::changeCount) a step: "removal
    /// of “Servers”". No step when there are none.
    void add(const QString &what, qsizetype count);

    /// What undo() takes back; empty when there is nothing.
    QString next();

    /// Takes the last step back. Throws Error; the step then stays.
    void undo();

Q_SIGNALS:
    void changed();

private:
    void follow();

    struct Step
    {
        QString what;
        qsizetype first;
        qsizetype end;
    };
    std::vector<Step> m_steps;
};
