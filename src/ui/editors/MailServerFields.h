#pragma once

#include "mail/MailSettings.h"

#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

/// The fields of a mail server and of the account on it. A saved password is never shown: its field
/// is empty, and only what is typed there replaces it.
class MailServerFields : public QWidget
{
    Q_OBJECT

public:
    explicit MailServerFields(QWidget *parent = nullptr);

    void load(const MailServer &server, bool hasSecret);
    /// Copies the fields into a server.
    void store(MailServer &server) const;

    /// What is to become of the password, or access token.
    QString typedSecret() const; ///< empty: none was typed
    bool forgetsSecret() const { return m_forgets; }

    /// All that the user can change, as one text.
    QString contentText() const;

    /// What is wrong, in words for the user, with its field in `field`; empty: nothing.
    QString inputError(QWidget *&field) const;
    QStringList warnings() const;

Q_SIGNALS:
    void changed();

private:
    void makeRows();
    void encryptionChosen();
    void showStates();
    bool logsIn() const;
    void browse();

    int m_standardPort = 0; ///< of the chosen encryption
    bool m_hasSecret = false;
    bool m_forgets = false;
    MailServer m_loaded;

    QLineEdit *txtServer;
    QSpinBox *txtPort;
    QComboBox *cboEncryption;
    QComboBox *cboAuthentication;
    QLineEdit *txtUser;
    QLineEdit *txtPassword;
    QPushButton *cmdForget;
    QLineEdit *txtFrom;
    QSpinBox *txtTimeout;
    QSpinBox *txtSizeLimit;
    QLineEdit *txtCertificates;
    QLineEdit *txtPages;
};
