#include "../support/Sandbox.h"
#include "core/Error.h"
#include "core/Files.h"
#include "core/platform/FileSystem.h"

#include <QTest>

#include <functional>

#ifdef Q_OS_LINUX
#include <csignal>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

#ifdef Q_OS_LINUX
/// No file may grow beyond so many bytes: writing fails there, as on a full disk.
class FullAfter
{
public:
    explicit FullAfter(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        m_signal = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit less{bytes, m_before.rlim_max};
        ok = ::setrlimit(RLIMIT_FSIZE, &less) == 0;
    }
    ~FullAfter()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signal);
    }
    FullAfter(const FullAfter &) = delete;
    FullAfter &operator=(const FullAfter &) = delete;

    bool ok = false;

private:
    rlimit m_before{};
    void (*m_signal)(int) = nullptr;
};
#endif

/// The number of the error that `action` throws; 0 for none.
int errorOf(const std::function<void()> &action, QString *description = nullptr)
{
    try {
        action();
        return 0;
    } catch (const Error &error) {
        if (description)
            *description = error.description;
        return error.number;
    }
}

#ifdef Q_OS_LINUX
/// The same in a process that has no rights beyond those that permissions give, even where the
/// tests run as root; -1 where that could not be arranged.
int errorWithoutPrivileges(const std::function<void()> &action)
{
    const pid_t child = ::fork();
    if (child == 0) {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        const __user_cap_data_struct none[2] = {};
        ::_exit(::syscall(SYS_capset, &header, none) == 0 ? errorOf(action) : 255);
    }
    int status = 0;
    const bool ended = ::waitpid(child, &status, 0) == child && WIFEXITED(status);
    return ended && WEXITSTATUS(status) != 255 ? WEXITSTATUS(status) : -1;
}
#endif

} // namespace

class TestFiles : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> sandbox;

private Q_SLOTS:
    void init() { sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { sandbox.reset(); }

#ifndef Q_OS_WIN
    void findsPaths_data()
    {
        QTest::addColumn<QString>("configured"); // below the sandbox
        QTest::addColumn<QString>("found");
        const auto row = [](const char *name, const char *configured, const char *found) {
            QTest::newRow(name) << QString::fromLatin1(configured) << QString::fromLatin1(found);
        };
        row("exact", "/Data/Sub/File.TXT", "/Data/Sub/File.TXT");
        row("backslashes", "\\Data\\Sub\\File.TXT", "/Data/Sub/File.TXT");
        row("other case", "/DATA/sub/FILE.txt", "/Data/Sub/File.TXT");
        row("mixed", "\\data/SUB\\file.txt", "/Data/Sub/File.TXT");
        row("missing file", "/DATA/SUB/New.txt", "/Data/Sub/New.txt");
        row("missing folder", "/DATA/New/SUB/x", "/Data/New/SUB/x");
        row("missing at once", "/Other/Data", "/Other/Data");
        row("folder", "/DATA/SUB/", "/Data/Sub/");
        row("missing folder with its end", "\\DATA\\NEW\\", "/Data/NEW/");
        row("double separators", "/DATA//SUB///file.TXT", "/Data/Sub/File.TXT");
        row("dots", "/DATA/./SUB/../SUB/file.TXT", "/Data/./Sub/../Sub/File.TXT");
        row("exact before other case", "/both/new", "/both/new");
        row("exact before other case, upper", "/BOTH/new", "/BOTH/new");
        row("first of several", "/Both/a", "/BOTH/a");
        row("a file is no folder", "/data/sub/FILE.txt/x", "/Data/Sub/File.TXT/x");
    }
    void findsPaths()
    {
        QFETCH(QString, configured);
        QFETCH(QString, found);
        sandbox->write(QStringLiteral("Data/Sub/File.TXT"), "x");
        sandbox->write(QStringLiteral("both/a"), "x");
        sandbox->write(QStringLiteral("BOTH/b"), "x");
        QCOMPARE(nativePath(sandbox->path() + configured), sandbox->path() + found);
    }

    void findsRelativePaths()
    {
        sandbox->write(QStringLiteral("Data/File.TXT"), "x");
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(sandbox->path()));
        const QStringList found = {nativePath(QStringLiteral(".\\data\\FILE.TXT")),
                                   nativePath(QStringLiteral("DATA\\file.txt")),
                                   nativePath(QStringLiteral("data")), nativePath(QString())};
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(found.join(u'|'), u"./Data/File.TXT|Data/File.TXT|Data|");
    }
#endif

    void readsWhatWasSaved_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("text\r\n");
        QTest::newRow("zeros") << QByteArray(100'000, '\0');
    }
    void readsWhatWasSaved()
    {
        QFETCH(QByteArray, content);
        for (const char *old : {"", "an old and longer content"}) {
            const QString path = sandbox->path(QStringLiteral("f.txt"));
            saveFile(path, old);
            saveFile(path, content);
            QCOMPARE(readFile(path), content);
            QCOMPARE(sandbox->names(), QStringList(QStringLiteral("f.txt")));
        }
    }

    void savingOverOtherCaseReplaces()
    {
        sandbox->write(QStringLiteral("File.TXT"), "old");
        saveFile(sandbox->path(QStringLiteral("FILE.txt")), "new");
        QCOMPARE(readFile(sandbox->path(QStringLiteral("file.TXT"))), "new");
        QCOMPARE(sandbox->names().size(), 1);
    }

    void saveFailures_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<int>("number");
        QTest::newRow("missing folder") << QStringLiteral("none/f.txt") << int(PathNotFound);
        QTest::newRow("below a file") << QStringLiteral("plain/f.txt") << int(PathNotFound);
        QTest::newRow("folder") << QStringLiteral("folder") << int(PermissionDenied);
        QTest::newRow("long name") << QString(300, u'n') << int(DeviceIO);
    }
    void saveFailures()
    {
        QFETCH(QString, target);
        sandbox->write(QStringLiteral("plain"), "x");
        sandbox->write(QStringLiteral("folder/x"), "x");
        const QStringList before = sandbox->names();
        QString description;
        const QString path = sandbox->path(target);
        QTEST(errorOf([&] { saveFile(path, "new"); }, &description), "number");
        QVERIFY2(description.contains(path), qPrintable(description));
        QCOMPARE(sandbox->names(), before);
        QCOMPARE(sandbox->names(QStringLiteral("folder")), QStringList(QStringLiteral("x")));
    }

#ifdef Q_OS_LINUX
    void refusedAccess()
    {
        sandbox->write(QStringLiteral("locked/f.txt"), "old");
        const QString folder = sandbox->path(QStringLiteral("locked"));
        const QString path = folder + QLatin1String("/f.txt");
        QFile::setPermissions(path, QFile::Permissions());
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
        const int writeError = errorWithoutPrivileges([&] { saveFile(path, "new"); });
        const int readError = errorWithoutPrivileges([&] { readFile(path); });
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner | QFile::WriteOwner);
        QFile::setPermissions(path, QFile::ReadOwner);
        QCOMPARE(writeError, int(PermissionDenied));
        QCOMPARE(readError, int(PermissionDenied));
        QCOMPARE(sandbox->read(QStringLiteral("locked/f.txt")), "old");
        QCOMPARE(sandbox->names(QStringLiteral("locked")).size(), 1);
    }

    void fullDiskKeepsTheOldFile()
    {
        const QByteArray content(10'000, 'n');
        sandbox->write(QStringLiteral("f.txt"), "old");
        for (const rlim_t room : {0, 1, 4095, 4096, 9'999}) {
            int number = 0;
            {
                const FullAfter full(room);
                QVERIFY(full.ok);
                number = errorOf([&] { sandbox->write(QStringLiteral("f.txt"), content); });
            }
            QCOMPARE(number, int(room == 0 ? DeviceIO : DiskFull));
            QCOMPARE(sandbox->read(QStringLiteral("f.txt")), "old");
            QCOMPARE(sandbox->names().size(), 1);
        }
        const FullAfter enough(10'000);
        QVERIFY(enough.ok);
        sandbox->write(QStringLiteral("f.txt"), content);
        QCOMPARE(sandbox->read(QStringLiteral("f.txt")), content);
    }

    void savingKeepsPermissions()
    {
        sandbox->write(QStringLiteral("f.txt"), "old");
        const QString path = sandbox->path(QStringLiteral("f.txt"));
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
        const QFile::Permissions before = QFile::permissions(path);
        saveFile(path, "new");
        QCOMPARE(QFile::permissions(path), before);
    }
#endif

    void filesOfAStoppedProcessAreNoHindrance()
    {
        const QString path = sandbox->path(QStringLiteral("f.txt"));
        for (int i = 0; i < 200; ++i) {
            QFile stale(QStringLiteral("%1.%2-%3.tmp").arg(path).arg(platform::processId()).arg(i));
            QVERIFY(stale.open(QIODevice::WriteOnly));
        }
        saveFile(path, "new");
        QCOMPARE(readFile(path), "new");
    }

    void readFailures()
    {
        sandbox->write(QStringLiteral("ten"), "0123456789");
        const QString ten = sandbox->path(QStringLiteral("ten"));
        QCOMPARE(readFile(ten, 10).size(), 10);
        QCOMPARE(errorOf([&] { readFile(ten, 9); }), int(InvalidFileFormat));
        QCOMPARE(errorOf([&] { readFile(ten + u'x'); }), int(FileNotFound));
        QCOMPARE(errorOf([&] { readFile(sandbox->path()); }), int(DeviceIO));
    }

    void decodes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("ASCII") << QByteArray("abc") << QStringLiteral("abc");
        QTest::newRow("UTF-8") << QByteArray("\xC3\xA4\xE2\x82\xAC") << QStringLiteral("ä€");
        QTest::newRow("mark") << QByteArray("\xEF\xBB\xBF\xC3\xA4") << QStringLiteral("ä");
        QTest::newRow("mark alone") << QByteArray("\xEF\xBB\xBF") << QString();
        QTest::newRow("Windows-1252")
            << QByteArray("\x80 \xE4\xF6\xFC \x93x\x94 \x9F") << QStringLiteral("€ äöü “x” Ÿ");
        QTest::newRow("cut UTF-8") << QByteArray("caf\xC3") << QStringLiteral("cafÃ");
        QTest::newRow("overlong UTF-8") << QByteArray("\xC1\x81") << QStringLiteral("Á\u0081");
        QTest::newRow("beyond the BMP") << QByteArray("\xF0\x9F\x98\x80") << QStringLiteral("😀");
        QTest::newRow("zero") << QByteArray("a\0b", 3) << QString(QLatin1String("a\0b", 3));
    }
    void decodes()
    {
        QFETCH(QByteArray, bytes);
        QTEST(decodeText(bytes), "text");
    }

    void copies()
    {
        sandbox->write(QStringLiteral("a"), "A");
        sandbox->write(QStringLiteral("b"), "B");
        const QString a = sandbox->path(QStringLiteral("a"));
        const QString b = sandbox->path(QStringLiteral("b"));
        CopyFileQuiet(sandbox->path(QStringLiteral("none")), b);
        QCOMPARE(readFile(b), "B");
        CopyFileQuiet(a, sandbox->path(QStringLiteral("none/c")));
        CopyFileQuiet(a, b);
        QCOMPARE(readFile(b), "A");
        QCOMPARE(sandbox->names().join(u','), u"a,b");
        QCOMPARE(errorOf([&] { copyFile(sandbox->path(QStringLiteral("none")), b); }),
                 int(FileNotFound));
    }
};

QTEST_GUILESS_MAIN(TestFiles)
#include "tst_files.moc"
