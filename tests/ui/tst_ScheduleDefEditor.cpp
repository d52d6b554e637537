#include "core/Clock.h"
#include "support/Answers.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/CheckListCombo.h"
#include "ui/Controls.h"
#include "ui/ScheduleDefEditor.h"

#include <QAbstractItemView>
#include <QButtonGroup>
#include <QSignalSpy>
#include <QWheelEvent>

namespace {

const QString allMonthDays = "01,02,03,04,05,06,07,08,09,10,11,12,13,14,15,16,17,18,19,20,21,22,"
                             "23,24,25,26,27,28,29,30,31,32";
const QString allMonths = "01,02,03,04,05,06,07,08,09,10,11,12";

clsScheduleDef scheduleOf(qint32 kind, const QString &hours, const QString &weekDays,
                          const QString &monthDays, const QString &months)
{
    clsScheduleDef schedule;
    schedule.SchedInterval = kind;
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

class tst_ScheduleDefEditor : public QObject
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
        row("not scheduled", 0, 4, 0);
        row("daily of old", 1, 0, 2);
        row("daily", 2, 0, 2);
        row("weekly", 3, 1, 3);
        row("monthly", 4, 2, 4);
        row("yearly", 5, 3, 5);
        row("unknown", 6, -1, 6);
        row("negative", -1, -1, -1);
    }
    void kinds()
    {
        QFETCH(int, code);
        const Editor editor(scheduleOf(code, "1", "1", "1", "1"));
        QTEST(editor.options()->checkedId(), "option");
        QTEST(editor.result().SchedInterval, "written");
        QVERIFY(!editor.hasChanges());
        QCOMPARE(editor.list("sscomboWeekDays")->isEnabled(), code == Weekly);
        for (const char *name : {"lblHours", "lblMonths", "chkReschedule", "cmdAutoSet"})
            QCOMPARE(editor.find<QWidget>(name)->isEnabled(), code != NotScheduled);
        auto *minutes = editor.find<QSpinBox>("txtRescheduleTime");
        QVERIFY(!minutes->isEnabled());
        editor.find<QCheckBox>("chkReschedule")->setChecked(true);
        QCOMPARE(minutes->isEnabled(), code != NotScheduled);
        editor.options()->button(3)->click();
        QCOMPARE(editor.result().SchedInterval, qint32(Yearly));
        QVERIFY(minutes->isEnabled() && !editor.list("sscomboWeekDays")->isEnabled());
    }

    void clicks_data()
    {
        const QStringList all{"a", "b", "c", "d"};
        const Rows<QStringList, QString, QStringList, QString> row("checked", "clicked", "after",
                                                                   "summary");
        row("one", {}, "b", {"b"}, "B");
        row("one off", {"a", "b"}, "b", {"a"}, "A");
        row("three", {"d", "a"}, "c", {"a", "c", "d"}, "A, C, D");
        row("last of all", {"a", "b", "c"}, "d", all, "All");
        row("ALL", {}, "kAll", all, "All");
        row("ALL off", {"kAll", "a"}, "kAll", {"a"}, "A");
        row("ALL holds", QStringList("kAll") + all, "b", all, "All");
        row("None", all, "kNone", {}, "None");
        row("None holds", {"kNone"}, "b", {}, "None");
        row("None goes before ALL", {"kAll", "a"}, "kNone", {}, "None");
        row("ALL under None", {"kNone", "a"}, "kAll", {}, "None");
        row("unknown", {"a"}, "z", {"a"}, "A");
    }
    void clicks()
    {
        QFETCH(QStringList, checked);
        QFETCH(QString, clicked);
        CheckListCombo box("box");
        for (const char *key : {"a", "b", "c", "d"})
            box.addEntry(key, QString(key).toUpper());
        box.setCheckedKeys(checked);
        const bool wasSpecial = box.isChecked(CheckListCombo::allKey);
        box.click(clicked);
        QTEST(box.checkedKeys(), "after");
        QTEST(box.summary(), "summary");
        QCOMPARE(box.isChecked(CheckListCombo::allKey), wasSpecial != (clicked == "kAll"));
    }

    void keyboardAndMouse()
    {
        Editor editor(scheduleOf(Daily, "", "", "", ""));
        editor.show();
        auto *hours = editor.list("sscomboHours");
        auto *popup = hours->view();
        QSignalSpy changes(hours, &CheckListCombo::checksChanged);
        QTest::keyClick(hours, Qt::Key_Down, Qt::AltModifier);
        QVERIFY(popup->isVisible());
        for (int i = 0; i < 4; ++i)
            QTest::keyClick(popup, Qt::Key_Down);
        QTest::keyClick(popup, Qt::Key_Space);
        const QModelIndex entry = hours->model()->index(5, 0);
        popup->scrollTo(entry);
        QTest::mouseClick(popup->viewport(), Qt::LeftButton, {}, popup->visualRect(entry).center());
        QVERIFY(popup->isVisible());
        QCOMPARE(hours->checkedKeys(), (QStringList{"k02", "k03"}));
        QTest::keyClick(popup, Qt::Key_Return);
        QVERIFY(!popup->isVisible());
        QTest::keyClick(hours, Qt::Key_Space);
        QVERIFY(popup->isVisible());
        QTest::keyClick(popup, Qt::Key_Escape);
        QVERIFY(!popup->isVisible());
        QVERIFY(editor.isVisible());

        // Nothing to be changed without the list.
        QWheelEvent wheel({5, 5}, hours->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, {}, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(hours, &wheel);
        QTest::keyClick(hours, Qt::Key_0);
        QTest::keyClick(hours, Qt::Key_Up);
        QCOMPARE(hours->summary(), "02:00, 03:00");
        QCOMPARE(changes.count(), 2);
    }

    void lists_data()
    {
        const Rows<QString, QString, QString, QString, QString> row("list", "text", "summary",
                                                                    "clicked", "written");
        row("untouched text stays", "sscomboHours", " 7,99,x,23", "07:00, 23:00", "", " 7,99,x,23");
        row("two digits", "sscomboHours", "7,99,x,23", "07:00, 23:00", "k00", "00,07,23");
        row("taken back", "sscomboHours", "7,99", "07:00", "k08 k08", "7,99");
        row("many", "sscomboHours", "23,0,6,7,12", "00:00, 06:00 and 3 more", "", "23,0,6,7,12");
        row("both forms", "sscomboMonths", "7,07", "July", "k01", "01,07");
        row("blank inside", "sscomboMonths", "1, 2", "January", "k03", "01,03");
        row("week days are plain", "sscomboWeekDays", "0,01,2,7", "Monday, Saturday", "k1",
            "1,2,7");
        row("Last", "sscomboMonthDay", "32", "Last", "k01", "01,32");
        row("first and last", "sscomboWeekDays", "1,7", "Sunday, Saturday", "k2", "1,2,7");
        row("ALL takes Last", "sscomboMonthDay", "", "None", "kAll", allMonthDays);
        row("None", "sscomboHours", "1,2", "01:00, 02:00", "kNone", "");
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
        const Rows<int, QString, QStringList> row("option", "question", "lists");
        row("daily", 0, "every day", {"00", "1,2,3,4,5,6,7", allMonthDays, allMonths});
        row("weekly", 1, "every Sunday", {"00", "1", allMonthDays, allMonths});
        row("monthly", 2, "1st of every month", {"00", "", "01", allMonths});
        row("yearly", 3, "every January 1st", {"00", "", "01", "01"});
    }
    void presets()
    {
        QFETCH(int, option);
        QFETCH(QString, question);
        const Editor editor(scheduleOf(Daily, "5", "3", "9", "4"));
        editor.options()->button(option)->click();
        Answers answers;
        answers.add([](QWidget &box) {
            QVERIFY(static_cast<QMessageBox &>(box).defaultButton()->text().contains("No"));
            box.close();
        });
        editor.click("cmdAutoSet");
        QCOMPARE(answers.said, QStringList("Auto Set Frequency: Set schedule to " + question +
                                           " at 00:00\nAuto configure the scheduled dates?"));
        QCOMPARE(listsOf(editor.result()), listsOf(editor.before));
        answers.click(QMessageBox::Yes);
        editor.click("cmdAutoSet");
        QTEST(listsOf(editor.result()), "lists");
        QCOMPARE(editor.list("sscomboMonths")->isChecked(CheckListCombo::allKey), option != 3);
        QVERIFY(editor.text("lblNextRuns").endsWith("00:00"));
    }

    void presetWithoutKind()
    {
        const Editor editor(scheduleOf(9, "5", "3", "9", "4"));
        Answers answers;
        answers.click(QMessageBox::Ok);
        editor.click("cmdAutoSet");
        QVERIFY(answers.said.value(0).contains("choose first"));
        QVERIFY(!editor.hasChanges());
    }

    void runs_data()
    {
        const QString months = "1,2,3,4,5,6,7,8,9,10,11,12";
        const Rows<clsScheduleDef, QString, QString> row("schedule", "shown", "hint");
        row("weekly", scheduleOf(Weekly, "6", "2", allMonthDays, months),
            "Monday 2026-11-23 06:00\nMonday 2026-11-30 06:00\nMonday 2026-12-07 06:00\n"
            "Monday 2026-12-14 06:00\nMonday 2026-12-21 06:00",
            "");
        row("Last among others", scheduleOf(Daily, "6,12,18", "", "24,32", "12"),
            "Thursday 2026-12-24 06:00\nThursday 2026-12-24 12:00\nThursday 2026-12-24 18:00\n"
            "Friday 2027-12-24 06:00\nFriday 2027-12-24 12:00",
            "never comes");
        row("a leap year between", scheduleOf(Yearly, "0", "", "1", "1"),
            "Friday 2027-01-01 00:00\nSaturday 2028-01-01 00:00\nMonday 2029-01-01 00:00", "");
        row("not scheduled", scheduleOf(NotScheduled, "0", "", "1", months), "Not scheduled", "");
        row("no hour", scheduleOf(Daily, "24", "", "1", months), "never runs: no hour", "");
        row("no month", scheduleOf(Daily, "0", "", "1", ""), "never runs: no month", "");
        row("no week day", scheduleOf(Weekly, "0", "01", "1", months),
            "never runs: no day of the week", "does not look at the days of the month");
        row("no day", scheduleOf(Daily, "0", "1", "", months), "never runs: no day of the month",
            "");
        row("Last alone", scheduleOf(Monthly, "0", "", "32", months),
            "\u201cLast\u201d is the only day", "");
        row("30 February", scheduleOf(Yearly, "0", "", "30,31", "2"), "none of the checked days",
            "");
        row("unknown kind", scheduleOf(7, "0", "", "22", "11"), "Sunday 2026-11-22 00:00",
            "code 7");
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
        const QString hints = editor.text("lblHint");
        QVERIFY2(hint.isEmpty() ? hints.isEmpty() : hints.contains(hint), qPrintable(hints));
    }

    void runsFollowClicks()
    {
        const FrozenClock clock("2026-11-21T14:20:00");
        const Editor editor(scheduleOf(Daily, "", "", allMonthDays, allMonths));
        editor.list("sscomboHours")->click("k15");
        QVERIFY(editor.text("lblNextRuns").startsWith("Saturday 2026-11-21 15:00"));
        editor.options()->button(1)->click();
        QVERIFY(editor.text("lblNextRuns").contains("never runs"));
        editor.list("sscomboWeekDays")->click("kNone");
        QVERIFY(editor.text("lblHint").contains("uncheck it"));
    }

    void keyboard()
    {
        Editor editor(scheduleOf(Weekly, "1", "1", "1", "1"));
        editor.checkLetters();
        QCOMPARE(editor.tabOrder(),
                 "txtScheduleName optSchedInterval1 sscomboHours sscomboWeekDays sscomboMonthDay "
                 "sscomboMonths cmdAutoSet chkReschedule cmdOK cmdCancel cmdHelp");
    }

    void roundTrip()
    {
        clsScheduleDef schedule = scheduleOf(Weekly, "01,23", "2,7", "05,31", "12");
        schedule.ScheduleName = "Nightly";
        schedule.Reschedule = true;
        schedule.RescheduleTime = 32'767; // what a file can hold
        const Editor shown(schedule);
        const Editor typed({});
        typed.copyFields(shown);
        for (const QString &name : listNames)
            typed.list(name)->setCheckedKeys(shown.list(name)->checkedKeys());
        clsScheduleDef empty;
        empty.ScheduleID = schedule.ScheduleID;
        QCOMPARE(typed.stored(empty).XMLConfig(), schedule.XMLConfig());
    }

    void minutesBelowZeroStay()
    {
        clsScheduleDef schedule = scheduleOf(Daily, "1", "1", "1", "1");
        schedule.RescheduleTime = -3;
        const Editor editor(schedule);
        QVERIFY(!editor.hasChanges());
        QCOMPARE(editor.result().RescheduleTime, -3);
        editor.find<QLineEdit>("txtScheduleName")->setText("  ");
        QVERIFY(editor.error().contains("name"));
    }
};

QTEST_MAIN(tst_ScheduleDefEditor)
#include "tst_ScheduleDefEditor.moc"
