#include "core/platform/InstanceLock.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

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
        const auto refused = [this](const QString &name, const QString &why) {
            InstanceLock lock(m_folder.filePath(name));
            return lock.tryLock() == InstanceLock::Unavailable &&
                   lock.reason.contains(name + "': " + why);
        };
        const auto path = [this](const char *name) {
            return QFile::encodeName(m_folder.filePath(name));
        };
        QVERIFY(refused("missing/running.lock", ""));
        QCOMPARE(::symlink("target", path("link").constData()), 0);
        QVERIFY(refused("link", "it is a symbolic link"));
        QVERIFY(!QFile::exists(m_folder.filePath("target")));
        QCOMPARE(::mkfifo(path("pipe").constData(), 0600), 0);
        QVERIFY(refused("pipe", "it is not a regular file"));
        QVERIFY(QFile(m_folder.filePath("other")).open(QIODevice::WriteOnly));
        if (::geteuid() == 0) {
            QCOMPARE(::chown(path("other").constData(), 65534, 65534), 0);
            QVERIFY(refused("other", "it belongs to another user"));
        }
    }

    void isClosedToOthers()
    {
        for (const char *name : {"new", "lax"}) {
            const QString path = m_folder.filePath(name);
            if (QByteArray(name) == "lax") { // as earlier versions made it
                QVERIFY(QFile(path).open(QIODevice::WriteOnly));
                QVERIFY(QFile::setPermissions(path, QFile::Permissions(0x6666)));
            }
            QCOMPARE(InstanceLock(path).tryLock(), InstanceLock::Held);
            QCOMPARE(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther),
                     QFile::Permissions());
        }
    }
};

QTEST_GUILESS_MAIN(TestInstanceLock)
#include "tst_instancelock.moc"
