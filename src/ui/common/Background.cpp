#include "ui/common/Background.h"

#include "base/Error.h"

#include <QCoreApplication>
#include <QThreadPool>

void Background::Link::deliver(std::function<void()> take) const
{
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [isAbandoned = m_isAbandoned, take = std::move(take)] {
            if (!*isAbandoned)
                take();
        },
        Qt::QueuedConnection);
}

void Background::start(std::function<void(const Link &)> work,
                       std::function<void(const QString &)> fail)
{
    abandon();
    m_link = Link();
    m_isBusy = true;
    QThreadPool::globalInstance()->start(
        [this, link = m_link, work = std::move(work), fail = std::move(fail)] {
            // It mostly waits, for a server that may hang: no thread of a run is lost to that.
            QThreadPool::globalInstance()->releaseThread();
            QString error;
            try {
                work(link);
            } catch (const std::exception &exception) {
                error = errorTail(errorOf(exception));
            }
            link.deliver([this, error, fail] {
                m_isBusy = false;
                if (!error.isEmpty() && fail)
                    fail(error);
                Q_EMIT ended();
            });
            QThreadPool::globalInstance()->reserveThread();
        });
}

void Background::abandon()
{
    *m_link.m_isAbandoned = true;
    m_isBusy = false;
}
