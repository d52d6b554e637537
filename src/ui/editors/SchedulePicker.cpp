#include "ui/editors/SchedulePicker.h"

#include "base/Clock.h"
#include "definitions/Definitions.h"
#include "ui/common/NaturalSort.h"
#include "ui/common/Widgets.h"
#include "ui/editors/EditDefinition.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include <map>

namespace {

constexpr int runsShown = 5;
constexpr int idRole = Qt::UserRole;

QString label(const clsScheduleDef &schedule)
{
    if (schedule.SchedInterval == NotScheduled)
        return schedule.ScheduleName + QLatin1String(" (not scheduled)");
    if (!everRuns(schedule))
        return schedule.ScheduleName + QLatin1String(" (never runs)");
    return schedule.ScheduleName;
}

QString runText(const QDateTime &slot)
{
    const QLocale locale;
    return locale.toString(slot.date(), QStringLiteral("ddd ")) +
           locale.toString(slot.date(), QLocale::ShortFormat) + QLatin1String("  ") +
           slot.toString(QStringLiteral("HH:mm"));
}

} // namespace

SchedulePicker::SchedulePicker(QWidget *parent)
    : QWidget(parent)
    , lvSchedules(new QListWidget)
    , cmdScheduleModify(
          newButton(QStringLiteral("cmdScheduleModify"), QStringLiteral("Cha&nge..."),
                    QStringLiteral("Changes the schedule for all reports that use it")))
    , lvNextRuns(new QListWidget)
{
    lvSchedules->setObjectName(QStringLiteral("lvSchedules"));
    lvSchedules->setToolTip(QStringLiteral(
        "The schedules under which automated reporting runs the report; none: on request only"));
    lvSchedules->setAccessibleName(QStringLiteral("When to run"));
    lvNextRuns->setAccessibleName(QStringLiteral("Next runs"));
    lvNextRuns->setObjectName(QStringLiteral("lvNextRuns"));
    lvNextRuns->setSelectionMode(QAbstractItemView::NoSelection);
    lvNextRuns->setWordWrap(false); // a line each; the tool tip has the rest
    lvNextRuns->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    lvNextRuns->setToolTip(QStringLiteral("The next five runs of all selected schedules together"));
    for (QListWidget *list : {lvSchedules, lvNextRuns})
        list->setMinimumHeight(4 * fontMetrics().height());
    auto *schedulesLabel = new QLabel(QStringLiteral("&When to run:"));
    schedulesLabel->setBuddy(lvSchedules);
    auto *runsLabel = new QLabel(QStringLiteral("Ne&xt runs:"));
    runsLabel->setBuddy(lvNextRuns);
    auto *cmdScheduleAdd = newButton(QStringLiteral("cmdScheduleAdd"), QStringLiteral("A&dd..."),
                                     QStringLiteral("Defines a new schedule and selects it"));

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdScheduleAdd);
    buttons->addWidget(cmdScheduleModify);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(schedulesLabel);
    layout->addWidget(lvSchedules, 3);
    layout->addLayout(buttons);
    layout->addWidget(runsLabel);
    layout->addWidget(lvNextRuns, 2);

    connect(cmdScheduleAdd, &QPushButton::clicked, this, &SchedulePicker::add);
    connect(cmdScheduleModify, &QPushButton::clicked, this, &SchedulePicker::change);
    connect(lvSchedules, &QListWidget::itemDoubleClicked, this, &SchedulePicker::change);
    connect(lvSchedules, &QListWidget::itemChanged, this, &SchedulePicker::showRuns);
    connect(lvSchedules, &QListWidget::currentItemChanged, this, [this] {
        cmdScheduleModify->setEnabled(definitions().gScheduleDefs.contains(currentId()));
    });
    fill({}, {});
}

void SchedulePicker::setSelection(const Collection<clsReportSchedule> &schedules,
                                  const QString &reportId)
{
    m_reportId = reportId;
    m_former = schedules;
    QStringList ids;
    for (const auto &schedule : schedules)
        ids.append(schedule->ScheduleID);
    fill(ids, currentId());
}

Collection<clsReportSchedule> SchedulePicker::selection() const
{
    Collection<clsReportSchedule> schedules;
    for (const QString &id : checkedIds()) {
        auto schedule = std::make_shared<clsReportSchedule>();
        schedule->ScheduleID = id;
        const auto former = m_former.find(id);
        schedule->LastRunDate = former ? former->LastRunDate : now();
        schedules.add(id, schedule);
    }
    return schedules;
}

QString SchedulePicker::selectionText() const
{
    QStringList ids = checkedIds();
    ids.sort();
    return ids.join(u'\n');
}

/// Lists all schedules by name, after those that are no longer defined.
void SchedulePicker::fill(const QStringList &checked, const QString &current)
{
    lvSchedules->clear();
    for (const auto &former : m_former) {
        if (!definitions().gScheduleDefs.contains(former->ScheduleID))
            addRow(former->ScheduleID, {}, checked.contains(former->ScheduleID));
    }
    for (const auto &schedule :
         sortedNaturally(definitions().gScheduleDefs, &clsScheduleDef::ScheduleName))
        addRow(schedule->ScheduleID, label(*schedule),
               checked.contains(schedule->ScheduleID, Qt::CaseInsensitive));
    lvSchedules->setCurrentRow(0);
    for (int row = 0; row < lvSchedules->count(); ++row) {
        if (lvSchedules->item(row)->data(idRole).toString() == current)
            lvSchedules->setCurrentRow(row);
    }
    cmdScheduleModify->setEnabled(definitions().gScheduleDefs.contains(currentId()));
    showRuns();
}

/// `name`: empty for a schedule that is not defined.
void SchedulePicker::addRow(const QString &id, const QString &name, bool checked)
{
    auto *row = new QListWidgetItem(
        name.isEmpty() ? QStringLiteral("Not defined any more: %1").arg(id) : name);
    if (name.isEmpty())
        row->setIcon(style()->standardIcon(QStyle::SP_MessageBoxWarning));
    row->setData(idRole, id);
    row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    row->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    lvSchedules->addItem(row);
}

QString SchedulePicker::currentId() const
{
    const QListWidgetItem *current = lvSchedules->currentItem();
    return current ? current->data(idRole).toString() : QString();
}

QStringList SchedulePicker::checkedIds() const
{
    QStringList ids;
    for (int row = 0; row < lvSchedules->count(); ++row) {
        const QListWidgetItem *item = lvSchedules->item(row);
        if (item->checkState() == Qt::Checked)
            ids.append(item->data(idRole).toString());
    }
    return ids;
}

void SchedulePicker::add()
{
    edit(clsScheduleDef());
}

void SchedulePicker::change()
{
    if (const auto schedule = definitions().gScheduleDefs.find(currentId()))
        edit(*schedule);
}

/// Opens the editor on a schedule; a new one is selected when it is saved.
void SchedulePicker::edit(const clsScheduleDef &schedule)
{
    const bool isNew = !definitions().gScheduleDefs.contains(schedule.ScheduleID);
    if (!editSchedule(schedule, this, m_reportId))
        return;
    QStringList checked = checkedIds();
    if (isNew)
        checked.append(schedule.ScheduleID);
    fill(checked, schedule.ScheduleID);
}

void SchedulePicker::showRuns()
{
    std::map<QDateTime, QStringList> runs; // schedules with the same hour are one run
    const QStringList ids = checkedIds();
    for (const QString &id : ids) {
        const auto schedule = definitions().gScheduleDefs.find(id);
        if (!schedule)
            continue;
        for (const QDateTime &slot : nextRuns(*schedule, now(), runsShown))
            runs[slot].append(schedule->ScheduleName);
    }
    lvNextRuns->clear();
    if (ids.isEmpty())
        lvNextRuns->addItem(
            QStringLiteral("No schedule is selected: the report runs on request only."));
    else if (runs.empty())
        lvNextRuns->addItem(QStringLiteral("The selected schedules never run."));
    for (const auto &[slot, names] : runs) {
        if (lvNextRuns->count() == runsShown)
            break;
        const QString text = runText(slot) + QLatin1String("  ") + names.join(QLatin1String(", "));
        lvNextRuns->addItem(text);
        lvNextRuns->item(lvNextRuns->count() - 1)->setToolTip(wrappingToolTip(text));
    }
    Q_EMIT changed();
}
