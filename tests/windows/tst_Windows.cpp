#include "base/Clock.h"
#include "base/FileSystem.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/ProgramState.h"
#include "base/WindowsApi_windows.h"
#include "platform/InstanceLock.h"
#include "platform/Processes.h"
#include "platform/ProductSettings.h"
#include "platform/TaskScheduler.h"
#include "support/Errors.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <shellapi.h>
#include <thread>

using namespace platform;

namespace {
const QString taskName = QStringLiteral("VantrelTestTask");

/// A file that another program holds open in a way that lets nobody replace it.
HANDLE holdOpen(const QString &path)
{
    return ::CreateFileW(wide(longPath(path)), GENERIC_READ, FILE_SHARE_READ, nullptr,
                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

void writeRegistry(HKEY hive, REGSAM view, const QString &key, const QString &value, DWORD kind)
{
    HKEY opened = nullptr;
    QCOMPARE(::RegCreateKeyExW(hive, wide(key), 0, nullptr, 0, KEY_SET_VALUE | view, nullptr,
                               &opened, nullptr),
             ERROR_SUCCESS);
    QCOMPARE(::RegSetValueExW(opened, L"AppPath", 0, kind,
                              reinterpret_cast<const BYTE *>(wide(value)),
                              static_cast<DWORD>((value.size() + 1) * 2)),
             ERROR_SUCCESS);
    ::RegCloseKey(opened);
}

} // namespace

/// The services of Windows behind the platform interfaces.
class TestWindows : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

private Q_SLOTS:
    void splitsPaths()
    {
        const ProgramState state;
        setProgramFolder("C:\\prog");
        const auto split = [](const QString &path) {
            const FolderParts found = folderParts(path);
            return QString(found.root + " > " + found.parts.join('|'));
        };
        QCOMPARE(split("C:\\a\\b"), "C: > a|b");
        QCOMPARE(split("C:\\a"), "C: > a");
        QCOMPARE(split("c:/a/b/c"), "c: > a|b|c");
        QCOMPARE(split("\\\\server\\share\\a\\b"), "\\\\server\\share > a|b");
        QCOMPARE(split("\\\\server\\share"), "\\\\server\\share > ");
        QCOMPARE(split("a\\b"), "C:\\prog > a|b");
    }

    void findsFaultsInNames()
    {
        for (const char *good :
             {"C:\\a\\b.htm", "C:/a/b", "..\\a", ".\\a.b.c", "\\\\server\\share\\a", "CONTENT.HTM",
              "COM10", "COM", "NULL", "a con", "", "\\\\?\\C:\\a", "ä ö.png"})
            QVERIFY2(nameFault(good).isEmpty(), good);
        for (const char *bad : {"CON", "C:\\a\\con.htm", "nul", "aux.a.b", "Com1", "LPT9.txt",
                                "a\\PRN\\b", "CON .txt", "a?b", "C:\\a*b", "ab:c", "a|b", "a<b",
                                "a\"b", "a.\\b", "a ", "C:\\a.", "a\tb"})
            QVERIFY2(!nameFault(bad).isEmpty(), bad);
        const Error error = errorOf([&] { saveFile(m_folder.filePath("aux.htm"), "x"); });
        QCOMPARE(error.number, int(BadFileName));
        QVERIFY(error.description.contains("'aux.htm' is the name of a device"));
        QString message;
        QCOMPARE(EnsureFolder(m_folder.filePath("NUL/a"), message), int(BadFileName));
    }

    void writesBelowLongPaths()
    {
        QString folder = QDir::toNativeSeparators(m_folder.path());
        for (int i = 0; i < 10; ++i)
            folder += "\\" + QString(40, QChar('a' + i));
        QVERIFY(folder.size() > 400);
        QString message;
        QCOMPARE(EnsureFolder(folder, message), 0);
        QCOMPARE(message, "Created '" + folder + "'");
        for (const char *text : {"first", "second"}) {
            saveFile(folder + "\\page.htm", text);
            QCOMPARE(readFile(folder + "\\page.htm"), QByteArray(text));
        }
        QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList("page.htm"));
    }

    void waitsForWhoHoldsAFile()
    {
        const QString path = m_folder.filePath("held.htm");
        saveFile(path, "old");
        HANDLE holder = holdOpen(path);
        QVERIFY(holder != INVALID_HANDLE_VALUE);
        QVERIFY_EXCEPTION_THROWN(saveFile(path, "new"), Error); // kept too long
        QCOMPARE(readFile(path), QByteArray("old"));
        QCOMPARE(QDir(m_folder.path()).entryList({"*.tmp"}), QStringList());
        std::thread scanner([holder] {
            ::Sleep(300);
            ::CloseHandle(holder);
        });
        saveFile(path, "new");
        scanner.join();
        QCOMPARE(readFile(path), QByteArray("new"));
        QVERIFY(::SetFileAttributesW(wide(longPath(path)), FILE_ATTRIBUTE_READONLY));
        QVERIFY_EXCEPTION_THROWN(saveFile(path, "newer"), Error);
        QVERIFY(::SetFileAttributesW(wide(longPath(path)), FILE_ATTRIBUTE_NORMAL));
        QCOMPARE(readFile(path), QByteArray("new"));
    }

    void isFreeOnceItsHolderIsKilled()
    {
        const QString path = m_folder.filePath("other.lock");
        QProcess holder;
        holder.start(QCoreApplication::applicationFilePath(), {"--hold", path});
        QVERIFY(holder.waitForReadyRead());
        InstanceLock lock(path);
        QVERIFY(!lock.tryLock());
        holder.kill();
        QVERIFY(holder.waitForFinished());
        QTRY_VERIFY(lock.tryLock());
    }

    void countsProcesses()
    {
        QCOMPARE(ownImageName(), "tst_Windows");
        const auto any = [](const QStringList &) { return true; };
        QCOMPARE(countOtherProcesses("tst_Windows", any), 0);
        QCOMPARE(countEarlierProcesses("tst_Windows", any), 0);
        QVERIFY(ownStart() <= currentInstant() && ownStart() > currentInstant() - 600'000);

        QProcess later;
        later.start(QCoreApplication::applicationFilePath(),
                    {"--hold", m_folder.filePath("a.lock")});
        QVERIFY(later.waitForReadyRead());
        QCOMPARE(countOtherProcesses("TST_Windows", any), 1);
        QCOMPARE(countOtherProcesses("tst_window", any), 0);
        QCOMPARE(countOtherProcesses(
                     "tst_Windows",
                     [](const QStringList &arguments) { return !arguments.contains("--hold"); }),
                 0);
        QCOMPARE(countEarlierProcesses("tst_Windows", any), 0);
        later.kill();
        QVERIFY(later.waitForFinished());
    }

    void readsTheRegistry()
    {
        const QString product = "VantrelTest";
        const QString key = "SOFTWARE\\Orlek INC\\" + product;
        const auto remove = [&] {
            for (const HKEY hive : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
                for (const REGSAM view : {KEY_WOW64_64KEY, KEY_WOW64_32KEY})
                    ::RegDeleteKeyExW(hive, wide(key), view, 0);
            }
        };
        remove();
        QCOMPARE(productSetting(product, "AppPath"), QString());
        writeRegistry(HKEY_CURRENT_USER, KEY_WOW64_64KEY, key, "C:\\of the user", REG_SZ);
        QCOMPARE(productSetting(product, "AppPath"), "C:\\of the user");
        writeRegistry(HKEY_LOCAL_MACHINE, KEY_WOW64_32KEY, key, "%SystemRoot%\\a", REG_EXPAND_SZ);
        QCOMPARE(productSetting(product, "AppPath"), qEnvironmentVariable("SystemRoot") + "\\a");
        writeRegistry(HKEY_LOCAL_MACHINE, KEY_WOW64_64KEY, key, "D:\\Vantrel", REG_SZ);
        QCOMPARE(productSetting(product, "AppPath"), "D:\\Vantrel");
        QCOMPARE(productSetting(product, "Other"), QString());
        remove();
    }

    void quotesArguments()
    {
        const QStringList arguments{"/AUTO", "--home",   "C:\\a\\", "C:\\a b\\",
                                    "a\"b",  "a\\\"b c", "",        "d"};
        int count = 0;
        wchar_t **split = ::CommandLineToArgvW(wide("program " + commandLine(arguments)), &count);
        QStringList again;
        for (int i = 1; i < count; ++i)
            again.append(QString::fromWCharArray(split[i]));
        ::LocalFree(split);
        QCOMPARE(again, arguments);
    }

    void registersATask()
    {
        const auto scheduler = systemTaskScheduler();
        ScheduledTask task = scheduler->createTask(taskName);
        task.application = "C:\\Program Files\\Vantrel\\VantrelGrapher.exe";
        task.parameters = QStringList{"/AUTO", "--home", "C:\\Graphs and more"};
        task.workingDirectory = "C:\\windows";
        task.comment = "Draws ä graph.";
        const QDateTime midnight(QDate(2024, 4, 1), QTime(0, 0), Qt::UTC);
        for (int hour = 0; hour < 24; ++hour)
            task.triggers.push_back({1, midnight.addSecs(hour * 3600 + 1)});
        QCOMPARE(failureOf([&] { scheduler->saveTask(task); }), "");

        QVERIFY(scheduler->taskList().split('\n').contains(taskName));
        ScheduledTask read = systemTaskScheduler()->openTask(taskName);
        QCOMPARE(read.commandLine,
                 "\"C:\\Program Files\\Vantrel\\VantrelGrapher.exe\" /AUTO --home "
                 "\"C:\\Graphs and more\"");
        QCOMPARE(read.workingDirectory, task.workingDirectory);
        QCOMPARE(read.comment, task.comment);
        QCOMPARE(read.maximumRunMinutes, 60);
        QCOMPARE(read.triggers.size(), std::size_t(24));
        for (int hour = 0; hour < 24; ++hour) // the service knows whole minutes
            QCOMPARE(read.triggers[std::size_t(hour)].begin, midnight.addSecs(hour * 3600));
        QVERIFY(!scheduler->isRunning(taskName));

        // A task of the same name is replaced.
        task.triggers = {{2, midnight}};
        QCOMPARE(failureOf([&] { scheduler->saveTask(task); }), "");
        read = scheduler->openTask(taskName);
        QCOMPARE(read.triggers.size(), std::size_t(1));
        QCOMPARE(read.triggers[0].interval, 2);
        scheduler->deleteTask(taskName);
        QVERIFY(!scheduler->taskList().split('\n').contains(taskName));
    }

    void holdsTheTextsOfTheEventLog()
    {
        const QString program = QCoreApplication::applicationDirPath() + "/VantrelGrapher.exe";
        const HMODULE module = ::LoadLibraryExW(wide(QDir::toNativeSeparators(program)), nullptr,
                                                LOAD_LIBRARY_AS_DATAFILE);
        QVERIFY(module);
        const wchar_t message[] = L"Vantrel Automated Graphing Report started...";
        const wchar_t *texts[] = {message};
        wchar_t buffer[200];
        const DWORD size = ::FormatMessageW(
            FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, module, 6, 0, buffer, 200,
            reinterpret_cast<va_list *>(const_cast<wchar_t **>(texts)));
        ::FreeLibrary(module);
        QCOMPARE(QString::fromWCharArray(buffer, int(size)).trimmed(),
                 QString::fromWCharArray(message));
    }
};

int main(int argc, char *argv[])
{
    const ProgramState state;
    QCoreApplication application(argc, argv);
    // As a child of the tests: holds a lock until it is killed.
    if (const QStringList arguments = application.arguments();
        arguments.size() == 3 && arguments[1] == "--hold") {
        InstanceLock lock(arguments[2]);
        lock.tryLock();
        std::puts("held");
        std::fflush(stdout);
        ::Sleep(600'000);
        return 0;
    }
    TestWindows test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Windows.moc"
