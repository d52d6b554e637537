#include "ui/main/frmAutomate.h"

#include "base/Error.h"
#include "scheduling/Registration.h"
#include "ui/common/Messages.h"
#include "ui/common/Widgets.h"
#include "ui/help/HelpViewer.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>

namespace {

const QString helpPage = QStringLiteral("automate.html");

QLineEdit *newField(const char *name, QLineEdit::EchoMode mode)
{
    auto *field = new QLineEdit;
    field->setObjectName(QLatin1String(name));
    field->setEchoMode(mode);
    return field;
}

QString explanation(bool needsAccount)
{
    const QString job =
        QStringLiteral("The Vantrel Graphing Tool will be added to your scheduled task list and "
                       "will be executed each hour.  Any reports that have their schedules "
                       "configured such that they should be run will be created at that time.");
    const QString account =
        QStringLiteral("In order to properly execute and write the selected reports to the "
                       "destination, please provide the user credentials under which the task "
                       "should be run.");
    return needsAccount ? job + QLatin1String("\n\n") + account : job;
}

/// Shown instead of an account, with the system's own advice.
QString ownAccountText(platform::TaskScheduler &scheduler)
{
    const QString text = QStringLiteral("This system runs the job as the present user and needs no "
                                        "password.");
    const QString advice = scheduler.advice();
    return advice.isEmpty() ? text : text + u'\n' + advice;
}

} // namespace

QString currentUser()
{
    QString user;
    for (const char *name : {"USERNAME", "USER", "LOGNAME"}) {
        if (user.isEmpty())
            user = qEnvironmentVariable(name);
    }
    if (user.isEmpty())
        user = QStringLiteral("*unknown*");
    const QString domain = qEnvironmentVariable("USERDOMAIN");
    return domain.isEmpty() ? user : domain + u'\\' + user;
}

frmAutomate::frmAutomate(platform::TaskScheduler &scheduler, QStringList taskOptions,
                         QWidget *parent)
    : QDialog(parent)
    , m_scheduler(scheduler)
    , m_taskOptions(std::move(taskOptions))
    , m_tag(QStringLiteral("CANCEL"))
    , txtUserName(newField("txtUserName", QLineEdit::Normal))
    , txtPassword(newField("txtPassword", QLineEdit::Password))
    , txtVerify(newField("txtVerify", QLineEdit::Password))
    , StatusBar1(new QStatusBar)
{
    setObjectName(QStringLiteral("frmAutomate"));
    setWindowTitle(QStringLiteral("Automate Graphing"));
    setModal(true);
    txtUserName->setText(currentUser());
    StatusBar1->setObjectName(QStringLiteral("StatusBar1"));
    StatusBar1->setSizeGripEnabled(false);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(
        newTextLabel(QStringLiteral("lblExplain"), explanation(scheduler.needsAccount())));
    auto *account = new QWidget;
    auto *fields = new QFormLayout(account);
    fields->setContentsMargins(0, 0, 0, 0);
    fields->addRow(QStringLiteral("&User name:"), txtUserName);
    fields->addRow(QStringLiteral("&Password:"), txtPassword);
    fields->addRow(QStringLiteral("&Verify password:"), txtVerify);
    layout->addWidget(account);
    if (!scheduler.needsAccount()) {
        account->hide();
        layout->addWidget(newTextLabel(QStringLiteral("lblAccount"), ownAccountText(scheduler)));
    }
    layout->addStretch();

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel |
                                         QDialogButtonBox::Help);
    cmdOK = buttons->button(QDialogButtonBox::Ok);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdCancel = buttons->button(QDialogButtonBox::Cancel);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    layout->addWidget(buttons);
    layout->addWidget(StatusBar1);
    connect(buttons, &QDialogButtonBox::accepted, this, &frmAutomate::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &frmAutomate::reject);
    connect(buttons, &QDialogButtonBox::helpRequested, this, [this] { showHelp(helpPage, this); });
    openHelpOnF1(this, helpPage);
    resize(70 * fontMetrics().averageCharWidth(), sizeHint().height());
}

void frmAutomate::accept()
{
    if (!cmdOK->isEnabled())
        return; // Enter while the scheduler is busy
    setBusy(true);
    if (txtPassword->text() != txtVerify->text()) {
        setBusy(false);
        showCritical(this, QStringLiteral("Invalid Entry"),
                     QStringLiteral("The password entries do not match or are invalid.  Please "
                                    "re-enter the password and verify."));
        txtPassword->setFocus();
        txtPassword->selectAll();
        return;
    }
    const bool done = registerJob();
    setBusy(false);
    if (!done)
        return;
    m_tag = QStringLiteral("SAVE");
    QDialog::accept();
}

void frmAutomate::setBusy(bool busy)
{
    cmdOK->setEnabled(!busy);
    cmdCancel->setEnabled(!busy);
    if (!busy) {
        StatusBar1->clearMessage();
        return;
    }
    StatusBar1->showMessage(QStringLiteral("Updating Task Scheduler..."));
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); // so that it shows
}

bool frmAutomate::registerJob()
{
    try {
        const TaskAccount account = m_scheduler.needsAccount()
                                        ? TaskAccount{txtUserName->text(), txtPassword->text()}
                                        : TaskAccount{};
        replaceTask(m_scheduler, account, m_taskOptions);
    } catch (const Error &error) {
        showCritical(this, QStringLiteral("Automate Graphing"),
                     QStringLiteral("The scheduled task could not be added.") +
                         QLatin1String("\n\n") + errorTail(error));
        return false;
    }
    showInformation(this, QStringLiteral("Automate Graphing"),
                    QStringLiteral("Scheduled task has been added."));
    return true;
}
