#include "app/Options.h"
#include "core/Paths.h"
#include "core/StartUp.h"
#include "support/Rows.h"

#include <QDir>
#include <QRegularExpression>

class TestOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void separatesTheTwoSyntaxes_data()
    {
        const Rows<QStringList, QString, bool, QStringList> row("arguments", "systemText",
                                                                "unattended", "run");
        row("system's own", {"/auto", "/DBPATH", "=", "c:\\a b"}, "/auto /DBPATH = c:\\a b", true,
            {});
        row("--auto", {"--auto", "/DBPATH=X"}, "/AUTO /DBPATH=X", true, {});
        row("values are no options", {"--home", "--auto"}, "", false, {});
        row("--run", {"--run", "/A", "--run=b=c"}, "", true, {"/A", "b=c"});
    }
    void separatesTheTwoSyntaxes()
    {
        QFETCH(QStringList, arguments);
        const Options options = parseOptions(arguments);
        QCOMPARE(options.error, QString());
        QTEST(options.systemText, "systemText");
        QTEST(options.unattended(), "unattended");
        QTEST(options.run, "run");
    }

    void namesTheFoldersOfTheHourlyJob_data()
    {
        const Rows<QStringList, QByteArray, QStringList> row("arguments", "variable", "folders");
        const auto full = [](const char *folder) {
            return QDir::toNativeSeparators(QDir().absoluteFilePath(folder));
        };
        row("options", {"--home=a/", "--dbpath", "b"}, "c",
            {"--home", full("a"), "--dbpath", full("b")});
        row("variable", {"/AUTO"}, "c", {"--home", full("c")});
        row("system's own", {"/DBPATH", "=b", "/AUTO"}, "",
            {"--dbpath", programFolder() + pathSeparator + "B"});
        row("both", {"/DBPATH=x", "--dbpath=b"}, "", {"--dbpath", full("b")});
    }
    void namesTheFoldersOfTheHourlyJob()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, variable);
        qputenv(homeVariable, variable);
        QTEST(parseOptions(arguments).folderOptions(), "folders");
        qunsetenv(homeVariable);
    }

    /// What another process's arguments say of it.
    void tellsWhatMakesReports()
    {
        static const QRegularExpression option("(?<= )--[a-z]+");
        int looking = 0;
        for (auto found = option.globalMatch(usageText()); found.hasNext();) {
            const QString name = found.next().captured();
            const bool looks = parseOptions({name}).command != Command::None;
            QVERIFY2(makesReports({"--home", "x", name}) != looks, qPrintable(name));
            looking += looks ? 1 : 0;
        }
        QVERIFY(looking >= 8);
        QVERIFY(makesReports({}) && makesReports({"/AUTO"}));
    }

    void refusesWrongOnes()
    {
        const auto error = [](const char *argument) { return parseOptions({argument}).error; };
        QCOMPARE(error("--frob"), "unknown option --frob");
        QCOMPARE(error("--run"), "--run needs a value");
        QCOMPARE(error("--home="), "--home needs a value");
        QCOMPARE(error("--list=x"), "--list takes no value");
    }
};

QTEST_GUILESS_MAIN(TestOptions)
#include "tst_options.moc"
