#include "ui/editors/frmScheduleDefEditor.h"

#include "base/Clock.h"
#include "definitions/Advice.h"
#include "definitions/Definitions.h"
#include "definitions/Usage.h"
#include "ui/common/Messages.h"
#include "ui/common/Widgets.h"
#include "ui/editors/ChartPeriod.h"
#include "ui/editors/CheckListCombo.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <limits>

namespace {

constexpr int runsShown = 5;

QString keyOf(int number, bool twoDigits)
{
    return u'k' + QString::number(number).rightJustified(twoDigits ? 2 : 1, u'0');
}

QString weekDayName(int day)
{
    return QLocale().standaloneDayName(day == 1 ? 7 : day - 1, QLocale::LongFormat);
}

QString monthName(int month)
{
    return QLocale().standaloneMonthName(month, QLocale::LongFormat);
}

bool namesLastDay(const clsScheduleDef &schedule)
{
    return listedNumbers(schedule.MonthDayList, ListForm::PlainOrTwoDigits)[lastDay];
}

/// The option for a code; -1 if there is none.
int optionOf(qint32 schedInterval)
{
    switch (schedInterval) {
    case DailyOld:
    case Daily:
        return 0;
    case Weekly:
        return 1;
    case Monthly:
        return 2;
    case Yearly:
        return 3;
    case NotScheduled:
        return 4;
    default:
        return -1;
    }
}

constexpr std::array optionCodes{Daily, Weekly, Monthly, Yearly, NotScheduled};

QString presetQuestion(int option)
{
    switch (option) {
    case 0:
        return QStringLiteral("Set schedule to every day at 00:00");
    case 1:
        return QStringLiteral("Set schedule to every Sunday at 00:00");
    case 2:
        return QStringLiteral("Set schedule to 1st of every month at 00:00");
    default:
        return QStringLiteral("Set schedule to every %1 1st at 00:00").arg(monthName(1));
    }
}

QString textWithoutRuns(const clsScheduleDef &schedule)
{
    if (schedule.SchedInterval == NotScheduled)
        return QStringLiteral("Not scheduled: reports run only when you run them.");
    return QStringLiteral("This schedule never runs: %1.").arg(whyItNeverRuns(schedule));
}

} // namespace

frmScheduleDefEditor::frmScheduleDefEditor(QWidget *parent)
    : EditorDialog(QStringLiteral("frmScheduleDefEditor"), QStringLiteral("schedule-editor.html"),
                   parent)
    , txtScheduleName(new QLineEdit)
    , optSchedInterval(new QButtonGroup(this))
    , sscomboHours(new CheckListCombo(QStringLiteral("sscomboHours")))
    , sscomboWeekDays(new CheckListCombo(QStringLiteral("sscomboWeekDays")))
    , sscomboMonthDay(new CheckListCombo(QStringLiteral("sscomboMonthDay")))
    , sscomboMonths(new CheckListCombo(QStringLiteral("sscomboMonths")))
    , m_lists{List{sscomboHours, &clsScheduleDef::HourList, ListForm::PlainOrTwoDigits, {}},
              List{sscomboWeekDays, &clsScheduleDef::WeekDayList, ListForm::Plain, {}},
              List{sscomboMonthDay, &clsScheduleDef::MonthDayList, ListForm::PlainOrTwoDigits, {}},
              List{sscomboMonths, &clsScheduleDef::MonthList, ListForm::PlainOrTwoDigits, {}}}
{
    setWindowTitle(QStringLiteral("Add/Edit Schedule Definition " VANTREL_VERSION));
    InitializeSelectionCombos();
    txtScheduleName->setObjectName(QStringLiteral("txtScheduleName"));
    auto *name = new QFormLayout;
    name->addRow(QStringLiteral("&Name"), txtScheduleName);
    auto *layout = new QVBoxLayout(content());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(name);
    layout->addWidget(intervalBox());
    layout->addWidget(listsBox());
    layout->addWidget(runsBox());
    layout->addStretch(1);

    connect(optSchedInterval, &QButtonGroup::idToggled, this, [this] {
        setControlStates();
        showNextRuns();
    });
    for (const List &list : m_lists)
        connect(list.box, &CheckListCombo::checksChanged, this,
                &frmScheduleDefEditor::showNextRuns);
    connect(chkReschedule, &QCheckBox::toggled, this, &frmScheduleDefEditor::setControlStates);
    connect(cmdAutoSet, &QPushButton::clicked, this, &frmScheduleDefEditor::autoSet);
    connect(txtScheduleName, &QLineEdit::textChanged, this, &frmScheduleDefEditor::showWarnings);
    load(clsScheduleDef());
}

void frmScheduleDefEditor::InitializeSelectionCombos()
{
    for (int hour = 0; hour < 24; ++hour)
        sscomboHours->addEntry(keyOf(hour, true), keyOf(hour, true).mid(1) + QLatin1String(":00"));
    for (int day = 1; day <= 7; ++day)
        sscomboWeekDays->addEntry(keyOf(day, false), weekDayName(day));
    for (int month = 1; month <= 12; ++month)
        sscomboMonths->addEntry(keyOf(month, true), monthName(month));
    for (int day = 1; day < lastDay; ++day)
        sscomboMonthDay->addEntry(keyOf(day, true), QString::number(day));
    sscomboMonthDay->addEntry(
        keyOf(lastDay, true), QStringLiteral("Last"),
        QStringLiteral("Kept for older files: this day never comes, so nothing runs on it. For the "
                       "end of a month check day 1, with a chart of the last month."));
}

QWidget *frmScheduleDefEditor::intervalBox()
{
    auto *box = new QGroupBox(QStringLiteral("Runs"));
    auto *layout = new QHBoxLayout(box);
    const QStringList texts{QStringLiteral("&Daily"), QStringLiteral("&Weekly"),
                            QStringLiteral("&Monthly"), QStringLiteral("&Yearly"),
                            QStringLiteral("No&t scheduled")};
    for (int option = OptDaily; option <= OptNotScheduled; ++option) {
        auto *button = new QRadioButton(texts[option]);
        button->setObjectName(QStringLiteral("optSchedInterval%1").arg(option));
        optSchedInterval->addButton(button, option);
        layout->addWidget(button);
    }
    layout->addStretch(1);
    return box;
}

QWidget *frmScheduleDefEditor::listsBox()
{
    auto *box = new QGroupBox(QStringLiteral("On"));
    auto *form = new QFormLayout(box);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    const auto addRow = [form](const QString &name, const QString &text, QWidget *field) {
        auto *label = new QLabel(text);
        label->setObjectName(name);
        label->setBuddy(field);
        form->addRow(label, field);
        return label;
    };
    lblHours = addRow(QStringLiteral("lblHours"), QStringLiteral("&Hours"), sscomboHours);
    lblDays =
        addRow(QStringLiteral("lblDays"), QStringLiteral("Days of the w&eek"), sscomboWeekDays);
    lblMonthDays = addRow(QStringLiteral("lblMonthDays"), QStringLiteral("Day&s of the month"),
                          sscomboMonthDay);
    lblMonths = addRow(QStringLiteral("lblMonths"), QStringLiteral("M&onths"), sscomboMonths);

    cmdAutoSet = newButton(QStringLiteral("cmdAutoSet"), QStringLiteral("&Auto Set..."),
                           QStringLiteral("Check the usual hours, days and months"));
    auto *presets = new QHBoxLayout;
    presets->addWidget(cmdAutoSet);
    presets->addStretch(1);
    form->addRow(QString(), presets);

    chkReschedule =
        new QCheckBox(QStringLiteral("&Reschedule: pass over runs missed by more than"));
    chkReschedule->setObjectName(QStringLiteral("chkReschedule"));
    chkReschedule->setToolTip(
        QStringLiteral("Unchecked, a missed run is made up for, however late it is"));
    txtRescheduleTime = new QSpinBox;
    txtRescheduleTime->setObjectName(QStringLiteral("txtRescheduleTime"));
    lblReschedule = new QLabel(QStringLiteral("m&inutes"));
    lblReschedule->setObjectName(QStringLiteral("lblReschedule"));
    lblReschedule->setBuddy(txtRescheduleTime);
    auto *missed = new QHBoxLayout;
    missed->addWidget(chkReschedule);
    missed->addWidget(txtRescheduleTime);
    missed->addWidget(lblReschedule);
    missed->addStretch(1);
    form->addRow(missed);
    return box;
}

QWidget *frmScheduleDefEditor::runsBox()
{
    // The window keeps its size, whatever is checked.
    lblNextRuns = newTextLabel(QStringLiteral("lblNextRuns"), runsShown);
    lblHint = newTextLabel(QStringLiteral("lblHint"), 2);
    auto *box = new QGroupBox(QStringLiteral("Next five runs"));
    auto *layout = new QVBoxLayout(box);
    layout->addWidget(lblNextRuns);
    layout->addWidget(lblHint);
    return box;
}

void frmScheduleDefEditor::load(const clsScheduleDef &schedule)
{
    m_loaded = schedule;
    txtScheduleName->setText(schedule.ScheduleName);
    for (List &list : m_lists) {
        const ListedNumbers listed = listedNumbers(schedule.*list.text, list.form);
        QStringList keys = list.box->regularKeys();
        keys.removeIf([&listed](const QString &key) {
            return !listed.test(QStringView(key).mid(1).toUInt());
        });
        list.checked = keys;
        list.box->setCheckedKeys(keys);
    }
    chkReschedule->setChecked(schedule.Reschedule);
    txtRescheduleTime->setRange(
        std::clamp<int>(schedule.RescheduleTime, std::numeric_limits<qint16>::min(), 0),
        std::numeric_limits<qint16>::max());
    txtRescheduleTime->setValue(schedule.RescheduleTime);

    optSchedInterval->setExclusive(false); // so that none can be selected
    for (QAbstractButton *button : optSchedInterval->buttons())
        button->setChecked(optSchedInterval->id(button) == optionOf(schedule.SchedInterval));
    optSchedInterval->setExclusive(true);
    setControlStates();
    showNextRuns();
    showWarnings();
    markUnchanged();
}

void frmScheduleDefEditor::store(clsScheduleDef &schedule) const
{
    schedule.ScheduleName = txtScheduleName->text().trimmed();
    if (const int option = optSchedInterval->checkedId(); option != noOption)
        schedule.SchedInterval = optionCodes[static_cast<size_t>(option)];
    for (const List &list : m_lists) {
        QStringList keys = list.box->checkedKeys();
        if (keys == list.checked) {
            schedule.*list.text = m_loaded.*list.text;
            continue;
        }
        for (QString &key : keys)
            key.remove(0, 1);
        schedule.*list.text = keys.join(u',');
    }
    schedule.Reschedule = chkReschedule->isChecked();
    schedule.RescheduleTime = txtRescheduleTime->value();
}

QString frmScheduleDefEditor::contentText() const
{
    clsScheduleDef schedule = m_loaded;
    store(schedule);
    return schedule.XMLConfig();
}

QStringList frmScheduleDefEditor::warnings() const
{
    return sentences({sameTitleWarning(definitions().gScheduleDefs, &clsScheduleDef::ScheduleName,
                                       m_loaded.ScheduleID, txtScheduleName->text())});
}

QString frmScheduleDefEditor::inputError(QWidget *&field) const
{
    field = txtScheduleName;
    const QString name = txtScheduleName->text().trimmed();
    if (name.isEmpty())
        return QStringLiteral("Please give the schedule a name.");
    // One that shares a name already keeps it.
    const Collection<clsScheduleDef> &all = definitions().gScheduleDefs;
    const bool isKept = all.contains(m_loaded.ScheduleID) && name == m_loaded.ScheduleName;
    return isKept ? QString()
                  : titleFault(all, &clsScheduleDef::ScheduleName, m_loaded.ScheduleID, name);
}

void frmScheduleDefEditor::setControlStates()
{
    const int option = optSchedInterval->checkedId();
    const bool scheduled = option != OptNotScheduled;
    sscomboWeekDays->setEnabled(option == OptWeekly);
    for (QWidget *control : std::initializer_list<QWidget *>{
             lblDays, lblMonthDays, lblHours, lblMonths, lblReschedule, chkReschedule, cmdAutoSet})
        control->setEnabled(scheduled);
    txtRescheduleTime->setEnabled(scheduled && chkReschedule->isChecked());
}

void frmScheduleDefEditor::showNextRuns()
{
    clsScheduleDef schedule = m_loaded;
    store(schedule);
    const QDateTime from = now();
    QStringList lines;
    for (const QDateTime &run : nextRuns(schedule, from, runsShown))
        lines.append(momentInWords(run));
    lblNextRuns->setText(lines.isEmpty() ? textWithoutRuns(schedule) : lines.join(u'\n'));

    QStringList hints;
    if (!lines.isEmpty() && schedule.SchedInterval != Weekly && namesLastDay(schedule))
        hints.append(QStringLiteral("\u201cLast\u201d is checked, but that day never comes."));
    if (schedule.SchedInterval == Weekly && sscomboMonthDay->checkedKeys().size() < lastDay - 1)
        hints.append(QStringLiteral("A weekly schedule does not look at the days of the month."));
    if (optSchedInterval->checkedId() == noOption)
        hints.append(
            QStringLiteral("The file holds a kind of schedule that is not known (code %1); "
                           "it runs by the days of the month.")
                .arg(m_loaded.SchedInterval));
    for (const List &list : m_lists) {
        if (list.box->isEnabled() && list.box->isChecked(CheckListCombo::noneKey))
            hints.append(QStringLiteral("\u201cNone\u201d is checked in a list: uncheck it to "
                                        "choose entries there."));
    }
    hints.removeDuplicates();
    lblHint->setText(hints.join(u'\n'));
}

void frmScheduleDefEditor::autoSet()
{
    const int option = optSchedInterval->checkedId();
    if (option == noOption) {
        showInformation(this, QStringLiteral("Auto Set Frequency"),
                        QStringLiteral("Please choose first whether the schedule runs daily, "
                                       "weekly, monthly or yearly."));
        return;
    }
    if (askYesNo(this, QStringLiteral("Auto Set Frequency"),
                 presetQuestion(option) + QLatin1String("\nAuto configure the scheduled dates?")))
        applyPreset(option);
}

void frmScheduleDefEditor::applyPreset(int option)
{
    const auto checkAll = [](CheckListCombo *box) {
        box->setCheckedKeys(QStringList(CheckListCombo::allKey) + box->regularKeys());
    };
    for (const List &list : m_lists)
        list.box->setCheckedKeys({});
    sscomboHours->setCheckedKeys({QStringLiteral("k00")});
    switch (option) {
    case OptDaily:
        checkAll(sscomboWeekDays);
        checkAll(sscomboMonthDay);
        checkAll(sscomboMonths);
        break;
    case OptWeekly:
        sscomboWeekDays->setCheckedKeys({QStringLiteral("k1")});
        checkAll(sscomboMonthDay);
        checkAll(sscomboMonths);
        break;
    case OptMonthly:
        sscomboMonthDay->setCheckedKeys({QStringLiteral("k01")});
        checkAll(sscomboMonths);
        break;
    default:
        sscomboMonths->setCheckedKeys({QStringLiteral("k01")});
        sscomboMonthDay->setCheckedKeys({QStringLiteral("k01")});
    }
}
