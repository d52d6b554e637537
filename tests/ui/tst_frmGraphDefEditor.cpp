#include "base/Clock.h"
#include "support/Answers.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/Controls.h"
#include "ui/editors/ChartPreview.h"
#include "ui/editors/frmGraphDefEditor.h"

#include <QDateTimeEdit>

namespace {

QDateTime wall(const QString &text)
{
    return QDateTime::fromString(text + u'Z', Qt::ISODate);
}

clsGraphDef chartOf(qint32 frequency, qint32 subFrequency, qint32 duration, qint32 count = 24,
                    qint32 minutes = 5)
{
    clsGraphDef chart;
    chart.ChartFrequency = ChartFrequencyCode(frequency);
    chart.SubFrequency = SubFrequencyCode(subFrequency);
    chart.ChartDuration = ChartDurationCode(duration);
    chart.IntervalCount = count;
    chart.MinuteInterval = minutes;
    chart.StartTime = wall("2026-11-01T10:00:07");
    chart.EndTime = wall("2026-11-02T11:30:08");
    chart.StateTemplateFile = "StateChart.HTML";
    chart.CountTemplateFile = "CountChart.HTML";
    return chart;
}

clsGraphDef rangeOf(const QString &start, const QString &end)
{
    clsGraphDef chart = chartOf(ByHour, 1, CustomRange);
    chart.StartTime = wall(start);
    chart.EndTime = wall(end);
    return chart;
}

clsGraphDef templatesOf(const QString &state, const QString &count)
{
    clsGraphDef chart = chartOf(ByHour, 0, 0);
    chart.StateTemplateFile = state;
    chart.CountTemplateFile = count;
    return chart;
}

struct Editor : Controls<frmGraphDefEditor>
{
    explicit Editor(const clsGraphDef &chart) { load(chart); }
    clsGraphDef result(const clsGraphDef &before = {}) const { return stored(before); }
};

/// The clock stands still on a Saturday, and the templates of the factory exist.
struct Desk
{
    Desk()
    {
        box.write("StateChart.HTML", "state");
        box.write("CountChart.HTML", "count");
    }
    Sandbox box;
    LocalZone zone{"Europe/Berlin"};
    FrozenClock clock{QStringLiteral("2026-11-21T14:20:00")};
};

} // namespace

class tst_frmGraphDefEditor : public QObject
{
    Q_OBJECT

    std::unique_ptr<Desk> m_desk;

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English)); }
    void init() { m_desk = std::make_unique<Desk>(); }
    void cleanup() { m_desk.reset(); }

    /// What a file holds stays as it is until another option is chosen.
    void spans_data()
    {
        const QString last = "optLastIntervals";
        const QString custom = "optCustomRange";
        const Rows<int, int, QString, QString, int, int> row("subFrequency", "duration", "shown",
                                                             "chosen", "thenSub", "thenDuration");
        row("up to a stored end", 0, 8, last, custom, 1, 8);
        row("custom", 1, 8, custom, last, 0, 0);
        row("unknown span", 77, 2, custom, last, 0, 0);
    }
    void spans()
    {
        QFETCH(int, subFrequency);
        QFETCH(int, duration);
        QFETCH(QString, shown);
        QFETCH(QString, chosen);
        clsGraphDef chart = chartOf(6, subFrequency, duration, -4, 999);
        chart.ChartQuality = 17;
        chart.DetailCount = -1;
        const Editor editor(chart);
        QVERIFY(editor.find<QRadioButton>(qPrintable(shown))->isChecked());
        QVERIFY(!editor.hasChanges());
        clsGraphDef other = chart;
        other.ChartTitle = other.StateTemplateFile = "other";
        QCOMPARE(editor.result(other).XMLConfig(), chart.XMLConfig());
        editor.click(qPrintable(chosen));
        QTEST(int(editor.result().SubFrequency), "thenSub");
        QTEST(int(editor.result().ChartDuration), "thenDuration");
    }

    void roundTrip()
    {
        clsGraphDef chart = chartOf(ByMinute, 1, CustomRange, 77, 12);
        chart.ChartTitle = "Title";
        chart.SampleLabel = "Label";
        chart.ChartQuality = 3;
        chart.Details = true;
        chart.DetailCount = 9;
        chart.StartTime = wall("2026-11-01T10:07:00");
        chart.EndTime = wall("2026-11-02T11:30:59");
        chart.CountTemplateFile = "Own.html";
        const Editor shown(chart);
        shown.checkLetters();
        const Editor typed({});
        QVERIFY(!typed.hasChanges() && typed.text("lblWarnings").isEmpty());
        typed.find<QLineEdit>("txtTitle")->setText(" ");
        QVERIFY(typed.error().contains("title"));
        typed.copyFields(shown);
        clsGraphDef empty;
        empty.ChartID = chart.ChartID;
        QCOMPARE(typed.result(empty).XMLConfig(), chart.XMLConfig());
    }

    void texts_data()
    {
        const Rows<clsGraphDef, QString, QString> row("chart", "period", "warning");
        const auto minutes = [](int count, int each) {
            return chartOf(ByMinute, 0, 0, count, each);
        };
        row("last minutes", minutes(1, 15), "2026-11-21 14:20, 1 interval of 15 minutes", "");
        row("up to a stored end", chartOf(ByDay, 0, 8, 7),
            "end: Monday 2026-10-26 11:30 to Monday 2026-11-02 11:30, 7 intervals of a day", "");
        row("an hour comes twice", chartOf(ByHour, 2, LastMonth, 0), ", 744 intervals", "");
        row("too many", chartOf(ByMinute, 2, LastYear, 0, 1), "525,600", "at most 110,000.");
        row("no intervals", chartOf(ByHour, 0, 0, 0), "", "No intervals");
        row("no minutes", minutes(24, 0), "", "at least 1 minute");
        row("odd minutes", minutes(24, 7), "", "multiple of 7 minutes");
        row("many minutes", minutes(24, 90), "", "Choose Hour");
        row("more than a chart", minutes(20'001, 1), "", "more than a chart");
        row("future", rangeOf("2026-11-21T14:21:00", "2026-11-22T00:00:00"), "", "in the future");
        row("unknown interval", chartOf(5, 0, 0), "", "code 5");
        row("no template", templatesOf("StateChart.HTML", ""), "",
            "No template for counter charts");
        row("lost template", templatesOf("Lost.HTML", "CountChart.HTML"), "", "Lost.HTML");
    }
    void texts()
    {
        QFETCH(clsGraphDef, chart);
        QFETCH(QString, period);
        QFETCH(QString, warning);
        const Editor editor(chart);
        QVERIFY2(editor.text("lblPeriod").contains(period), qPrintable(editor.text("lblPeriod")));
        const QString text = editor.text("lblWarnings");
        QVERIFY2(warning.isEmpty() ? text.isEmpty() : text.contains(warning), qPrintable(text));
    }

    void templates()
    {
        m_desk->box.write("notes.txt", "none");
        clsGraphDef chart = chartOf(ByHour, 0, 0);
        chart.StateTemplateData = "as read";
        const Editor editor(chart);
        auto *field = editor.find<QComboBox>("cmbStateTemplate");
        QCOMPARE(field->count(), 2);
        QCOMPARE(editor.result(chart).StateTemplateData, "as read");
        field->setEditText("Gone.html");
        QVERIFY(editor.hasChanges());
        QCOMPARE(editor.result(chart).StateTemplateData, "");
    }

    void customRangeBeginsWithThePeriodBefore()
    {
        const Editor editor(chartOf(ByHour, 2, LastWeek));
        editor.click("optCustomRange");
        QCOMPARE(editor.result().StartTime, wall("2026-11-08T00:00:00"));
        QCOMPARE(editor.result().EndTime, wall("2026-11-14T23:59:59"));
        const QDateTime skipped = wall("2026-03-29T02:30:00"); // by the clocks
        editor.find<QDateTimeEdit>("txtStart")->setDateTime(skipped);
        editor.find<QDateTimeEdit>("txtEnd")->setDateTime(skipped.addDays(-1));
        QVERIFY(editor.error().contains("ends before"));
        editor.find<QDateTimeEdit>("txtEnd")->setDateTime(skipped.addYears(14));
        QVERIFY(editor.error().contains("at most 110,000"));
        editor.click("optFixedPeriod");
        QVERIFY(editor.error().isEmpty());
        editor.click("optCustomRange");
        QCOMPARE(editor.result().StartTime, skipped);
    }

    void preview()
    {
        Editor editor(chartOf(ByHour, 2, LastWeek));
        editor.show();
        auto *preview = editor.find<ChartPreview>("picPreview");
        const QImage state = preview->grab().toImage();
        editor.click("optPreviewCounter");
        const QImage counter = preview->grab().toImage();
        QVERIFY(state != counter);
        QTest::keyClicks(editor.find<QLineEdit>("txtTitle"), "!");
        QTRY_VERIFY(preview->grab().toImage() != counter);
        editor.load(chartOf(6, 2, LastWeek));
        QVERIFY(preview->message().contains("not known"));
        editor.load(chartOf(ByMinute, 0, 0, 2'000'000'000, 2'000'000'000));
        QVERIFY(editor.text("lblPreview").contains("last 20,000 intervals only"));
        QVERIFY(preview->message().isEmpty());
        QCOMPARE(m_desk->box.status, QStringList());
    }

    void presets()
    {
        const auto range = [](int year, int month, RangePreset preset) {
            const auto [start, end] = presetRange(preset, QDate(year, month, 1));
            return start.toString(u"yyyy-MM-dd HH:mm") + end.toString(u" 'to' yyyy-MM-dd HH:mm");
        };
        QCOMPARE(range(2028, 3, LastSevenDays), "2028-02-23 00:00 to 2028-02-29 23:59");
        QCOMPARE(range(2027, 1, WholeLastMonth), "2026-12-01 00:00 to 2026-12-31 23:59");
        QCOMPARE(range(2027, 1, WholeLastQuarter), "2026-10-01 00:00 to 2026-12-31 23:59");
        QCOMPARE(range(2028, 3, WholeThisYear), "2028-01-01 00:00 to 2028-12-31 23:59");
    }

    void rangeOfARun()
    {
        clsGraphDef chart = chartOf(ByHour, 1, 8);
        const clsGraphDef before = chart;
        Answers answers;
        for (const char *button : {"cmdCancel", "cmdOK"}) {
            answers.add([=](QWidget &window) { control<QPushButton>(window, button)->click(); });
            QCOMPARE(editCustomRange(chart, {"Servers", "Links"}, nullptr),
                     qstrcmp(button, "cmdOK") == 0);
            QCOMPARE(chart.XMLConfig(), before.XMLConfig()); // to the second
        }
        chart.StartTime = chart.EndTime = QDateTime(); // the last seven days are proposed
        answers.add([&answers](QWidget &window) {
            auto *end = control<QDateTimeEdit>(window, "txtEnd");
            end->setDateTime(wall("2026-10-03T08:15:00"));
            answers.click(QMessageBox::Ok);
            control<QPushButton>(window, "cmdOK")->click();
            end->setDateTime(wall("2026-11-15T08:15:00"));
            control<QPushButton>(window, "cmdOK")->click();
        });
        QVERIFY(editCustomRange(chart, {"Servers", "Links"}, nullptr));
        QVERIFY(answers.said.value(0).contains("ends before"));
        QCOMPARE(chart.StartTime, wall("2026-11-14T00:00:00"));
        QCOMPARE(chart.EndTime, wall("2026-11-15T08:15:59"));
    }
};

QTEST_MAIN(tst_frmGraphDefEditor)
#include "tst_frmGraphDefEditor.moc"
