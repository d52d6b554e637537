#include "base/Paths.h"
#include "support/Errors.h"
#include "support/Sandbox.h"

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
        const QString prog = pathSeparator + QString("prog");
        setProgramFolder("/prog");
        QCOMPARE(NormalizeFolder("  "), prog + pathSeparator);
        QCOMPARE(NormalizeFolder(" /a b "), QString("/a b") + pathSeparator);
        QCOMPARE(NormalizeFolder("/a\\b/c"), QString("/a/b/c/").replace('/', pathSeparator));
        QCOMPARE(WithBackslash("  "), "");
        QCOMPARE(WithBackslash(" /a"), QString("/a") + pathSeparator);
        setProgramFolder("/prog/\\");
        QCOMPARE(programFolder(), prog);
    }
    void createsFolders()
    {
        sandbox->write("Here/x", "x");
        for (const auto &[path, created] : {std::pair("@/A/B/C", "A/B/C"),
                                            {"@\\D\\E\\F", "D/E/F"},
                                            {"@//G///H/", "G/H"},
                                            {"rel/sub", "rel/sub"},
                                            {"@/HERE/ä ö", "Here/ä ö"}}) {
            QString message;
            QCOMPARE(EnsureFolder(QString(path).replace(u'@', sandbox->path()), message), 0);
            QVERIFY(QDir(sandbox->path(created)).exists());
            const QString expected = "Created '" + sandbox->path(created) + "'";
            QVERIFY2(message.compare(expected, Qt::CaseInsensitive) == 0, qPrintable(message));
        }
        QVERIFY(!folderExists(sandbox->path("HERE/HERE")));
    }

    void reportsWhatCannotBeCreated()
    {
        sandbox->write("file", "x");
        QString message;
        QCOMPARE(EnsureFolder(sandbox->path("file/sub"), message), int(PermissionDenied));
        QVERIFY2(message.contains(sandbox->path("file")), qPrintable(message));
        QCOMPARE(sandbox->names(), QStringList("file"));
        QCOMPARE(EnsureFolder(sandbox->path(QString(300, u'n')), message), int(PathNotFound));
#ifndef Q_OS_WIN // tests/windows has the drives and network shares
        QCOMPARE(EnsureFolder("C:\\a", message), int(BadFileName));
        QVERIFY2(message.startsWith("Cannot create folder 'C:\\a': it names a drive"),
                 qPrintable(message));
#endif
    }

    void fillsAHomeOnce()
    {
        const QString factory = "new/home/VTRGConfigV6.FAC";
        const QString other = "new/home/VantrelV6.Config.FAC";
        locateProgramFolder(sandbox->path("new/home"));
        QCOMPARE(programFolder(), sandbox->path("new/home"));
        const QByteArray shipped = sandbox->read(factory);
        QVERIFY(shipped.contains("<VTRGRAPHER"));
        QVERIFY(fileExists(sandbox->path(other)));

        // What stands there is the user's.
        QFile::remove(sandbox->path(factory));
        sandbox->write(other, "mine");
        locateProgramFolder(sandbox->path("new/home"));
        QCOMPARE(sandbox->read(factory), shipped);
        QCOMPARE(sandbox->read(other), "mine");
    }

    void choosesTheHome()
    {
        sandbox->write("one/VTRGConfigV6.FAC", "x");
        sandbox->write("two/VTRGConfigV6.FAC", "x");
        qputenv("VANTREL_GRAPHER_HOME", sandbox->path("ONE").toUtf8());
        locateProgramFolder("");
        QCOMPARE(programFolder().toLower(), sandbox->path("one").toLower());
        QCOMPARE(sandbox->names("one").size(), 1); // complete as it is
        locateProgramFolder(sandbox->path("two") + u'/');
        QCOMPARE(programFolder(), sandbox->path("two"));
        sandbox->write("file", "x");
        QCOMPARE(errorOf([&] { locateProgramFolder(sandbox->path("file/x")); }).number,
                 int(PathNotFound));
    }
};

QTEST_GUILESS_MAIN(TestPaths)
#include "tst_Paths.moc"
