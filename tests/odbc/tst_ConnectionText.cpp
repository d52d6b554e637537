#include "core/Error.h"
#include "data/odbc/ConnectionText.h"

#include <QTest>

namespace {

const QStringList linuxDrivers = {"PostgreSQL Unicode", "FreeTDS", "ODBC Driver 17 for SQL Server"};

} // namespace

class tst_ConnectionText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void translated_data();
    void translated();
    void driverChoice_data();
    void driverChoice();
    void refused_data();
    void refused();
    void masked_data();
    void masked();
    void messages_data();
    void messages();
};

void tst_ConnectionText::translated_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("odbc");
    const QString driver = "DRIVER={ODBC Driver 17 for SQL Server};";

    QTest::newRow("data source name") << "DSN=Monitoring"
                                      << "DSN=Monitoring";
    QTest::newRow("full text stays") << "Driver={X};Data Source=a;PWD='b'"
                                     << "Driver={X};Data Source=a;PWD='b'";
    QTest::newRow("file data source") << "FileDSN=x.dsn;"
                                      << "FileDSN=x.dsn;";
    QTest::newRow("classic")
        << "Provider=SQLOLEDB.1;Persist Security Info=False;User ID=sa;Password=secret;"
           "Initial Catalog=VTRG;Data Source=db01"
        << driver + "UID=sa;PWD=secret;DATABASE=VTRG;SERVER=db01;";
    QTest::newRow("keywords in any case, blanks around")
        << " provider = sqlncli11 ; DATA  SOURCE = db01\\inst ; initial catalog= VTRG "
        << driver + "SERVER=db01\\inst;DATABASE=VTRG;";
    QTest::newRow("own account")
        << "Provider=MSOLEDBSQL;Server=db01;Database=V;Integrated Security=SSPI"
        << driver + "SERVER=db01;DATABASE=V;Trusted_Connection=Yes;";
    QTest::newRow("no provider") << "Server=db01;Database=V;UID=u;PWD=p"
                                 << driver + "SERVER=db01;DATABASE=V;UID=u;PWD=p;";
    QTest::newRow("this machine") << "Provider=SQLOLEDB;Data Source=(local)\\A"
                                  << driver + "SERVER=localhost\\A;";
    QTest::newRow("this machine, port")
        << "Provider=SQLOLEDB;Data Source=.,1433" << driver + "SERVER={localhost,1433};";
    QTest::newRow("encryption")
        << "Provider=MSOLEDBSQL19;Data Source=s;Use Encryption for Data=true;"
           "Trust Server Certificate=yes;Connect Timeout=5"
        << driver + "SERVER=s;Encrypt=Yes;TrustServerCertificate=Yes;";
    QTest::newRow("strict") << "Provider=MSOLEDBSQL19;Server=s;Encrypt=Strict"
                            << driver + "SERVER=s;Encrypt=Strict;";
    QTest::newRow("apostrophes") << "Provider='SQLOLEDB';Data Source='s';Password='a;''b'"
                                 << driver + "SERVER=s;PWD={a;'b};";
    QTest::newRow("quotation marks") << "Provider=SQLOLEDB;Data Source=s;Password=\"{a}\"\"\""
                                     << driver + "SERVER=s;PWD={{a}}\"};";
    QTest::newRow("braces") << "Provider=SQLOLEDB;Data Source=s;Password={a}}=;b}"
                            << driver + "SERVER=s;PWD={a}}=;b};";
    QTest::newRow("unknown keyword goes along")
        << "Provider=SQLOLEDB;Server=s;ColumnEncryption=Enabled"
        << driver + "SERVER=s;ColumnEncryption=Enabled;";
    QTest::newRow("MSDASQL") << "Provider=MSDASQL.1;Persist Security Info=True;Data Source=Mon;"
                                "User ID=u;Password=p"
                             << "DSN=Mon;UID=u;PWD=p;";
    QTest::newRow("MSDASQL, wrapped")
        << "Provider=MSDASQL;Extended Properties=\"DSN=Mon;UID=u;PWD={p;}\";Initial Catalog=V"
        << "DSN=Mon;UID=u;PWD={p;};DATABASE=V;";
    QTest::newRow("MSDASQL, driver") << "Provider=MSDASQL;Driver={SQL Server};Server=s"
                                     << "Driver={SQL Server};Server=s;";
}

void tst_ConnectionText::translated()
{
    QFETCH(QString, text);
    QTEST(odbcText(text, linuxDrivers), "odbc");
}

void tst_ConnectionText::driverChoice_data()
{
    QTest::addColumn<QStringList>("installed");
    QTest::addColumn<QString>("begin");
    QTest::newRow("newest") << QStringList{"FreeTDS", "ODBC Driver 17 for SQL Server",
                                           "ODBC Driver 18 for SQL Server"}
                            << "DRIVER={ODBC Driver 18 for SQL Server};SERVER={tcp:db,1433};";
    QTest::newRow("FreeTDS")
        << QStringList{"SQLite3", "FreeTDS"}
        << "DRIVER={FreeTDS};SERVER={db,1433};TDS_Version=7.4;ClientCharset=UTF-8;";
    QTest::newRow("Windows' own") << QStringList{"SQL Server"}
                                  << "DRIVER={SQL Server};SERVER={tcp:db,1433};";
}

void tst_ConnectionText::driverChoice()
{
    QFETCH(QStringList, installed);
    QTEST(odbcText("Provider=SQLOLEDB;Data Source=tcp:db,1433", installed), "begin");
}

void tst_ConnectionText::refused_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("says");
    QTest::newRow("no driver") << "Provider=SQLOLEDB;Data Source=s"
                               << "No ODBC driver";
    QTest::newRow("other provider") << "Provider=OraOLEDB.Oracle;Data Source=s"
                                    << "'OraOLEDB.Oracle'";
}

void tst_ConnectionText::refused()
{
    QFETCH(QString, text);
    QFETCH(QString, says);
    try {
        odbcText(text, {"SQLite3"});
        QFAIL("accepted");
    } catch (const Error &error) {
        QVERIFY2(error.description.contains(says), qPrintable(error.description));
    }
}

void tst_ConnectionText::masked_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("none") << "DSN=M;UID=u;"
                          << "DSN=M;UID=u;";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("PWD") << "DSN=M;PWD=abc;UID=u"
                         << "DSN=M;PWD=***;UID=u";
    QTest::newRow("Password, last") << "DSN=M; Password = a b"
                                    << "DSN=M; Password = ***";
    QTest::newRow("any case, closed") << "pWd=a;pAssWord=b;"
                                      << "pWd=***;pAssWord=***;";
    QTest::newRow("empty password") << "PWD=;UID=u"
                                    << "PWD=***;UID=u";
    QTest::newRow("braces") << "PWD={a;}}b};UID=u"
                            << "PWD=***;UID=u";
    QTest::newRow("apostrophes") << "Password='a;''b';X=1"
                                 << "Password=***;X=1";
    QTest::newRow("quotation marks") << "Password=\"a;\"\"b\";X=1"
                                     << "Password=***;X=1";
    QTest::newRow("never closed") << "PWD={a;UID=u"
                                  << "PWD=***";
    QTest::newRow("semicolon in it") << "PWD=a;b;c;UID=u"
                                     << "PWD=***;UID=u";
    QTest::newRow("other passwords") << "SSLKeyPassword=a;Jet OLEDB:Database Password=b"
                                     << "SSLKeyPassword=***;Jet OLEDB:Database Password=***";
    QTest::newRow("nested") << "Provider=MSDASQL;Extended Properties=\"DSN=M;PWD=a\";UID=u"
                            << "Provider=MSDASQL;Extended Properties=\"DSN=M;PWD=***\";UID=u";
    QTest::newRow("nested, quoted") << "Extended Properties='DSN=M;PWD=''a;b''';UID=u"
                                    << "Extended Properties='DSN=M;PWD=***';UID=u";
}

void tst_ConnectionText::masked()
{
    QFETCH(QString, text);
    QTEST(maskPasswords(text), "shown");
}

void tst_ConnectionText::messages_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("shown");
    QTest::newRow("assignment") << "cannot use 'UID=u;PWD=other;X=1'"
                                << "cannot use 'UID=u;PWD=***;X=1'";
    QTest::newRow("braces") << "Password = {a;b}}c} is wrong"
                            << "Password = *** is wrong";
    QTest::newRow("password itself") << "login with s;3 failed (s;3)"
                                     << "login with *** failed (***)";
    QTest::newRow("nested one") << "'in ner'"
                                << "'***'";
    QTest::newRow("part of a word") << "words;30"
                                    << "words;30";
}

void tst_ConnectionText::messages()
{
    QFETCH(QString, message);
    const QStringList passwords =
        passwordsIn("PWD={s;3};Extended Properties=\"DSN=M;Password='in ner'\";UID=u");
    QCOMPARE(passwords, QStringList({"s;3", "in ner"}));
    QTEST(withoutSecrets(message, passwords), "shown");
}

QTEST_GUILESS_MAIN(tst_ConnectionText)
#include "tst_ConnectionText.moc"
