#include "../support/Sandbox.h"
#include "core/Error.h"
#include "core/Paths.h"

#include <QTest>

class TestPaths : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> sandbox;

private Q_SLOTS:
    void init() { sandbox = std::make_unique<Sandbox>(); }
    void cleanup()
    {
        qunsetenv("VANTREL_GRAPHER_HOME");
        sandbox.reset();
    }

    void endsFolders()
    {
        const QString end(pathSeparator);
        const QString prog = pathSeparator + QLatin1String("prog");
        setProgramFolder(QStringLiteral("/prog"));
        QCOMPARE(NormalizeFolder(QStringLiteral("  ")), prog + end);
        QCOMPARE(NormalizeFolder(QStringLiteral(" /a b ")), QLatin1String("/a b") + end);
        QCOMPARE(NormalizeFolder(QStringLiteral("C:\\a\\")), u"C:\\a\\");
        QCOMPARE(NormalizeFolder(QStringLiteral("/a/")), u"/a/");
        QCOMPARE(WithBackslash(QStringLiteral("  ")), u"");
        QCOMPARE(WithBackslash(QStringLiteral(" /a")), QLatin1String("/a") + end);
        setProgramFolder(QStringLiteral("/prog/\\"));
        QCOMPARE(programFolder(), prog);
    }

#ifndef Q_OS_WIN
    void splitsPaths_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("root");
        QTest::addColumn<QString>("parts");
        const auto row = [](const char *path, const char *root, const char *parts) {
            QTest::newRow(path) << QString::fromLatin1(path) << QString::fromLatin1(root)
                                << QString::fromLatin1(parts);
        };
        row("/a/b", "", "a|b");
        row("\\a\\b\\", "", "a|b|");
        row("/a//b", "", "a||b");
        row("a\\b", "/prog", "a|b");
        row("C:\\a\\b", "/prog", "C:|a|b");
    }
    void splitsPaths()
    {
        QFETCH(QString, path);
        setProgramFolder(QStringLiteral("/prog"));
        const FolderParts split = folderParts(path);
        QTEST(split.root, "root");
        QTEST(split.parts.join(u'|'), "parts");
    }
#endif

    void createsFolders_data()
    {
        QTest::addColumn<QString>("path"); // "@" stands for the sandbox
        QTest::addColumn<QString>("created");
        QTest::newRow("three levels") << QStringLiteral("@/A/B/C") << QStringLiteral("A/B/C");
        QTest::newRow("backslashes") << QStringLiteral("@\\A\\B\\C") << QStringLiteral("A/B/C");
        QTest::newRow("end") << QStringLiteral("@/A/B/") << QStringLiteral("A/B");
        QTest::newRow("empty parts") << QStringLiteral("@//A///B") << QStringLiteral("A/B");
        QTest::newRow("relative") << QStringLiteral("rel/sub") << QStringLiteral("rel/sub");
        QTest::newRow("below other case")
            << QStringLiteral("@/HERE/New") << QStringLiteral("Here/New");
        QTest::newRow("non-ASCII") << QStringLiteral("@/ä ö") << QStringLiteral("ä ö");
    }
    void createsFolders()
    {
        QFETCH(QString, path);
        QFETCH(QString, created);
        sandbox->write(QStringLiteral("Here/x"), "x");
        path.replace(u'@', sandbox->path());
        QString message;
        QCOMPARE(EnsureFolder(path, message), 0);
        QVERIFY(QDir(sandbox->path(created)).exists());
        QVERIFY2(message.startsWith("Created '" + sandbox->path()), qPrintable(message));
        QVERIFY(!folderExists(sandbox->path(QStringLiteral("HERE/HERE"))));
    }

    void namesTheFolderThatItCreated()
    {
        const QString path = sandbox->path(QStringLiteral("A")) + pathSeparator + u'B';
        QString message;
        QCOMPARE(EnsureFolder(path, message), 0);
        QCOMPARE(message, QStringLiteral("Created '%1'").arg(path));
    }

    void trustsTheLastSuccessAlone()
    {
        const QString a = sandbox->path(QStringLiteral("a"));
        const QString b = sandbox->path(QStringLiteral("b"));
        QString message;
        QCOMPARE(EnsureFolder(a, message), 0);
        QVERIFY(QDir().rmdir(a));
        QCOMPARE(EnsureFolder(a, message), 0);
        QVERIFY(!folderExists(a)); // not looked at again
        QCOMPARE(EnsureFolder(b, message), 0);
        QCOMPARE(EnsureFolder(a, message), 0);
        QVERIFY(folderExists(a));
        QCOMPARE(EnsureFolder(b, message), 0);
        QCOMPARE(message, u"Path exists.");

        sandbox->write(QStringLiteral("file"), "x");
        QVERIFY(QDir().rmdir(b));
        QVERIFY(EnsureFolder(sandbox->path(QStringLiteral("file/x")), message) != 0);
        QCOMPARE(EnsureFolder(b, message), 0);
        QVERIFY(folderExists(b));
    }

    void reportsWhatCannotBeCreated()
    {
        sandbox->write(QStringLiteral("file"), "x");
        QString message;
        QCOMPARE(EnsureFolder(sandbox->path(QStringLiteral("file/sub")), message),
                 int(PermissionDenied));
        QVERIFY2(message.contains(sandbox->path(QStringLiteral("file"))), qPrintable(message));
        QCOMPARE(sandbox->names(), QStringList(QStringLiteral("file")));
        QCOMPARE(EnsureFolder(sandbox->path(QString(300, u'n')), message), int(PathNotFound));
    }

    void fillsAHomeOnce()
    {
        const QString factory = QStringLiteral("VTRGConfigV6.FAC");
        const QString home = sandbox->path(QStringLiteral("new/home"));
        locateProgramFolder(home);
        QCOMPARE(programFolder(), QDir::toNativeSeparators(home));
        const QByteArray shipped = readFile(home + u'/' + factory);
        QVERIFY(shipped.contains("<VTRGRAPHER"));
        QVERIFY(sandbox->names(QStringLiteral("new/home")).size() > 1);

        // What stands there is the user's.
        const QStringList names = sandbox->names(QStringLiteral("new/home"));
        QFile::remove(home + u'/' + factory);
        for (const QString &name : names) {
            if (name.endsWith(u".FAC") && name != factory)
                saveFile(home + u'/' + name, "mine");
        }
        locateProgramFolder(home);
        QCOMPARE(readFile(home + u'/' + factory), shipped);
        for (const QString &name : names) {
            if (name.endsWith(u".FAC") && name != factory)
                QCOMPARE(readFile(home + u'/' + name), "mine");
        }
    }

    void choosesTheHome()
    {
        sandbox->write(QStringLiteral("one/VTRGConfigV6.FAC"), "x");
        sandbox->write(QStringLiteral("two/VTRGConfigV6.FAC"), "x");
        qputenv("VANTREL_GRAPHER_HOME", sandbox->path(QStringLiteral("ONE")).toUtf8());
        locateProgramFolder(QString());
#ifdef Q_OS_WIN // ignores case by itself
        QCOMPARE(programFolder(), sandbox->path(QStringLiteral("ONE")));
#else
        QCOMPARE(programFolder(), sandbox->path(QStringLiteral("one")));
#endif
        QCOMPARE(sandbox->names(QStringLiteral("one")).size(), 1); // complete as it is
        locateProgramFolder(sandbox->path(QStringLiteral("two")) + u'/');
        QCOMPARE(programFolder(), sandbox->path(QStringLiteral("two")));
        sandbox->write(QStringLiteral("file"), "x");
        QVERIFY_EXCEPTION_THROWN(locateProgramFolder(sandbox->path(QStringLiteral("file/x"))),
                                 Error);
    }
};

QTEST_GUILESS_MAIN(TestPaths)
#include "tst_paths.moc"
