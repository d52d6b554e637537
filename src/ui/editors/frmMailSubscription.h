#pragma once

#include "mail/MailSettings.h"
#include "ui/editors/EditorDialog.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QPlainTextEdit;

/// All of a subscription that the user can change, as one text.
QString contentOf(const MailSubscription &subscription);

/// The editor of one subscription: which report goes to whom, when, and with which files.
class frmMailSubscription : public EditorDialog
{
    Q_OBJECT

public:
    explicit frmMailSubscription(QWidget *parent = nullptr);

    /// Fills the fields; from here on changes count.
    void load(const MailSubscription &subscription);
    /// Copies the fields into a subscription; its id stays.
    void store(MailSubscription &subscription) const;

protected:
    QString contentText() const override;
    QStringList warnings() const override;
    QString inputError(QWidget *&field) const override;

private:
    QWidget *makeOccasions();
    QWidget *makeAttachments();
    void fillReports(const QString &reportId);

    QComboBox *cboReport;
    QPlainTextEdit *txtRecipients;
    QButtonGroup *optWhen;
    QDoubleSpinBox *txtPoints;
    QCheckBox *chkPdf;
    QCheckBox *chkCsv;
};
