#include "app/Options.h"
#include "base/Paths.h"
#include "base/ProgramState.h"
#include "config/StartUp.h"

#include <QDir>
#include <QRegularExpression>
#include <QTest>

class TestOptions : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void separatesTheTwoSyntaxes()
    {
        const Options own = parseOptions({"/auto", "/DBPATH", "=", "c:\\a b"});
        QCOMPARE(own.systemText, "/auto /DBPATH = c:\\a b");
        QVERIFY(own.unattended());
        QCOMPARE(parseOptions({"--auto", "/DBPATH=X"}).systemText, "/AUTO /DBPATH=X");
        QVERIFY(!parseOptions({"--home", "--auto"}).unattended()); // values are no options
        const Options runs = parseOptions({"--run", "/A", "--run=b=c"});
        QVERIFY(runs.unattended() && runs.systemText.isEmpty() && runs.error.isEmpty());
        QCOMPARE(runs.run, QStringList({"/A", "b=c"}));
        QCOMPARE(parseOptions({"/AUTO", "--metrics", "m"}).metrics,
                 QDir::toNativeSeparators(QDir().absoluteFilePath("m")));
        QVERIFY(!parseOptions({"--list", "--metrics=m"}).error.isEmpty());
        const Options pdf = parseOptions({"--pdf", "A b", "c"});
        QVERIFY(pdf.makesReports() && pdf.pdfReport == "A b");
        QCOMPARE(pdf.pdfFile, QDir::toNativeSeparators(QDir().absoluteFilePath("c")));
        QVERIFY(!parseOptions({"--pdf", "A", "c", "--auto"}).error.isEmpty());
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
        static const QRegularExpression option("(?<= )--[a-z-]+");
        int looking = 0;
        for (auto found = option.globalMatch(usageText()); found.hasNext();) {
            const QString name = found.next().captured();
            const bool looks = parseOptions({name, "x"}).command != Command::None;
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
        QCOMPARE(error("--pdf=A"), "--pdf needs a report and a file");
    }
};

QTEST_GUILESS_MAIN(TestOptions)
#include "tst_Options.moc"
