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

    void namesTheFoldersOfTheHourlyJob()
    {
        const auto full = [](const char *folder) {
            return QDir::toNativeSeparators(QDir().absoluteFilePath(folder));
        };
        const auto folders = [](const QStringList &arguments) {
            return parseOptions(arguments).folderOptions();
        };
        QCOMPARE(folders({"/DBPATH", "=b", "/AUTO"}),
                 QStringList({"--dbpath", programFolder() + pathSeparator + "B"}));
        QCOMPARE(folders({"/DBPATH=x", "--dbpath=b"}), QStringList({"--dbpath", full("b")}));
        qputenv(homeVariable, "c");
        QCOMPARE(folders({"/AUTO"}), QStringList({"--home", full("c")}));
        QCOMPARE(folders({"--home=a/"}), QStringList({"--home", full("a")}));
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
