#pragma once

#include "mail/MailSettings.h"

#include <QWidget>

#include <vector>

class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

/// Who gets which report by mail: a list that can be searched, and who hears of runs that failed.
class SubscriptionList : public QWidget
{
    Q_OBJECT

public:
    explicit SubscriptionList(QWidget *parent = nullptr);

    void load(const MailSettings &settings);
    void store(MailSettings &settings) const;

    /// All that the user can change, as one text.
    QString contentText() const;

    /// What is wrong, in words for the user, with its field in `field`; empty: nothing.
    QString inputError(QWidget *&field) const;
    QStringList warnings() const;

Q_SIGNALS:
    void changed();

private:
    void fill(const QString &currentId);
    void filter();
    void showStates();
    MailSubscription *current();
    void add();
    void change();
    void remove();
    void edit(const MailSubscription &subscription);

    std::vector<MailSubscription> m_subscriptions; ///< in the file's order, new ones last
    QLineEdit *txtSearch;
    QTreeWidget *lvSubscriptions;
    QLabel *lblNone;
    QPushButton *cmdChange;
    QPushButton *cmdRemove;
    QLineEdit *txtFailures;
};
