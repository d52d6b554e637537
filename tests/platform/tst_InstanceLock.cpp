#include "platform/InstanceLock.h"
#include "support/Errors.h"

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
        QVERIFY(QFile(m_path).open(QIODevice::WriteOnly)); // as earlier versions made it
        QVERIFY(QFile::setPermissions(m_path, QFile::Permissions(0x6666)));
        {
            InstanceLock lock(m_path);
            QVERIFY(lock.tryLock());
            QVERIFY(!(QFile::permissions(m_path) & (QFile::ReadGroup | QFile::ReadOther)));
            QVERIFY(lock.tryLock());
            QVERIFY(!isFreeToOthers());
            InstanceLock second(m_path);
            QVERIFY(!second.tryLock());
            lock.release();
            QVERIFY(isFreeToOthers());
            QVERIFY(second.tryLock());
        }
        QVERIFY(isFreeToOthers());
    }

    void isNotInherited()
    {
        QProcess child;
        {
            InstanceLock lock(m_path);
            QVERIFY(lock.tryLock());
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
            return errorOf([&lock] { lock.tryLock(); }).description.contains(name + "': " + why);
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
};

QTEST_GUILESS_MAIN(TestInstanceLock)
#include "tst_InstanceLock.moc"
