#pragma once

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>

/// Work on another thread for a window, so that the window never waits for a file or a server: one
/// piece at a time, which can be abandoned. What it finds comes back to the window's thread. All
/// members are called on that thread.
class Background : public QObject
{
    Q_OBJECT

public:
    /// What the work sees of the window: on the work's thread.
    class Link
    {
    public:
        /// Has `take` called on the window's thread, unless the work is abandoned by then.
        void deliver(std::function<void()> take) const;
        /// The work may end early then: nobody waits for its results.
        bool isAbandoned() const { return *m_isAbandoned; }

    private:
        friend class Background;
        std::shared_ptr<std::atomic<bool>> m_isAbandoned =
            std::make_shared<std::atomic<bool>>(false);
    };

    explicit Background(QObject *parent = nullptr)
        : QObject(parent)
    {}
    ~Background() override { abandon(); }

    /// Abandons what is under way, and starts a piece of work. It owns all that it touches: it may
    /// outlive the window. What it throws is delivered to `fail` as a text for users.
    void start(std::function<void(const Link &)> work,
               std::function<void(const QString &)> fail = {});
    void abandon();
    bool isBusy() const { return m_isBusy; }

Q_SIGNALS:
    /// The work has ended and was not abandoned; all that it delivered has been taken.
    void ended();

private:
    Link m_link;
    bool m_isBusy = false;
};
