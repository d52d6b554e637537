#include "core/Clock.h"
#include "support/Sandbox.h"
#include "ui/CheckListCombo.h"
#include "ui/ScheduleDefEditor.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

namespace {

QString numbers(int first, int last, int digits)
{
    QStringList list;
    for (int number = first; number <= last; ++number)
        list.append(QString::number(number).rightJustified(digits, u'0'));
    return list.join(u',');
}

const QString allWeekDays = numbers(1, 7, 1);
const QString allMonthDays = numbers(1, 32, 2);
const QString allMonths = numbers(1, 12, 2);

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

/// Answers the next message box; its texts are kept.
QString boxTitle, boxText, boxDefault;
void answerNext(QMessageBox::StandardButton button)
{
    boxTitle = boxText = boxDefault = QString();
    QTimer::singleShot(0, qApp, [button] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        boxTitle = box->windowTitle();
        boxText = box->text();
        boxDefault = box->defaultButton()->text();
        box->button(button)->click();
    });
}

/// The editor with its controls by name.
struct Editor : frmScheduleDefEditor
{
    template <typename T>
    T *find(const QString &name)
    {
        auto *found = findChild<T *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    QRadioButton *option(int index)
    {
        return find<QRadioButton>(QStringLiteral("optSchedInterval%1").arg(index));
    }
    CheckListCombo *list(const QString &name) { return find<CheckListCombo>(name); }
    int selected()
    {
        for (int index = 0; index < 5; ++index) {
            if (option(index)->isChecked())
                return index;
        }
        return -1;
    }
    clsScheduleDef stored(clsScheduleDef into = {}) const
    {
        store(into);
        return into;
    }
    QString error() const
    {
        QWidget *field = nullptr;
        return inputError(field);
    }
};

} // namespace

class tst_ScheduleDefEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English)); }

    void kinds_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("option");
        QTest::addColumn<int>("written");
        QTest::newRow("not scheduled") << 0 << 4 << 0;
        QTest::newRow("daily of old") << 1 << 0 << 2;
        QTest::newRow("daily") << 2 << 0 << 2;
        QTest::newRow("weekly") << 3 << 1 << 3;
        QTest::newRow("monthly") << 4 << 2 << 4;
        QTest::newRow("yearly") << 5 << 3 << 5;
        QTest::newRow("unknown") << 6 << -1 << 6;
        QTest::newRow("negative") << -1 << -1 << -1;
    }
    void kinds()
    {
        QFETCH(int, code);
        const Sandbox sandbox;
        Editor editor;
        const clsScheduleDef schedule = scheduleOf(code, "1", "1", "1", "1");
        editor.load(schedule);
        QTEST(editor.selected(), "option");
        QTEST(editor.stored(schedule).SchedInterval, "written");
        QVERIFY(!editor.hasChanges());
        editor.option(3)->click();
        QCOMPARE(editor.stored().SchedInterval, qint32(Yearly));
    }

    void controlStates_data()
    {
        QTest::addColumn<int>("option");
        QTest::addColumn<bool>("weekDays");
        QTest::addColumn<bool>("scheduled");
        QTest::newRow("daily") << 0 << false << true;
        QTest::newRow("weekly") << 1 << true << true;
        QTest::newRow("monthly") << 2 << false << true;
        QTest::newRow("yearly") << 3 << false << true;
        QTest::newRow("not scheduled") << 4 << false << false;
    }
    void controlStates()
    {
        QFETCH(int, option);
        QFETCH(bool, scheduled);
        const Sandbox sandbox;
        Editor editor;
        editor.load(scheduleOf(6, "1", "1", "1", "1"));
        editor.option(option)->click();
        QTEST(editor.list("sscomboWeekDays")->isEnabled(), "weekDays");
        for (const char *name :
             {"lblDays", "lblHours", "lblMonths", "lblReschedule", "chkReschedule", "cmdAutoSet"})
            QCOMPARE(editor.find<QWidget>(name)->isEnabled(), scheduled);
        auto *minutes = editor.find<QSpinBox>("txtRescheduleTime");
        QVERIFY(!minutes->isEnabled());
        editor.find<QCheckBox>("chkReschedule")->setChecked(true);
        QCOMPARE(minutes->isEnabled(), scheduled);
    }

    void clicks_data()
    {
        QTest::addColumn<QStringList>("checked");
        QTest::addColumn<QString>("clicked");
        QTest::addColumn<QStringList>("after"); // the regular ones
        QTest::addColumn<QString>("summary");
        const QStringList all{"a", "b", "c", "d"};
        QTest::newRow("one") << QStringList() << "b" << QStringList{"b"} << "B";
        QTest::newRow("one off") << QStringList{"a", "b"} << "b" << QStringList{"a"} << "A";
        QTest::newRow("three") << QStringList{"d", "a"} << "c" << QStringList{"a", "c", "d"}
                               << "A, C, D";
        QTest::newRow("last of all") << QStringList{"a", "b", "c"} << "d" << all << "All";
        QTest::newRow("ALL") << QStringList() << "kAll" << all << "All";
        QTest::newRow("ALL off") << QStringList{"kAll", "a"} << "kAll" << QStringList{"a"} << "A";
        QTest::newRow("ALL holds")
            << QStringList{"kAll", "a", "b", "c", "d"} << "b" << all << "All";
        QTest::newRow("None") << all << "kNone" << QStringList() << "None";
        QTest::newRow("None holds") << QStringList{"kNone"} << "b" << QStringList() << "None";
        QTest::newRow("None goes before ALL")
            << QStringList{"kAll", "a"} << "kNone" << QStringList() << "None";
        QTest::newRow("ALL under None")
            << QStringList{"kNone", "a"} << "kAll" << QStringList() << "None";
        QTest::newRow("unknown") << QStringList{"a"} << "z" << QStringList{"a"} << "A";
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

    void longSummary()
    {
        Editor editor;
        editor.load(scheduleOf(Daily, "23,0,6,7,12", "", "", ""));
        QCOMPARE(editor.list("sscomboHours")->summary(), "00:00, 06:00 and 3 more");
        QCOMPARE(editor.list("sscomboMonths")->summary(), "None");
    }

    void keyboardAndMouse()
    {
        const Sandbox sandbox;
        Editor editor;
        editor.load(scheduleOf(Daily, "", "", "", ""));
        editor.show();
        auto *hours = editor.list("sscomboHours");
        QSignalSpy changes(hours, &CheckListCombo::checksChanged);
        QTest::keyClick(hours, Qt::Key_Down, Qt::AltModifier);
        QVERIFY(hours->view()->isVisible());
        for (int i = 0; i < 4; ++i)
            QTest::keyClick(hours->view(), Qt::Key_Down);
        QTest::keyClick(hours->view(), Qt::Key_Space);
        QVERIFY(hours->view()->isVisible());
        QCOMPARE(hours->checkedKeys(), QStringList{"k02"});

        const QModelIndex entry = hours->model()->index(5, 0);
        hours->view()->scrollTo(entry);
        QTest::mouseClick(hours->view()->viewport(), Qt::LeftButton, {},
                          hours->view()->visualRect(entry).center());
        QVERIFY(hours->view()->isVisible());
        QCOMPARE(hours->checkedKeys(), (QStringList{"k02", "k03"}));
        QCOMPARE(changes.count(), 2);
        QTest::keyClick(hours->view(), Qt::Key_Return);
        QVERIFY(!hours->view()->isVisible());
        QTest::keyClick(hours, Qt::Key_Space);
        QVERIFY(hours->view()->isVisible());
        QTest::keyClick(hours->view(), Qt::Key_Escape);
        QVERIFY(!hours->view()->isVisible());
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

    void entries()
    {
        Editor editor;
        const auto textsOf = [&](const char *name) {
            QStringList texts;
            for (int row = 0; row < editor.list(name)->count(); ++row)
                texts.append(editor.list(name)->itemText(row));
            return texts;
        };
        QCOMPARE(textsOf("sscomboHours").mid(0, 4), (QStringList{"ALL", "None", "00:00", "01:00"}));
        QCOMPARE(textsOf("sscomboHours").last(), "23:00");
        QCOMPARE(textsOf("sscomboWeekDays"),
                 (QStringList{"ALL", "None", "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday",
                              "Friday", "Saturday"}));
        QCOMPARE(textsOf("sscomboMonths").mid(2, 2), (QStringList{"January", "February"}));
        QCOMPARE(textsOf("sscomboMonthDay").mid(31), (QStringList{"30", "31", "Last"}));
        QCOMPARE(editor.windowTitle(), "Add/Edit Schedule Definition 6.0.0");
    }

    void lists_data()
    {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("checked");
        QTest::addColumn<QString>("clicked");
        QTest::addColumn<QString>("written");
        QTest::newRow("untouched text stays") << "sscomboHours"
                                              << " 7,99,x,23" << QStringList{"k07", "k23"} << ""
                                              << " 7,99,x,23";
        QTest::newRow("two digits") << "sscomboHours"
                                    << "7,99,x,23" << QStringList{"k07", "k23"} << "k00"
                                    << "00,07,23";
        QTest::newRow("both forms") << "sscomboMonths"
                                    << "7,07" << QStringList{"k07"} << "k01"
                                    << "01,07";
        QTest::newRow("blank inside") << "sscomboMonths"
                                      << "1, 2" << QStringList{"k01"} << "k03"
                                      << "01,03";
        QTest::newRow("week days are plain") << "sscomboWeekDays"
                                             << "0,01,2,7" << QStringList{"k2", "k7"} << "k1"
                                             << "1,2,7";
        QTest::newRow("Last") << "sscomboMonthDay"
                              << "1" << QStringList{"k01"} << "k32"
                              << "01,32";
        QTest::newRow("ALL takes Last") << "sscomboMonthDay"
                                        << "" << QStringList() << "kAll" << allMonthDays;
        QTest::newRow("None") << "sscomboHours"
                              << "1,2" << QStringList{"k01", "k02"} << "kNone"
                              << "";
    }
    void lists()
    {
        QFETCH(QString, box);
        QFETCH(QString, text);
        QFETCH(QString, clicked);
        const Sandbox sandbox;
        Editor editor;
        editor.load(scheduleOf(Weekly, text, text, text, text));
        QTEST(editor.list(box)->checkedKeys(), "checked");
        QVERIFY(!editor.list(box)->isChecked(CheckListCombo::allKey));
        QVERIFY(!editor.hasChanges());
        editor.list(box)->click(clicked);
        QCOMPARE(editor.hasChanges(), !clicked.isEmpty());
        const clsScheduleDef stored = editor.stored();
        const QHash<QString, QString> texts{{"sscomboHours", stored.HourList},
                                            {"sscomboWeekDays", stored.WeekDayList},
                                            {"sscomboMonthDay", stored.MonthDayList},
                                            {"sscomboMonths", stored.MonthList}};
        QTEST(texts[box], "written");
        for (auto other = texts.begin(); other != texts.end(); ++other)
            QVERIFY2(other.key() == box || other.value() == text, qPrintable(other.key()));
    }

    void changesTakenBack()
    {
        const Sandbox sandbox;
        Editor editor;
        editor.load(scheduleOf(Daily, "7,99", "", "", ""));
        editor.list("sscomboHours")->click("k08");
        QVERIFY(editor.hasChanges());
        editor.list("sscomboHours")->click("k08");
        QVERIFY(!editor.hasChanges());
        QCOMPARE(editor.stored().HourList, "7,99");
    }

    void presets_data()
    {
        QTest::addColumn<int>("option");
        QTest::addColumn<QString>("question");
        QTest::addColumn<QString>("weekDays");
        QTest::addColumn<QString>("monthDays");
        QTest::addColumn<QString>("months");
        QTest::newRow("daily") << 0 << "Set schedule to every day at 00:00" << allWeekDays
                               << allMonthDays << allMonths;
        QTest::newRow("weekly") << 1 << "Set schedule to every Sunday at 00:00"
                                << "1" << allMonthDays << allMonths;
        QTest::newRow("monthly") << 2 << "Set schedule to 1st of every month at 00:00"
                                 << ""
                                 << "01" << allMonths;
        QTest::newRow("yearly") << 3 << "Set schedule to every January 1st at 00:00"
                                << ""
                                << "01"
                                << "01";
    }
    void presets()
    {
        QFETCH(int, option);
        QFETCH(QString, question);
        const Sandbox sandbox;
        Editor editor;
        editor.load(scheduleOf(Daily, "5", "3", "9", "4"));
        editor.option(option)->click();
        auto *button = editor.find<QPushButton>("cmdAutoSet");
        answerNext(QMessageBox::No);
        button->click();
        QCOMPARE(boxTitle, "Auto Set Frequency");
        QCOMPARE(boxText, question + "\nAuto configure the scheduled dates?");
        QVERIFY(boxDefault.contains("No"));
        QCOMPARE(editor.stored().HourList, "5");
        answerNext(QMessageBox::Yes);
        button->click();
        const clsScheduleDef stored = editor.stored();
        QCOMPARE(stored.HourList, "00");
        QTEST(stored.WeekDayList, "weekDays");
        QTEST(stored.MonthDayList, "monthDays");
        QTEST(stored.MonthList, "months");
        QCOMPARE(editor.list("sscomboMonths")->isChecked(CheckListCombo::allKey), option != 3);
        QVERIFY(editor.find<QLabel>("lblNextRuns")->text().endsWith("00:00"));
    }

    void presetWithoutKind()
    {
        const Sandbox sandbox;
        Editor editor;
        editor.load(scheduleOf(9, "5", "3", "9", "4"));
        answerNext(QMessageBox::Ok);
        editor.find<QPushButton>("cmdAutoSet")->click();
        QVERIFY(boxText.contains("choose first"));
        QVERIFY(!editor.hasChanges());
    }

    void runs_data()
    {
        QTest::addColumn<clsScheduleDef>("schedule");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("hint");
        const QString months = numbers(1, 12, 1);
        QTest::newRow("weekly") << scheduleOf(Weekly, "6", "2", allMonthDays, months)
                                << "Monday 2026-11-23 06:00\nMonday 2026-11-30 06:00\n"
                                   "Monday 2026-12-07 06:00\nMonday 2026-12-14 06:00\n"
                                   "Monday 2026-12-21 06:00"
                                << "";
        QTest::newRow("Last among others")
            << scheduleOf(Daily, "6,12,18", "", "24,32", "12")
            << "Thursday 2026-12-24 06:00\nThursday 2026-12-24 12:00\nThursday 2026-12-24 18:00\n"
               "Friday 2027-12-24 06:00\nFriday 2027-12-24 12:00"
            << "never comes";
        QTest::newRow("a leap year between") << scheduleOf(Yearly, "0", "", "1", "1")
                                             << "Friday 2027-01-01 00:00\nSaturday 2028-01-01 00:00"
                                             << "365 days";
        QTest::newRow("not scheduled")
            << scheduleOf(NotScheduled, "0", "", "1", months) << "Not scheduled"
            << "";
        QTest::newRow("no hour") << scheduleOf(Daily, "24", "", "1", months)
                                 << "never runs: no hour"
                                 << "";
        QTest::newRow("no month") << scheduleOf(Daily, "0", "", "1", "") << "never runs: no month"
                                  << "";
        QTest::newRow("no week day")
            << scheduleOf(Weekly, "0", "01", "1", months) << "never runs: no day of the week"
            << "does not look at the days of the month";
        QTest::newRow("no day") << scheduleOf(Daily, "0", "1", "", months)
                                << "never runs: no day of the month"
                                << "";
        QTest::newRow("Last alone")
            << scheduleOf(Monthly, "0", "", "32", months) << "\u201cLast\u201d is the only day"
            << "";
        QTest::newRow("30 February")
            << scheduleOf(Yearly, "0", "", "30,31", "2") << "none of the checked days"
            << "";
        QTest::newRow("unknown kind")
            << scheduleOf(7, "0", "", "22", "11") << "Sunday 2026-11-22 00:00"
            << "code 7";
    }
    void runs()
    {
        QFETCH(clsScheduleDef, schedule);
        QFETCH(QString, shown);
        QFETCH(QString, hint);
        const Sandbox sandbox;
        const FrozenClock clock(QStringLiteral("2026-11-21T14:20:00"));
        Editor editor;
        editor.load(schedule);
        const QString text = editor.find<QLabel>("lblNextRuns")->text();
        QVERIFY2(text.contains(shown), qPrintable(text));
        const QString hints = editor.find<QLabel>("lblHint")->text();
        QVERIFY2(hint.isEmpty() ? hints.isEmpty() : hints.contains(hint), qPrintable(hints));
    }

    void runsFollowClicks()
    {
        const Sandbox sandbox;
        const FrozenClock clock(QStringLiteral("2026-11-21T14:20:00"));
        Editor editor;
        editor.load(scheduleOf(Daily, "", "", allMonthDays, allMonths));
        auto *runs = editor.find<QLabel>("lblNextRuns");
        QVERIFY(runs->text().contains("never runs"));
        editor.list("sscomboHours")->click("k15");
        QVERIFY(runs->text().startsWith("Saturday 2026-11-21 15:00"));
        editor.option(1)->click();
        QVERIFY(runs->text().contains("never runs"));
        editor.list("sscomboWeekDays")->click("kNone");
        QVERIFY(editor.find<QLabel>("lblHint")->text().contains("uncheck it"));
    }

    void tabOrder()
    {
        const Sandbox sandbox;
        Editor editor;
        editor.load(scheduleOf(Weekly, "1", "1", "1", "1"));
        editor.show();
        QVERIFY(QTest::qWaitForWindowActive(&editor));
        QStringList visited;
        while (editor.focusWidget() && visited.size() < 40 &&
               !visited.contains(editor.focusWidget()->objectName())) {
            visited.append(editor.focusWidget()->objectName());
            QTest::keyClick(editor.focusWidget(), Qt::Key_Tab);
        }
        const QString expected =
            "txtScheduleName optSchedInterval1 sscomboHours sscomboWeekDays sscomboMonthDay "
            "sscomboMonths cmdAutoSet chkReschedule cmdOK cmdCancel cmdHelp";
        QCOMPARE(visited.join(u' '), expected);
    }

    void otherFields()
    {
        const Sandbox sandbox;
        Editor editor;
        clsScheduleDef schedule = scheduleOf(Daily, "1", "1", "1", "1");
        schedule.ScheduleName = "Nightly";
        schedule.Reschedule = true;
        schedule.RescheduleTime = -3;
        editor.load(schedule);
        QVERIFY(!editor.hasChanges());
        QCOMPARE(editor.stored().RescheduleTime, -3);
        editor.find<QSpinBox>("txtRescheduleTime")->setValue(99'999);
        QCOMPARE(editor.stored().RescheduleTime, 32'767); // what a file can hold
        editor.find<QCheckBox>("chkReschedule")->click();
        auto *name = editor.find<QLineEdit>("txtScheduleName");
        name->setText("  ");
        QVERIFY(editor.error().contains("name"));
        name->setText(" Weekly ");
        QVERIFY(editor.error().isEmpty());
        const clsScheduleDef stored = editor.stored(schedule);
        QCOMPARE(stored.ScheduleName, "Weekly");
        QVERIFY(!stored.Reschedule);
        QCOMPARE(stored.ScheduleID, schedule.ScheduleID);
        QCOMPARE(stored.StartTime, schedule.StartTime);
    }
};

QTEST_MAIN(tst_ScheduleDefEditor)
#include "tst_ScheduleDefEditor.moc"
