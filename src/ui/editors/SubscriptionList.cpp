#include "ui/editors/SubscriptionList.h"

#include "base/NaturalOrder.h"
#include "definitions/Dates.h"
#include "definitions/Definitions.h"
#include "ui/common/Messages.h"
#include "ui/common/NaturalSort.h"
#include "ui/common/Widgets.h"
#include "ui/editors/frmMailSubscription.h"

#include <QAction>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QStyle>
#include <QTreeWidget>

#include <algorithm>

namespace {

constexpr int idRole = Qt::UserRole;
enum Column { ReportColumn, RecipientsColumn, WhenColumn, WithColumn };

class Row : public QTreeWidgetItem
{
public:
    using QTreeWidgetItem::QTreeWidgetItem;

    bool operator<(const QTreeWidgetItem &other) const override
    {
        const int column = treeWidget()->sortColumn();
        return compareNaturally(text(column), other.text(column)) < 0;
    }
};

QString occasionText(const MailSubscription &subscription)
{
    switch (subscription.when) {
    case MailWhen::Always:
        return QStringLiteral("always");
    case MailWhen::Trouble:
        return QStringLiteral("failed or partial");
    case MailWhen::TargetMissed:
        return QStringLiteral("a target missed");
    case MailWhen::Worse:
        break;
    }
    return QStringLiteral("worse by %1 points").arg(QLocale().toString(subscription.points));
}

QString attachmentText(const MailSubscription &subscription)
{
    QStringList names;
    if (subscription.pdf)
        names.append(QStringLiteral("PDF"));
    if (subscription.csv)
        names.append(QStringLiteral("CSV"));
    return names.join(QLatin1String(", "));
}

} // namespace

SubscriptionList::SubscriptionList(QWidget *parent)
    : QWidget(parent)
    , txtSearch(new QLineEdit)
    , lvSubscriptions(new QTreeWidget)
    , lblNone(newTextLabel(QStringLiteral("lblNone")))
    , cmdChange(newButton(QStringLiteral("cmdSubscriptionModify"), QStringLiteral("Chan&ge..."),
                          QStringLiteral("Changes the selected subscription")))
    , cmdRemove(newButton(QStringLiteral("cmdSubscriptionRemove"), QStringLiteral("Remo&ve"),
                          QStringLiteral("Removes the selected subscription")))
    , txtFailures(new QLineEdit)
{
    txtSearch->setObjectName(QStringLiteral("txtSearch"));
    txtSearch->setClearButtonEnabled(true);
    txtSearch->setPlaceholderText(QStringLiteral("words of a report's title or of an address"));
    lvSubscriptions->setObjectName(QStringLiteral("lvSubscriptions"));
    lvSubscriptions->setAccessibleName(QStringLiteral("Subscriptions"));
    lvSubscriptions->setHeaderLabels({QStringLiteral("Report"), QStringLiteral("Recipients"),
                                      QStringLiteral("When"), QStringLiteral("With")});
    lvSubscriptions->setRootIsDecorated(false);
    lvSubscriptions->setAllColumnsShowFocus(true);
    lvSubscriptions->setUniformRowHeights(true);
    lvSubscriptions->setSortingEnabled(true);
    lvSubscriptions->header()->setObjectName(QStringLiteral("hdrSubscriptions"));
    lvSubscriptions->header()->setStretchLastSection(false);
    lvSubscriptions->header()->setSectionResizeMode(RecipientsColumn, QHeaderView::Stretch);
    const int character = fontMetrics().averageCharWidth();
    lvSubscriptions->setColumnWidth(ReportColumn, 32 * character);
    lvSubscriptions->setColumnWidth(WhenColumn, 22 * character);
    lvSubscriptions->setColumnWidth(WithColumn, 12 * character);
    lvSubscriptions->sortByColumn(ReportColumn, Qt::AscendingOrder);
    txtFailures->setObjectName(QStringLiteral("txtFailures"));
    txtFailures->setToolTip(QStringLiteral("They get a mail whenever a run fails, whatever the "
                                           "report; several addresses with commas"));
    txtFailures->setPlaceholderText(QStringLiteral("nobody"));

    auto *search = new QLabel(QStringLiteral("Searc&h:"));
    search->setBuddy(txtSearch);
    auto *failures = new QLabel(QStringLiteral("When any run fa&ils:"));
    failures->setBuddy(txtFailures);
    QPushButton *cmdAdd = newButton(QStringLiteral("cmdSubscriptionAdd"), QStringLiteral("&Add..."),
                                    QStringLiteral("Sends a report to somebody"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(lblNone, 1);
    buttons->addWidget(cmdAdd);
    buttons->addWidget(cmdChange);
    buttons->addWidget(cmdRemove);
    auto *layout = new QGridLayout(this);
    layout->addWidget(search, 0, 0);
    layout->addWidget(txtSearch, 0, 1);
    layout->addWidget(lvSubscriptions, 1, 0, 1, 2);
    layout->addLayout(buttons, 2, 0, 1, 2);
    layout->addWidget(failures, 3, 0);
    layout->addWidget(txtFailures, 3, 1);
    layout->setRowStretch(1, 1);
    layout->setColumnStretch(1, 1);

    connect(txtSearch, &QLineEdit::textChanged, this, &SubscriptionList::filter);
    connect(cmdAdd, &QPushButton::clicked, this, &SubscriptionList::add);
    connect(cmdChange, &QPushButton::clicked, this, &SubscriptionList::change);
    connect(cmdRemove, &QPushButton::clicked, this, &SubscriptionList::remove);
    connect(lvSubscriptions, &QTreeWidget::itemDoubleClicked, this, &SubscriptionList::change);
    connect(lvSubscriptions, &QTreeWidget::currentItemChanged, this, &SubscriptionList::showStates);
    connect(txtFailures, &QLineEdit::textChanged, this, &SubscriptionList::changed);
    auto *removal = new QAction(lvSubscriptions);
    removal->setShortcut(QKeySequence::Delete);
    removal->setShortcutContext(Qt::WidgetShortcut);
    lvSubscriptions->addAction(removal);
    connect(removal, &QAction::triggered, this, &SubscriptionList::remove);
    fill({});
}

void SubscriptionList::load(const MailSettings &settings)
{
    m_subscriptions = settings.subscriptions;
    txtFailures->setText(settings.failureRecipients);
    fill({});
}

void SubscriptionList::store(MailSettings &settings) const
{
    settings.subscriptions = m_subscriptions;
    settings.failureRecipients = txtFailures->text().trimmed();
}

QString SubscriptionList::contentText() const
{
    QStringList texts(txtFailures->text().trimmed());
    for (const MailSubscription &each : m_subscriptions)
        texts.append(each.id + u'\n' + contentOf(each));
    return texts.join(QLatin1String("\n\n"));
}

QString SubscriptionList::inputError(QWidget *&field) const
{
    const QStringList faults = recipientFaults(txtFailures->text());
    if (faults.isEmpty())
        return {};
    field = txtFailures;
    return QLatin1String("Who hears of runs that fail: ") + faults.constFirst();
}

QStringList SubscriptionList::warnings() const
{
    QStringList warnings;
    for (const MailSubscription &each : m_subscriptions) {
        const auto report = definitions().gReportDefs.find(each.reportId);
        if (!report)
            warnings.append(QStringLiteral("A subscription is of a report that is not defined any "
                                           "more: nothing is sent for it."));
        else if (each.pdf && !report->Pdf)
            warnings.append(QStringLiteral("\u201c%1\u201d makes no PDF file that could be sent.")
                                .arg(report->ReportTitle));
    }
    warnings.removeDuplicates();
    return warnings;
}

/// Lists all subscriptions, and selects one.
void SubscriptionList::fill(const QString &currentId)
{
    lvSubscriptions->clear();
    for (const MailSubscription &each : m_subscriptions) {
        const auto report = definitions().gReportDefs.find(each.reportId);
        auto *row = new Row({report ? report->ReportTitle
                                    : QStringLiteral("Not defined any more: %1").arg(each.reportId),
                             each.recipients, occasionText(each), attachmentText(each)});
        if (!report)
            row->setIcon(ReportColumn, style()->standardIcon(QStyle::SP_MessageBoxWarning));
        row->setData(ReportColumn, idRole, each.id);
        for (const int column : {ReportColumn, RecipientsColumn})
            row->setToolTip(column, wrappingToolTip(row->text(column)));
        lvSubscriptions->addTopLevelItem(row);
        if (each.id == currentId)
            lvSubscriptions->setCurrentItem(row);
    }
    filter();
    if (!lvSubscriptions->currentItem() && lvSubscriptions->topLevelItemCount() > 0)
        lvSubscriptions->setCurrentItem(lvSubscriptions->topLevelItem(0));
    Q_EMIT changed();
}

/// Hides what does not hold all words of the search.
void SubscriptionList::filter()
{
    const QStringList words =
        foldedText(txtSearch->text()).simplified().split(u' ', Qt::SkipEmptyParts);
    int shown = 0;
    for (int index = 0; index < lvSubscriptions->topLevelItemCount(); ++index) {
        QTreeWidgetItem *row = lvSubscriptions->topLevelItem(index);
        const QString text =
            foldedText(row->text(ReportColumn) + u'\n' + row->text(RecipientsColumn));
        const bool matches = std::all_of(words.begin(), words.end(), [&text](const QString &word) {
            return text.contains(word);
        });
        row->setHidden(!matches);
        shown += matches ? 1 : 0;
    }
    if (m_subscriptions.empty())
        lblNone->setText(QStringLiteral("Nobody gets a report yet: Add chooses a report and who "
                                        "gets it."));
    else
        lblNone->setText(shown == 0 ? QStringLiteral("No subscription has these words.")
                                    : QString());
    showStates();
}

void SubscriptionList::showStates()
{
    const bool isChosen = current() != nullptr;
    cmdChange->setEnabled(isChosen);
    cmdRemove->setEnabled(isChosen);
}

/// The selected subscription that is not hidden by the search, or null.
MailSubscription *SubscriptionList::current()
{
    const QTreeWidgetItem *row = lvSubscriptions->currentItem();
    if (!row || row->isHidden())
        return nullptr;
    const QString id = row->data(ReportColumn, idRole).toString();
    const auto found = std::find_if(m_subscriptions.begin(), m_subscriptions.end(),
                                    [&id](const MailSubscription &each) { return each.id == id; });
    return found == m_subscriptions.end() ? nullptr : &*found;
}

void SubscriptionList::add()
{
    MailSubscription subscription;
    subscription.id = NewID();
    edit(subscription);
}

void SubscriptionList::change()
{
    if (const MailSubscription *chosen = current())
        edit(*chosen);
}

/// Opens the editor on a subscription; a new one is added when it is accepted.
void SubscriptionList::edit(const MailSubscription &subscription)
{
    frmMailSubscription editor(this);
    editor.load(subscription);
    editor.exec();
    if (editor.tag() != u"SAVE")
        return;
    MailSubscription changed = subscription;
    editor.store(changed);
    MailSubscription *known = current();
    if (known && known->id == changed.id) {
        *known = changed;
    } else {
        m_subscriptions.push_back(changed);
        txtSearch->clear(); // it might hide the new one
    }
    fill(changed.id);
}

void SubscriptionList::remove()
{
    const MailSubscription *chosen = current();
    if (!chosen ||
        !askYesNo(this, QStringLiteral("Remove Subscription"),
                  QStringLiteral("Send \u201c%1\u201d to %2 no more?")
                      .arg(lvSubscriptions->currentItem()->text(ReportColumn), chosen->recipients)))
        return;
    m_subscriptions.erase(m_subscriptions.begin() + (chosen - m_subscriptions.data()));
    fill({});
}
