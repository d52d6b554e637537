#include "core/platform/InstanceLock.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using platform::InstanceLock;

class TestInstanceLock : public QObject
{
    Q_OBJECT

    /// Whether another process gets the lock now.
    bool isFreeToOthers() const
    {
        return QProcess::execute("flock", {"--nonblock", m_path, "true"}) == 0;
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("running.lock");

private Q_SLOTS:
    void keepsOthersOut()
    {
        {
            InstanceLock lock(m_path);
            QCOMPARE(lock.tryLock(), InstanceLock::Held);
            QCOMPARE(lock.tryLock(), InstanceLock::Held);
            QVERIFY(!isFreeToOthers());
            InstanceLock second(m_path);
            QCOMPARE(second.tryLock(), InstanceLock::HeldByOther);
            lock.release();
            QVERIFY(isFreeToOthers());
            QCOMPARE(second.tryLock(), InstanceLock::Held);
        }
        QVERIFY(isFreeToOthers());
    }

    void isNotInherited()
    {
        QProcess child;
        {
            InstanceLock lock(m_path);
            QCOMPARE(lock.tryLock(), InstanceLock::Held);
            child.start("sleep", {"600"});
            QVERIFY(child.waitForStarted());
        }
        QVERIFY(isFreeToOthers());
        child.kill();
        child.waitForFinished();
    }

    void saysWhyItCannotBeHad()
    {
        InstanceLock lock(m_folder.filePath("missing/running.lock"));
        QCOMPARE(lock.tryLock(), InstanceLock::Unavailable);
        QVERIFY2(lock.reason.contains("missing/running.lock"), qPrintable(lock.reason));
    }
};

QTEST_GUILESS_MAIN(TestInstanceLock)
#include "tst_instancelock.moc"
