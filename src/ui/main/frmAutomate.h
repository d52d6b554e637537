#pragma once

#include "platform/TaskScheduler.h"

#include <QDialog>
#include <QStringList>

class QLineEdit;
class QPushButton;
class QStatusBar;

/// The Automate dialog: registers the hourly job under the account typed in it, replacing another
/// folder's job. If the system does not need an account there are no such fields, and it says so.
class frmAutomate : public QDialog
{
    Q_OBJECT

public:
    /// `taskOptions`: the job's options after "/AUTO". Throws Error when the scheduler fails.
    frmAutomate(platform::TaskScheduler &scheduler, QStringList taskOptions,
                QWidget *parent = nullptr);

    /// "SAVE" after OK, "CANCEL" otherwise.
    QString tag() const { return m_tag; }

    void accept() override;

private:
    void setBusy(bool busy);
    /// False when the scheduler failed, after a message to the user.
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

/// The current user as the dialog's default: "DOMAIN\name" if the environment variable USERDOMAIN
/// is set, else the name; "*unknown*" if the system has no name.
QString currentUser();
