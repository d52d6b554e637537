#include "base/Clock.h"
#include "support/Answers.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/Controls.h"
#include "ui/editors/CheckListCombo.h"
#include "ui/editors/frmScheduleDefEditor.h"

#include <QAbstractItemView>
#include <QButtonGroup>

namespace {

const QString allMonthDays = "01,02,03,04,05,06,07,08,09,10,11,12,13,14,15,16,17,18,19,20,21,22,"
                             "23,24,25,26,27,28,29,30,31,32";
const QString allMonths = "01,02,03,04,05,06,07,08,09,10,11,12";

clsScheduleDef scheduleOf(qint32 kind, const QString &hours, const QString &weekDays,
                          const QString &monthDays, const QString &months)
{
    clsScheduleDef schedule;
    schedule.SchedInterval = SchedIntervalCode(kind);
    schedule.HourList = hours;
    schedule.WeekDayList = weekDays;
    schedule.MonthDayList = monthDays;
    schedule.MonthList = months;
    return schedule;
}

const QStringList listNames = {"sscomboHours", "sscomboWeekDays", "sscomboMonthDay",
                               "sscomboMonths"};
QStringList listsOf(const clsScheduleDef &schedule)
{
    return {schedule.HourList, schedule.WeekDayList, schedule.MonthDayList, schedule.MonthList};
}

struct Editor : Controls<frmScheduleDefEditor>
{
    explicit Editor(const clsScheduleDef &schedule)
        : before(schedule)
    {
        load(schedule);
    }
    clsScheduleDef result() const { return stored(before); }
    QButtonGroup *options() const { return findChild<QButtonGroup *>(); }
    CheckListCombo *list(const QString &name) const
    {
        return find<CheckListCombo>(qPrintable(name));
    }

    const clsScheduleDef before;
};

} // namespace

class tst_frmScheduleDefEditor : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_sandbox;

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English)); }
    void init() { m_sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { m_sandbox.reset(); }

    void kinds_data()
    {
        const Rows<int, int, int> row("code", "option", "written");
        row("not scheduled", NotScheduled, 4, 0);
        row("daily of old", 1, 0, 2);
        row("weekly", Weekly, 1, 3);
        row("unknown", 6, -1, 6);
    }
    void kinds()
    {
        QFETCH(int, code);
        const Editor editor(scheduleOf(code, "1", "1", "1", "1"));
        QTEST(editor.options()->checkedId(), "option");
        QTEST(int(editor.result().SchedInterval), "written");
        QVERIFY(!editor.hasChanges());
        QCOMPARE(editor.list("sscomboWeekDays")->isEnabled(), code == Weekly);
        QCOMPARE(editor.find<QCheckBox>("chkReschedule")->isEnabled(), code != NotScheduled);
        editor.options()->button(3)->click();
        QCOMPARE(editor.result().SchedInterval, qint32(Yearly));
        QVERIFY(!editor.list("sscomboWeekDays")->isEnabled());
    }

    void lists_data()
    {
        const Rows<QString, QString, QString, QString, QString> row("list", "text", "summary",
                                                                    "clicked", "written");
        row("untouched text stays", "sscomboHours", " 7,99,x,23", "07:00, 23:00", "", " 7,99,x,23");
        row("two digits", "sscomboHours", "7,99,x,23", "07:00, 23:00", "k00", "00,07,23");
        row("taken back", "sscomboHours", "7,99", "07:00", "k08 k08", "7,99");
        row("ALL off", "sscomboMonths", "", "None", "kAll kAll", allMonths);
        row("ALL holds", "sscomboMonths", "", "None", "kAll k03", allMonths);
        row("None holds", "sscomboMonths", "1", "January", "kNone k03", "");
        row("ALL under None", "sscomboMonths", allMonths, "All", "kNone kAll", "");
        row("both forms", "sscomboMonths", "7,07", "July", "k01", "01,07");
        row("week days are plain", "sscomboWeekDays", "0,01,2,7", "Monday, Saturday", "k1",
            "1,2,7");
        row("Last", "sscomboMonthDay", "32", "Last", "k01", "01,32");
        row("ALL takes Last", "sscomboMonthDay", "", "None", "kAll", allMonthDays);
    }
    void lists()
    {
        QFETCH(QString, list);
        QFETCH(QString, text);
        QFETCH(QString, clicked);
        QFETCH(QString, written);
        const Editor editor(scheduleOf(Weekly, text, text, text, text));
        QTEST(editor.list(list)->summary(), "summary");
        QVERIFY(!editor.hasChanges());
        for (const QString &key : clicked.split(u' ', Qt::SkipEmptyParts))
            editor.list(list)->click(key);
        QCOMPARE(editor.hasChanges(), written != text);
        QStringList expected = listsOf(editor.before);
        expected[listNames.indexOf(list)] = written;
        QCOMPARE(listsOf(editor.result()), expected);
    }

    void presets_data()
    {
        const Rows<int, QString, QString> row("option", "question", "lists");
        row("daily", 0, "every day", "00/1,2,3,4,5,6,7/" + allMonthDays + u'/' + allMonths);
        row("weekly", 1, "every Sunday", "00/1/" + allMonthDays + u'/' + allMonths);
        row("monthly", 2, "1st of every month", "00//01/" + allMonths);
        row("yearly", 3, "every January 1st", "00//01/01");
    }
    void presets()
    {
        QFETCH(int, option);
        QFETCH(QString, question);
        const Editor editor(scheduleOf(9, "5", "3", "9", "4"));
        Answers answers;
        answers.click(QMessageBox::Ok);
        editor.click("cmdAutoSet");
        QVERIFY(answers.said.value(0).contains("choose first"));
        editor.options()->button(option)->click();
        for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
            QCOMPARE(listsOf(editor.result()), listsOf(editor.before));
            answers.click(answer);
            editor.click("cmdAutoSet");
            QVERIFY2(answers.said.last().contains(question), qPrintable(answers.said.last()));
        }
        QTEST(listsOf(editor.result()).join(u'/'), "lists");
    }

    void runs_data()
    {
        const Rows<clsScheduleDef, QString, QString> row("schedule", "shown", "hint");
        row("Last among others", scheduleOf(Daily, "6,18", "", "24,32", "12"),
            "Thursday 2026-12-24 06:00\nThursday 2026-12-24 18:00\nFriday 2027-12-24 06:00",
            "never comes");
        row("not scheduled", scheduleOf(NotScheduled, "0", "", "1", "1"), "Not scheduled", "");
        row("no week day", scheduleOf(Weekly, "0", "01", "1", "1"),
            "never runs: no day of the week", "does not look at the days of the month");
        row("30 February", scheduleOf(Yearly, "0", "", "30,31", "2"), "none of the checked days",
            "");
        row("unknown kind", scheduleOf(7, "0", "", "22", "11"), "2026-11-22 00:00", "code 7");
    }
    void runs()
    {
        QFETCH(clsScheduleDef, schedule);
        QFETCH(QString, shown);
        QFETCH(QString, hint);
        const FrozenClock clock("2026-11-21T14:20:00");
        const Editor editor(schedule);
        const QString text = editor.text("lblNextRuns");
        QVERIFY2(text.contains(shown), qPrintable(text));
        QVERIFY(hint.isEmpty() == editor.text("lblHint").isEmpty());
        QVERIFY2(editor.text("lblHint").contains(hint), qPrintable(editor.text("lblHint")));
    }

    void roundTrip()
    {
        clsScheduleDef schedule = scheduleOf(Weekly, "01,23", "2,7", "05,31", "12");
        schedule.ScheduleName = "Nightly";
        schedule.Reschedule = true;
        schedule.RescheduleTime = 32'767; // what a file can hold
        const Editor shown(schedule);
        shown.checkLetters();
        const Editor typed({});
        typed.find<QLineEdit>("txtScheduleName")->setText("  ");
        QVERIFY(typed.error().contains("name"));
        typed.copyFields(shown);
        for (const QString &name : listNames)
            typed.list(name)->setCheckedKeys(shown.list(name)->checkedKeys());
        clsScheduleDef empty;
        empty.ScheduleID = schedule.ScheduleID;
        QCOMPARE(typed.stored(empty).XMLConfig(), schedule.XMLConfig());
        schedule.RescheduleTime = -3; // what no field shows stays
        QCOMPARE(Editor(schedule).result().RescheduleTime, -3);
    }
};

QTEST_MAIN(tst_frmScheduleDefEditor)
#include "tst_frmScheduleDefEditor.moc"
