#include "app/Options.h"

#include <QDir>
#include <QTest>

class TestOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void separatesTheTwoSyntaxes_data();
    void separatesTheTwoSyntaxes();
    void refusesWrongOnes_data();
    void refusesWrongOnes();
};

void TestOptions::separatesTheTwoSyntaxes_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("systemText");
    QTest::addColumn<bool>("unattended");

    QTest::newRow("none") << QStringList() << "" << false;
    QTest::newRow("system's own") << QStringList{"/auto", "/DBPATH", "=", "c:\\a b"}
                                  << "/auto /DBPATH = c:\\a b" << true;
    QTest::newRow("--auto") << QStringList{"--auto", "/DBPATH=X"} << "/AUTO /DBPATH=X" << true;
    QTest::newRow("values are no options") << QStringList{"--home", "--auto"} << "" << false;
    QTest::newRow("--run") << QStringList{"--run", "/A", "--run=b=c"} << "" << true;
    QTest::newRow("--list") << QStringList{"--list"} << "" << true;
}

void TestOptions::separatesTheTwoSyntaxes()
{
    QFETCH(QStringList, arguments);
    const Options options = parseOptions(arguments);
    QCOMPARE(options.error, QString());
    QTEST(options.systemText, "systemText");
    QTEST(options.unattended(), "unattended");
    if (arguments.contains(QLatin1String("--run")))
        QCOMPARE(options.run, QStringList({QStringLiteral("/A"), QStringLiteral("b=c")}));
}

void TestOptions::refusesWrongOnes_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");

    QTest::newRow("unknown") << QStringList{"--frob"} << "unknown option --frob";
    QTest::newRow("value missing") << QStringList{"--run"} << "--run needs a value";
    QTest::newRow("value empty") << QStringList{"--home="} << "--home needs a value";
    QTest::newRow("value too many") << QStringList{"--list=x"} << "--list takes no value";
}

void TestOptions::refusesWrongOnes()
{
    QFETCH(QStringList, arguments);
    QTEST(parseOptions(arguments).error, "error");
}

QTEST_GUILESS_MAIN(TestOptions)
#include "tst_options.moc"
