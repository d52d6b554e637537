#include "base/FileSystem.h"
#include "support/Errors.h"
#include "support/Sandbox.h"

#include <QTest>

#ifdef Q_OS_LINUX
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <linux/capability.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
/// The error of an action while no file may grow beyond so many bytes, as on a full disk.
template <typename Action>
Error errorWithRoomFor(rlim_t bytes, const Action &action)
{
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit less{bytes, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &less);
    const Error error = errorOf(action);
    ::setrlimit(RLIMIT_FSIZE, &before);
    return error;
}

/// The error's number in a process of its own that `restrict` takes something from; -1 where that
/// could not be arranged.
template <typename Action>
int errorInProcess(bool (*restrict)(), const Action &action)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(restrict() ? errorOf(action).number : 255);
    int status = 0;
    const bool ended = ::waitpid(child, &status, 0) == child && WIFEXITED(status);
    return ended && WEXITSTATUS(status) != 255 ? WEXITSTATUS(status) : -1;
}

/// Takes all rights beyond those that permissions give, even where the tests run as root.
bool dropPrivileges()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[2] = {};
    return ::syscall(SYS_capset, &header, none) == 0;
}

/// Has the system answer every attempt to sync a file with an error, as a broken disk does.
bool breakSync()
{
    const auto isCall = [](unsigned number) -> sock_filter {
        return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1);
    };
    const sock_filter fail = BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EIO);
    sock_filter program[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                             isCall(SYS_fsync),
                             fail,
                             isCall(SYS_fdatasync),
                             fail,
                             BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    const sock_fprog filter{std::size(program), program};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

/// Permissions in octal.
QString modeOf(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0
               ? QString::number(status.st_mode & 0777, 8)
               : QString();
}

} // namespace
#endif

class TestFiles : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> sandbox;

private Q_SLOTS:
    void init() { sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { sandbox.reset(); }

#ifndef Q_OS_WIN
    void findsPaths()
    {
        sandbox->write("Data/Sub/File.TXT", "x");
        sandbox->write("both/a", "x");
        sandbox->write("BOTH/b", "x");
        const auto found = [this](const QString &configured) {
            return nativePath(sandbox->path() + configured).remove(sandbox->path());
        };
        QCOMPARE(found("/Data/Sub/File.TXT"), "/Data/Sub/File.TXT");
        QCOMPARE(found("\\data/SUB\\file.txt"), "/Data/Sub/File.TXT");
        QCOMPARE(found("/DATA/SUB/New.txt"), "/Data/Sub/New.txt");
        QCOMPARE(found("/DATA/SUB/"), "/Data/Sub/");
        QCOMPARE(found("\\DATA\\NEW\\"), "/Data/NEW/");
        QCOMPARE(found("/DATA//SUB///file.TXT"), "/Data/Sub/File.TXT");
        QCOMPARE(found("/DATA/./SUB/../SUB/file.TXT"), "/Data/./Sub/../Sub/File.TXT");
        QCOMPARE(found("/both/new"), "/both/new");                       // the exact one goes first
        QCOMPARE(found("/Both/a"), "/BOTH/a");                           // the first of several
        QCOMPARE(found("/data/sub/FILE.txt/x"), "/Data/Sub/File.TXT/x"); // a file is no folder
        const QString exact = sandbox->path() + QStringLiteral("/Data/Sub/FILE.txt");
        QCOMPARE(exactPath(sandbox->path() + "\\DATA/SUB\\FILE.txt"), exact);
        QCOMPARE(exactPath(sandbox->path() + "/data/sub/FILE.txt/"), exact);
    }

    void findsRelativePathsInTheProgramsFolder()
    {
        sandbox->write("Data/File.TXT", "x");
        const auto found = [this](const QString &path) { return path.mid(sandbox->path().size()); };
        QCOMPARE(found(nativePath(".\\data\\FILE.TXT")), "/./Data/File.TXT");
        QCOMPARE(found(exactPath("data\\x")), "/Data/x");
        QCOMPARE(nativePath(""), "");
        saveFile("data\\x", "here");
        QCOMPARE(sandbox->read("Data/x"), "here");
    }

    void refusesPathsOfWindows()
    {
        for (const QString path : {"C:\\a", "c:/a", "D:", "\\\\server\\share\\a"}) {
            const Error error = errorOf([&] { saveFile(path, "x"); });
            QCOMPARE(error.number, int(BadFileName));
            QVERIFY2(error.description.contains('\'' + path + "': it names a drive or a network"),
                     error.what());
            QCOMPARE(errorOf([&] { readFile(path); }).number, int(BadFileName));
            QVERIFY(!fileExists(path));
        }
        QCOMPARE(sandbox->names(), QStringList());
    }
#endif

#ifdef Q_OS_LINUX

    void refusedAccess()
    {
        const QString path = sandbox->path("locked/f.txt");
        sandbox->write("locked/f.txt", "old");
        QFile::setPermissions(path, QFile::Permissions());
        QFile::setPermissions(sandbox->path("locked"), QFile::ReadOwner | QFile::ExeOwner);
        for (const int error : {errorInProcess(dropPrivileges, [&] { saveFile(path, "new"); }),
                                errorInProcess(dropPrivileges, [&] { readFile(path); })})
            QCOMPARE(error, int(PermissionDenied));
        QFile::setPermissions(sandbox->path("locked"), QFile::Permissions(0x7000));
    }

    void fullDiskKeepsTheOldFile()
    {
        const QByteArray content(10'000, 'n');
        const auto save = [&] { sandbox->write("f.txt", content); };
        sandbox->write("f.txt", "old");
        for (const rlim_t room : {0, 1, 4095, 4096, 9'999}) {
            QCOMPARE(errorWithRoomFor(room, save).number, int(room == 0 ? DeviceIO : DiskFull));
            QCOMPARE(sandbox->read("f.txt"), "old");
            QCOMPARE(sandbox->names().size(), 1);
        }
        QCOMPARE(errorWithRoomFor(10'000, save).number, 0);
        QCOMPARE(sandbox->read("f.txt"), content);
    }

    void keepsPermissionsButThoseOfOthersToWrite()
    {
        const QString path = sandbox->path("f.txt");
        const mode_t before = ::umask(0);
        saveFile(path, "new");
        ::umask(before);
        QCOMPARE(modeOf(path), "644");
        for (const auto &[old, kept] : {std::pair(0600, "600"), {0666, "644"}, {0770, "750"}}) {
            ::chmod(QFile::encodeName(path).constData(), static_cast<mode_t>(old));
            saveFile(path, "new");
            QCOMPARE(modeOf(path), kept);
        }
        savePrivateFile(path, "secret");
        QCOMPARE(modeOf(path), "600");
        QVERIFY(QFile::link("/etc/passwd", sandbox->path("link")));
        saveFile(sandbox->path("link"), "new"); // takes the link's place
        QCOMPARE(modeOf(sandbox->path("link")), QString::number(0644 & ~before, 8));
    }

    void nothingIsReplacedBeforeItIsSynced()
    {
        sandbox->write("f.txt", "old");
        const QString path = sandbox->path("f.txt");
        QCOMPARE(errorInProcess(breakSync, [&] { saveFile(path, "new"); }), int(DeviceIO));
        QCOMPARE(sandbox->read("f.txt"), "old");
        QCOMPARE(sandbox->names(), QStringList("f.txt"));
    }

    void neverWaitsForWhatIsNoFile()
    {
        const QString pipe = sandbox->path("pipe");
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString &path : {pipe, QString("/dev/zero")}) {
            for (const Error &error :
                 {errorOf([&] { readFile(path); }), errorOf([&] { saveFile(path, "x"); }),
                  errorOf([&] { copyFile(path, sandbox->path("copy")); })})
                QVERIFY2(error.description.contains(path + "': it is not a regular file"),
                         error.what());
        }
        QString message;
        QVERIFY(EnsureFolder(pipe + "/sub", message) != 0);
        QCOMPARE(sandbox->names(), QStringList()); // which do not count pipes
        QVERIFY(QFileInfo::exists(pipe));
    }

    void removesWhatKilledProcessesLeft()
    {
        const auto make = [this](const QString &name, qint64 age) {
            QFile file(sandbox->path(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-age),
                                     QFile::FileModificationTime));
        };
        const QString own = QString("own.%1-3.tmp").arg(platform::processId());
        const QStringList stay = {"notes.tmp", "open.1-0.tmp", "x.5-6.tmp.txt", "young.7-8.tmp"};
        for (const QString &name : stay + QStringList{"page.HTM.4000000-12.tmp", own})
            make(name, name.startsWith("young") ? 3000 : 4000);
        QFile open(sandbox->path("open.1-0.tmp"));
        QVERIFY(open.open(QIODevice::ReadOnly));
        sandbox->write("f.txt", "x");
        QCOMPARE(sandbox->names().join(' '), "f.txt " + stay.join(' '));
        make(own, 4000);
        sandbox->write("f.txt", "x"); // looked at once
        QVERIFY(sandbox->names().contains(own));
    }
#endif

    void filesOfAStoppedProcessAreNoHindrance()
    {
        const QString path = sandbox->path("f.txt");
        for (int i = 0; i < 200; ++i) {
            QFile stale(QString("%1.%2-%3.tmp").arg(path).arg(platform::processId()).arg(i));
            QVERIFY(stale.open(QIODevice::WriteOnly));
        }
        saveFile(path, "new");
        QCOMPARE(readFile(path), "new");
    }

    void failures()
    {
        sandbox->write("plain", "0123456789");
        sandbox->write("folder/x", "x");
        const auto saveFailure = [this](const QString &target) {
            const QString path = sandbox->path(target);
            const Error error = errorOf([&] { saveFile(path, "new"); });
            return error.description.contains(path) ? error.number : -1;
        };
        QCOMPARE(saveFailure("none/f.txt"), int(PathNotFound));
        QCOMPARE(saveFailure("plain/f.txt"), int(PathNotFound));
        QCOMPARE(saveFailure("folder"), int(PermissionDenied));
        QCOMPARE(saveFailure(QString(300, u'n')), int(DeviceIO));
        QCOMPARE(sandbox->names().join(u' '), "folder plain");
        const QString plain = sandbox->path("plain");
        QCOMPARE(readFile(plain, 10).size(), 10);
        QCOMPARE(errorOf([&] { readFile(plain, 9); }).number, int(InvalidFileFormat));
        QCOMPARE(errorOf([&] { readFile(plain + u'x'); }).number, int(FileNotFound));
        QCOMPARE(errorOf([&] { readFile(sandbox->path()); }).number, int(DeviceIO));
    }

    void decodes()
    {
        QCOMPARE(decodeText("\xC3\xA4\xE2\x82\xAC"), "ä€");
        QCOMPARE(decodeText("\xEF\xBB\xBF\xC3\xA4"), "ä");
        QCOMPARE(decodeText("\x80 \xE4\xF6\xFC \x93x\x94 \x9F"), "€ äöü “x” Ÿ");
        QCOMPARE(decodeText("caf\xC3"), "cafÃ");     // cut UTF-8
        QCOMPARE(decodeText("\xC1\x81"), "Á\u0081"); // overlong UTF-8
        QCOMPARE(decodeText(QByteArray("a\0b", 3)), QString(QLatin1String("a\0b", 3)));
    }

    void copies()
    {
        sandbox->write("a", "A");
        sandbox->write("b", "B");
        const QString b = sandbox->path("b");
        CopyFileQuiet(sandbox->path("none"), b);
        QCOMPARE(readFile(b), "B");
        CopyFileQuiet(sandbox->path("a"), sandbox->path("none/c"));
        CopyFileQuiet(sandbox->path("a"), b);
        QCOMPARE(readFile(b), "A");
        QCOMPARE(sandbox->names().join(u','), "a,b");
#ifndef Q_OS_WIN
        copyFile(sandbox->path("b"), sandbox->path("A")); // pages link to it by this name
        QVERIFY(sandbox->names().contains("A"));
#endif
        QCOMPARE(errorOf([&] { copyFile(sandbox->path("none"), b); }).number, int(FileNotFound));
    }
};

QTEST_GUILESS_MAIN(TestFiles)
#include "tst_Files.moc"
