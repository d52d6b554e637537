#pragma once

#include "core/platform/TaskScheduler.h"

#include <QDialog>
#include <QStringList>

class QLineEdit;
class QPushButton;
class QStatusBar;

/// The Automate dialog: registers the hourly job under the account typed in it, in the place of
/// another folder's job. Where the system
/// takes no account it has no such fields, and says so.
class frmAutomate : public QDialog
{
    Q_OBJECT

public:
    /// `taskOptions`: what the job gets behind "/AUTO". Throws Error when the scheduler fails.
    frmAutomate(platform::TaskScheduler &scheduler, QStringList taskOptions,
                QWidget *parent = nullptr);

    /// "SAVE" after OK, "CANCEL" otherwise.
    QString tag() const { return m_tag; }

    void accept() override;

private:
    void setBusy(bool busy);
    /// False when the scheduler failed, which the user has been told.
    bool registerJob();

    platform::TaskScheduler &m_scheduler;
    QStringList m_taskOptions;
    QString m_tag;
    QLineEdit *txtUserName;
    QLineEdit *txtPassword;
    QLineEdit *txtVerify;
    QPushButton *cmdOK;
    QPushButton *cmdCancel;
    QStatusBar *StatusBar1;
};

/// The present user as the dialog proposes it: "DOMAIN\name" where the environment variable
/// USERDOMAIN is set, else the name; "*unknown*" for a name that the system does not tell.
QString presentUser();
