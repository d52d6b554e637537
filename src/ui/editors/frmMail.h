#pragma once

#include "mail/MailSettings.h"
#include "mail/MailSite.h"
#include "ui/editors/EditorDialog.h"

class MailServerFields;
class MailTest;
class QTabWidget;
class SubscriptionList;

/// The Mail dialog: the mail server, with a test of it, and who gets which report. OK saves both in
/// MailSettings.XML, and the password apart.
class frmMail : public EditorDialog
{
    Q_OBJECT

public:
    /// Reads the settings of `site`. Throws Error that names the file when it cannot be read.
    explicit frmMail(MailSite site, QWidget *parent = nullptr);

    /// What could not be read of the settings, and is missing here; it stays in the file.
    QStringList readErrors() const { return m_settings.errors; }

    void accept() override;

protected:
    QString contentText() const override;
    QStringList warnings() const override;
    QString inputError(QWidget *&field) const override;

private:
    bool hasSecret();
    void store(MailSettings &settings) const;
    void save();
    void sendTest();

    MailSite m_site;
    MailSettings m_settings; ///< as read or saved last
    QTabWidget *m_pages;
    MailServerFields *m_server;
    MailTest *m_test;
    SubscriptionList *m_subscriptions;
};
