#include "ui/editors/frmMailSubscription.h"

#include "base/Error.h"
#include "definitions/Definitions.h"
#include "mail/MailAddress.h"
#include "ui/common/NaturalSort.h"
#include "ui/common/Widgets.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int linesOfRecipients = 3;

bool hasTarget(const clsReportDef &report)
{
    return report.Target ||
           std::any_of(report.ReportDevices.begin(), report.ReportDevices.end(),
                       [](const auto &device) { return device->Target.has_value(); });
}

} // namespace

QString contentOf(const MailSubscription &subscription)
{
    return QStringList{subscription.reportId,
                       subscription.recipients,
                       QString::number(static_cast<int>(subscription.when)),
                       QString::number(subscription.points),
                       QString::number(subscription.pdf),
                       QString::number(subscription.csv)}
        .join(u'\n');
}

frmMailSubscription::frmMailSubscription(QWidget *parent)
    : EditorDialog(QStringLiteral("frmMailSubscription"), QStringLiteral("mail.html#subscriptions"),
                   parent)
    , cboReport(new QComboBox)
    , txtRecipients(new QPlainTextEdit)
    , optWhen(new QButtonGroup(this))
{
    setWindowTitle(QStringLiteral("Add/Edit Mail Subscription " VANTREL_VERSION));
    cboReport->setObjectName(QStringLiteral("cboReport"));
    cboReport->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cboReport->setMinimumContentsLength(30);
    txtRecipients->setObjectName(QStringLiteral("txtRecipients"));
    txtRecipients->setTabChangesFocus(true);
    txtRecipients->setFixedHeight(linesOfRecipients * fontMetrics().lineSpacing() +
                                  fontMetrics().height());
    txtRecipients->setPlaceholderText(QStringLiteral("ann@example.org, Bob <bob@example.org>"));
    txtRecipients->setToolTip(
        QStringLiteral("Addresses, separated by commas or line breaks. Each gets a mail of their "
                       "own and does not see the others."));

    auto *form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(QStringLiteral("&Report:"), cboReport);
    form->addRow(QStringLiteral("&To:"), txtRecipients);
    auto *layout = new QVBoxLayout(content());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(form);
    layout->addWidget(makeOccasions());
    layout->addWidget(makeAttachments());
    layout->addStretch(1);

    connect(cboReport, &QComboBox::currentIndexChanged, this, &frmMailSubscription::showWarnings);
    connect(optWhen, &QButtonGroup::idToggled, this, &frmMailSubscription::showWarnings);
    connect(chkPdf, &QCheckBox::toggled, this, &frmMailSubscription::showWarnings);
    load({});
}

QWidget *frmMailSubscription::makeOccasions()
{
    auto *box = new QGroupBox(QStringLiteral("When"));
    auto *layout = new QVBoxLayout(box);
    const std::pair<MailWhen, QString> occasions[] = {
        {MailWhen::Always, QStringLiteral("&After each run by schedule")},
        {MailWhen::Trouble, QStringLiteral("&If the report failed or is incomplete")},
        {MailWhen::TargetMissed, QStringLiteral("If a device &missed its target")},
        {MailWhen::Worse, QStringLiteral("If the success rate &fell by at least")},
    };
    txtPoints = new QDoubleSpinBox;
    txtPoints->setObjectName(QStringLiteral("txtPoints"));
    txtPoints->setAccessibleName(QStringLiteral("Percentage points by which the rate fell"));
    txtPoints->setRange(0.01, 100);
    txtPoints->setDecimals(2);
    txtPoints->setSingleStep(0.5);
    txtPoints->setEnabled(false);
    for (const auto &[when, text] : occasions) {
        auto *button = new QRadioButton(text);
        button->setObjectName(QStringLiteral("optWhen%1").arg(static_cast<int>(when)));
        optWhen->addButton(button, static_cast<int>(when));
        auto *row = new QHBoxLayout;
        row->addWidget(button);
        if (when == MailWhen::Worse) {
            row->addWidget(txtPoints);
            row->addWidget(new QLabel(QStringLiteral("percentage points against the preceding "
                                                     "period")));
            connect(button, &QRadioButton::toggled, txtPoints, &QWidget::setEnabled);
        }
        row->addStretch(1);
        layout->addLayout(row);
    }
    return box;
}

QWidget *frmMailSubscription::makeAttachments()
{
    auto *box = new QGroupBox(QStringLiteral("Attached"));
    auto *layout = new QHBoxLayout(box);
    chkPdf = new QCheckBox(QStringLiteral("The report as &PDF"));
    chkPdf->setObjectName(QStringLiteral("chkPdf"));
    chkCsv = new QCheckBox(QStringLiteral("The figures as &CSV"));
    chkCsv->setObjectName(QStringLiteral("chkCsv"));
    layout->addWidget(chkPdf);
    layout->addWidget(chkCsv);
    layout->addStretch(1);
    return box;
}

/// Lists all reports by title, and the chosen one even if it is no longer defined.
void frmMailSubscription::fillReports(const QString &reportId)
{
    cboReport->clear();
    for (const auto &report :
         sortedNaturally(definitions().gReportDefs, &clsReportDef::ReportTitle))
        cboReport->addItem(report->ReportTitle, report->ReportID);
    int row = cboReport->findData(reportId, Qt::UserRole, Qt::MatchFixedString);
    if (row < 0) {
        row = 0;
        cboReport->insertItem(0,
                              reportId.isEmpty()
                                  ? QStringLiteral("(choose a report)")
                                  : QStringLiteral("(not defined any more: %1)").arg(reportId),
                              reportId);
        if (!reportId.isEmpty())
            cboReport->setItemIcon(0, style()->standardIcon(QStyle::SP_MessageBoxWarning));
    }
    cboReport->setCurrentIndex(row);
}

void frmMailSubscription::load(const MailSubscription &subscription)
{
    fillReports(subscription.reportId);
    txtRecipients->setPlainText(subscription.recipients);
    optWhen->button(static_cast<int>(subscription.when))->setChecked(true);
    txtPoints->setValue(subscription.points);
    chkPdf->setChecked(subscription.pdf);
    chkCsv->setChecked(subscription.csv);
    showWarnings();
    markUnchanged();
}

void frmMailSubscription::store(MailSubscription &subscription) const
{
    subscription.reportId = cboReport->currentData().toString();
    subscription.recipients = txtRecipients->toPlainText().simplified();
    try {
        subscription.recipients = addressListText(mailAddresses(txtRecipients->toPlainText()));
    } catch (const Error &) {
        // Not a list yet: inputError() says what is wrong with it.
    }
    subscription.when = static_cast<MailWhen>(optWhen->checkedId());
    subscription.points = txtPoints->value();
    subscription.pdf = chkPdf->isChecked();
    subscription.csv = chkCsv->isChecked();
}

QString frmMailSubscription::contentText() const
{
    MailSubscription subscription;
    store(subscription);
    return contentOf(subscription);
}

QString frmMailSubscription::inputError(QWidget *&field) const
{
    field = cboReport;
    if (!definitions().gReportDefs.contains(cboReport->currentData().toString()))
        return QStringLiteral("Please choose the report that is to be sent.");
    field = txtRecipients;
    if (txtRecipients->toPlainText().trimmed().isEmpty())
        return QStringLiteral("Please enter who is to get the report.");
    const QStringList faults = recipientFaults(txtRecipients->toPlainText());
    return faults.isEmpty() ? QString() : faults.constFirst();
}

QStringList frmMailSubscription::warnings() const
{
    const auto report = definitions().gReportDefs.find(cboReport->currentData().toString());
    QStringList warnings;
    if (report && chkPdf->isChecked() && !report->Pdf)
        warnings.append(QStringLiteral("This report makes no PDF file that could be sent."));
    const auto when = static_cast<MailWhen>(optWhen->checkedId());
    if (report && when == MailWhen::TargetMissed && !hasTarget(*report))
        warnings.append(QStringLiteral("This report has no target that could be missed."));
    if (report && when == MailWhen::Worse && !report->Compare)
        warnings.append(QStringLiteral("This report is not compared with the preceding period."));
    return warnings;
}
