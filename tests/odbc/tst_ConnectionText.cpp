#include "odbc/ConnectionText.h"
#include "support/Errors.h"
#include "support/Rows.h"

namespace {

OdbcNames installed(const QStringList &drivers)
{
    OdbcNames names;
    for (const QString &driver : drivers)
        names.drivers.insert(driver, "Driver=/usr/lib/x.so");
    return names;
}

} // namespace

class tst_ConnectionText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void translated_data()
    {
        const Rows<QString, QString> row("text", "odbc");
        const QString driver = "DRIVER={ODBC Driver 17 for SQL Server};";
        row("data source name", "DSN=Monitoring", "DSN=Monitoring");
        row("full text stays", "Driver={X};Data Source=a;PWD='b'",
            "Driver={X};Data Source=a;PWD='b'");
        row("keywords in any case, blanks around",
            " provider = sqlncli11 ; Persist Security Info=False;DATA  SOURCE = db01\\inst ; "
            "initial catalog= VTRG;User ID=sa;Password=secret",
            driver + "SERVER=db01\\inst;DATABASE=VTRG;UID=sa;PWD=secret;");
        row("no provider, own account", "Server=db01;Database=V;Integrated Security=SSPI",
            driver + "SERVER=db01;DATABASE=V;Trusted_Connection=Yes;");
        row("this machine", "Provider=SQLOLEDB;Data Source=(local)\\A",
            driver + "SERVER=localhost\\A;");
        row("this machine, port", "Provider=SQLOLEDB;Data Source=.,1433",
            driver + "SERVER={localhost,1433};");
        row("encryption",
            "Provider=MSOLEDBSQL19;Data Source=s;Use Encryption for Data=true;"
            "Trust Server Certificate=yes;Connect Timeout=5",
            driver + "SERVER=s;Encrypt=Yes;TrustServerCertificate=Yes;");
        row("strict", "Provider=MSOLEDBSQL19;Server=s;Encrypt=Strict",
            driver + "SERVER=s;Encrypt=Strict;");
        row("apostrophes", "Provider='SQLOLEDB';Data Source='s';Password='a;''b'",
            driver + "SERVER=s;PWD={a;'b};");
        row("quotation marks, unknown keyword",
            "Provider=SQLOLEDB;Data Source=s;Password=\"{a}\"\"\";ColumnEncryption=Enabled",
            driver + "SERVER=s;PWD={{a}}\"};ColumnEncryption=Enabled;");
        row("braces", "Provider=SQLOLEDB;Data Source=s;Password={a}}=;b}",
            driver + "SERVER=s;PWD={a}}=;b};");
        row("MSDASQL", "Provider=MSDASQL.1;Data Source=Mon;User ID=u;Password=p",
            "DSN=Mon;UID=u;PWD=p;");
        row("MSDASQL, wrapped",
            "Provider=MSDASQL;Extended Properties=\"DSN=Mon;UID=u;PWD={p;}\";Initial Catalog=V",
            "DSN=Mon;UID=u;PWD={p;};DATABASE=V;");
        row("MSDASQL, driver", "Provider=MSDASQL;Driver={SQL Server};Server=s",
            "Driver={SQL Server};Server=s;");
    }
    void translated()
    {
        QFETCH(QString, text);
        QTEST(odbcText(text, installed({"PostgreSQL Unicode", "FreeTDS",
                                        "ODBC Driver 17 for SQL Server"})),
              "odbc");
    }

    void driverChoice()
    {
        const auto chosen = [](const QStringList &drivers) {
            return odbcText("Provider=SQLOLEDB;Data Source=tcp:db,1433", installed(drivers));
        };
        QCOMPARE(
            chosen({"FreeTDS", "ODBC Driver 17 for SQL Server", "ODBC Driver 18 for SQL Server"}),
            "DRIVER={ODBC Driver 18 for SQL Server};SERVER={tcp:db,1433};");
        QCOMPARE(chosen({"SQLite3", "FreeTDS"}),
                 "DRIVER={FreeTDS};SERVER={db,1433};TDS_Version=7.4;ClientCharset=UTF-8;");
    }

    void encryption_data()
    {
        const Rows<QString, QString> row("text", "odbc");
        const QString oleDb = "Provider=MSOLEDBSQL;Server=s;Password='a;b';";
        const QString tds =
            "DRIVER={FreeTDS};SERVER=s;PWD={a;b};TDS_Version=7.4;ClientCharset=UTF-8;";
        const QString asked = "Encryption=require;";
        row("OLE DB", oleDb + "Encrypt=Mandatory;Trust Server Certificate=no", tds + asked);
        row("not asked", oleDb + "Encrypt=Optional", tds);
        row("driver", "Driver=FreeTDS;PWD='a;ENCRYPT=yes;Encryption=off",
            "Driver=FreeTDS;PWD='a;" + asked);
        row("library", "Driver=/usr/lib/libtdsodbc.so;Encrypt=1",
            "Driver=/usr/lib/libtdsodbc.so;" + asked);
        row("another name", "Driver={Company};Encrypt=1", "Driver={Company};" + asked);
        row("data source, OLE DB", "Provider=MSDASQL;Data Source=mon;Encrypt=Yes",
            "DSN=mon;" + asked);
        row("within a password", "DSN=Mon;PWD={;Encrypt=Yes;}", "DSN=Mon;PWD={;Encrypt=Yes;}");
        row("MariaDB", "Driver={MariaDB Unicode};Encrypt=Yes",
            "Driver={MariaDB Unicode};FORCETLS=1;SSLVERIFY=1;");
        row("not known", "Driver={Other};Encrypt=Yes", "Driver={Other};Encrypt=Yes");
    }
    void encryption()
    {
        QFETCH(QString, text);
        OdbcNames names = installed({"FreeTDS", "MariaDB Unicode", "Other"});
        names.drivers.insert("Company", "Setup=/usr/lib/libtdsS.so Driver=/usr/lib/libtdsodbc.so");
        names.dataSources.insert("Mon", "Company");
        QTEST(odbcText(text, names), "odbc");
        text.replace(QRegularExpression("=(yes|1|True|Mandatory)",
                                        QRegularExpression::CaseInsensitiveOption),
                     "=Strict");
        const bool isRefused = errorOf([&] { odbcText(text, names); }).number != 0;
        QCOMPARE(isRefused,
                 odbcText(QString(text).replace("Strict", "Yes"), names).contains("require") ||
                     text.startsWith("Driver={MariaDB"));
    }

    void refused()
    {
        const auto refusal = [](const char *text) {
            return errorOf([&] { odbcText(text, installed({"SQLite3"})); }).description;
        };
        QVERIFY(refusal("Provider=SQLOLEDB;Data Source=s").contains("No ODBC driver"));
        QVERIFY(refusal("Provider=OraOLEDB.Oracle;Data Source=s").contains("'OraOLEDB.Oracle'"));
    }

    void masked_data()
    {
        const Rows<QString, QString> row("text", "shown");
        row.each({{"DSN=M;UID=u;", "DSN=M;UID=u;"}, {"", ""}});
        row.each({{"DSN=M; Password = a b", "DSN=M; Password = ***"}});
        row.each({{"pWd=;UID=u", "pWd=***;UID=u"}, {"PWD={a;}}b};UID=u", "PWD=***;UID=u"}});
        row.each({{"Password=\"a;\"\"b\";X=1", "Password=***;X=1"}});
        row("never closed", "PWD={a;UID=u", "PWD=***");
        row("semicolon in it", "PWD=a;b;c;UID=u", "PWD=***;UID=u");
        row("other passwords", "SSLKeyPassword=a;Jet OLEDB:Database Password=b",
            "SSLKeyPassword=***;Jet OLEDB:Database Password=***");
        row("nested, quoted", "Extended Properties='DSN=M;PWD=''a;b''';UID=u",
            "Extended Properties='DSN=M;PWD=***';UID=u");
    }
    void masked()
    {
        QFETCH(QString, text);
        QTEST(maskPasswords(text), "shown");
    }

    void forms()
    {
        const QString hostile = "a;b}c='\"{ ";
        ConnectionForm source{"Mon", "", "", "", false, "u", hostile};
        const ConnectionForm server{"", "FreeTDS", "db01,1433", "V", false, "u", hostile};
        const ConnectionForm own{"", "", "db01\\M", "", true, "", "", true, true};
        for (const ConnectionForm &form : {source, server, own}) {
            const auto again = connectionForm(connectionText(form));
            QVERIFY2(again && *again == form, qPrintable(connectionText(form)));
        }
        QCOMPARE(passwordsIn(connectionText(server)), QStringList(hostile));
        QVERIFY(!maskPasswords(connectionText(source)).contains("a;b"));
        QVERIFY(odbcText(connectionText(server), installed({"FreeTDS"}))
                    .endsWith("Encryption=require;"));
        source.isEncrypted = false;
        QCOMPARE(connectionForm(connectionText(source))->isEncrypted, false);
        for (const char *other : {"", "DSN=M;DATABASE=x", "SERVER=a;Encrypt=Strict", "UID=u",
                                  "SERVER=a;TDS_Version=7.4", "Provider=SQLOLEDB;Data Source=s"})
            QVERIFY2(!connectionForm(other), other);
    }

    void messages()
    {
        const QStringList passwords =
            passwordsIn("PWD={s;3};Extended Properties=\"DSN=M;Password='in ner'\";UID=u");
        QCOMPARE(passwords, QStringList({"s;3", "in ner"}));
        QCOMPARE(withoutSecrets("cannot use 'UID=u;PWD=other;X=1'; Password = {a;b}}c} is wrong; "
                                "login with s;3 failed (s;3); 'in ner'; words;30",
                                passwords),
                 "cannot use 'UID=u;PWD=***;X=1'; Password = *** is wrong; "
                 "login with *** failed (***); '***'; words;30");
    }
};

QTEST_GUILESS_MAIN(tst_ConnectionText)
#include "tst_ConnectionText.moc"
