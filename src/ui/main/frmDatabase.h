#pragma once

#include "config/HostSettings.h"
#include "odbc/ConnectionText.h"
#include "ui/common/Background.h"
#include "ui/editors/EditorDialog.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QStackedWidget;
class QTimer;

/// Chooses the monitoring database: the Access file, SQL Server, an ODBC data source, or whatever a
/// connection text reaches; tries it, and tells what it holds. OK saves the choice in the product's
/// configuration and puts it in force. Nothing here waits for a file or a server.
class frmDatabase : public EditorDialog
{
    Q_OBJECT

public:
    explicit frmDatabase(QWidget *parent = nullptr);

protected:
    // Asked in the constructor already.
    QString contentText() const final;
    QString inputError(QWidget *&field) const final;

private:
    enum Kind { AccessFile, SqlServer, DataSource, Text };

    QWidget *makeFilePage();
    QWidget *makeServerPage();
    QWidget *makeSourcePage();
    QWidget *makeTextPage();
    QWidget *makeSignIn();
    QWidget *makeTest();
    void load(const DatabaseSettings &settings);
    void listNames();
    void takeNames(const OdbcNames &names);
    Kind kind() const;
    ConnectionForm form() const;
    DatabaseSettings chosen() const;
    void browse();
    void showKind();
    void changed();
    void testOrStop();
    void test();
    void showResult(const QString &text, bool isFault);

    DatabaseSettings m_loaded;
    bool m_isMasked = false; ///< txtConnection shows m_loaded's text with its passwords masked
    QComboBox *cboKind;
    QStackedWidget *m_pages;
    QLineEdit *txtFolder;
    QComboBox *cboDriver;
    QLineEdit *txtServer;
    QLineEdit *txtDatabase;
    QComboBox *cboSource;
    QLineEdit *txtConnection;
    QComboBox *cboDialect;
    QWidget *m_dialectRow;
    QGroupBox *m_signIn;
    QCheckBox *chkIntegrated;
    QLineEdit *txtUser;
    QLineEdit *txtPassword;
    QCheckBox *chkEncrypt;
    QCheckBox *chkAnyCertificate;
    QPushButton *cmdTest;
    QLabel *m_resultIcon;
    QLabel *lblResult;
    QTimer *m_testSoon;
    Background m_test;
    Background m_names;
};
