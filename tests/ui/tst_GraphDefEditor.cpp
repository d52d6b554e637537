#include "core/Clock.h"
#include "core/Error.h"
#include "support/Sandbox.h"
#include "ui/ChartPreview.h"
#include "ui/GraphDefEditor.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

namespace {

const auto present = QStringLiteral("2026-11-21T14:20:00"); // a Saturday

QDateTime wall(const QString &text)
{
    return QDateTime::fromString(text + u'Z', Qt::ISODate);
}

clsGraphDef chartOf(qint32 frequency, qint32 subFrequency, qint32 duration, qint32 count = 24,
                    qint32 minutes = 5)
{
    clsGraphDef chart;
    chart.ChartFrequency = frequency;
    chart.SubFrequency = subFrequency;
    chart.ChartDuration = duration;
    chart.IntervalCount = count;
    chart.MinuteInterval = minutes;
    chart.StartTime = wall("2026-11-01T10:00:07");
    chart.EndTime = wall("2026-11-02T11:30:08");
    chart.StateTemplateFile = "StateChart.HTML";
    chart.CountTemplateFile = "CountChart.HTML";
    return chart;
}

struct Editor : frmGraphDefEditor
{
    template <typename T>
    T *find(const QString &name)
    {
        auto *found = findChild<T *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    QString text(const QString &name) { return find<QLabel>(name)->text(); }
    void choose(const QString &option) { find<QRadioButton>(option)->click(); }
    clsGraphDef stored(clsGraphDef into = {}) const
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

/// The clock stands still, and the templates of the factory exist.
struct Desk
{
    Desk()
    {
        box.write("StateChart.HTML", "state");
        box.write("CountChart.HTML", "count");
    }
    Sandbox box;
    LocalZone zone{"Europe/Berlin"};
    FrozenClock clock{present};
};

/// Runs once the next modal window is open.
template <typename Act>
void inNextWindow(Act act)
{
    QTimer::singleShot(0, qApp, [act] { act(QApplication::activeModalWidget()); });
}

} // namespace

class tst_GraphDefEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English)); }

    void codesOfAFileStay_data()
    {
        QTest::addColumn<int>("subFrequency");
        QTest::addColumn<int>("duration");
        QTest::addColumn<QString>("option");
        QTest::newRow("last intervals") << 0 << 3 << "optLastIntervals";
        QTest::newRow("last intervals to a stored end") << 0 << 8 << "optLastIntervals";
        QTest::newRow("calendar") << 2 << 7 << "optFixedPeriod";
        QTest::newRow("unknown calendar period") << 2 << 9 << "optFixedPeriod";
        QTest::newRow("custom") << 1 << 8 << "optCustomRange";
        QTest::newRow("custom, marked by the duration alone") << 2 << 8 << "optCustomRange";
        QTest::newRow("unknown span") << 77 << 2 << "optCustomRange";
    }
    void codesOfAFileStay()
    {
        QFETCH(int, subFrequency);
        QFETCH(int, duration);
        QFETCH(QString, option);
        const Desk desk;
        clsGraphDef chart = chartOf(6, subFrequency, duration, -4, 999);
        chart.ChartQuality = 17;
        chart.DetailCount = -1;
        chart.Details = true;
        Editor editor;
        editor.load(chart);
        QVERIFY(editor.find<QRadioButton>(option)->isChecked());
        QVERIFY(!editor.hasChanges());
        clsGraphDef stored = chart;
        stored.ChartTitle = stored.StateTemplateFile = "other";
        editor.store(stored);
        QCOMPARE(stored.XMLConfig(), chart.XMLConfig());
    }

    void spans_data()
    {
        QTest::addColumn<int>("subFrequency");
        QTest::addColumn<int>("duration");
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<int>("subFrequencyWritten");
        QTest::addColumn<int>("durationWritten");
        QTest::newRow("to calendar") << 0 << 0 << "optFixedPeriod" << 2 << 0;
        QTest::newRow("to custom") << 0 << 0 << "optCustomRange" << 1 << 8;
        QTest::newRow("calendar to custom") << 2 << 5 << "optCustomRange" << 1 << 8;
        QTest::newRow("custom to last") << 1 << 8 << "optLastIntervals" << 0 << 0;
        QTest::newRow("unknown to last") << 9 << 9 << "optLastIntervals" << 0 << 0;
        QTest::newRow("custom to calendar") << 2 << 8 << "optFixedPeriod" << 2 << 0;
    }
    void spans()
    {
        QFETCH(int, subFrequency);
        QFETCH(int, duration);
        QFETCH(QString, chosen);
        const Desk desk;
        Editor editor;
        editor.load(chartOf(ByHour, subFrequency, duration));
        editor.choose(chosen);
        const clsGraphDef stored = editor.stored();
        QTEST(stored.SubFrequency, "subFrequencyWritten");
        QTEST(stored.ChartDuration, "durationWritten");
        QCOMPARE(editor.find<QSpinBox>("txtIntervalCount")->isEnabled(),
                 chosen == "optLastIntervals");
        QCOMPARE(editor.find<QComboBox>("cmbDuration")->isEnabled(), chosen == "optFixedPeriod");
        QCOMPARE(editor.find<QDateTimeEdit>("txtEnd")->isEnabled(), chosen == "optCustomRange");
    }

    void minutesMatterToMinuteIntervals()
    {
        const Desk desk;
        Editor editor;
        editor.load(chartOf(ByMinute, 0, 0));
        auto *frequency = editor.find<QComboBox>("cmbFrequency");
        for (int code = ByMinute; code <= ByYear; ++code) {
            frequency->setCurrentIndex(code);
            QCOMPARE(editor.find<QSpinBox>("txtMinuteInterval")->isEnabled(), code == ByMinute);
            QCOMPARE(editor.stored().ChartFrequency, code);
        }
    }

    void periods_data()
    {
        QTest::addColumn<clsGraphDef>("chart");
        QTest::addColumn<QString>("words");
        QTest::newRow("last hours") << chartOf(ByHour, 0, 0)
                                    << "If run now: Friday 2026-11-20 14:20 to Saturday "
                                       "2026-11-21 14:20, 24 intervals of an hour";
        QTest::newRow("last minutes") << chartOf(ByMinute, 0, 0, 1, 15)
                                      << "If run now: Saturday 2026-11-21 14:05 to Saturday "
                                         "2026-11-21 14:20, 1 interval of 15 minutes";
        QTest::newRow("up to a stored end")
            << chartOf(ByDay, 0, 8, 7)
            << "Up to the stored end: Monday 2026-10-26 11:30 to Monday "
               "2026-11-02 11:30, 7 intervals of a day";
        QTest::newRow("last week") << chartOf(ByHour, 2, LastWeek)
                                   << "Last Week: Sunday 2026-11-08 00:00 to Saturday "
                                      "2026-11-14 23:59, 168 intervals of an hour";
        QTest::newRow("last month, with the hour that comes twice")
            << chartOf(ByHour, 2, LastMonth)
            << "Last Month: Thursday 2026-10-01 00:00 to Saturday "
               "2026-10-31 23:59, 744 intervals of an hour";
        QTest::newRow("last month by minutes")
            << chartOf(ByMinute, 2, LastMonth, 0, 30)
            << "Last Month: Thursday 2026-10-01 00:00 to Saturday 2026-10-31 23:59, 1,490 "
               "intervals of 30 minutes";
        QTest::newRow("this year") << chartOf(ByMonth, 2, ThisYear)
                                   << "This Year: Thursday 2026-01-01 00:00 to Thursday "
                                      "2026-12-31 23:59, 12 intervals of a month";
        QTest::newRow("custom") << chartOf(ByDay, 1, 8)
                                << "Custom range: Sunday 2026-11-01 10:00 to Monday "
                                   "2026-11-02 11:30, 2 intervals of a day";
        QTest::newRow("too many to walk")
            << chartOf(ByMinute, 2, LastYear, 0, 1)
            << "Last Year: Wednesday 2025-01-01 00:00 to Wednesday 2025-12-31 23:59, 525,600 "
               "intervals of a minute";
    }
    void periods()
    {
        QFETCH(clsGraphDef, chart);
        const Desk desk;
        Editor editor;
        editor.load(chart);
        QTEST(editor.text("lblPeriod"), "words");
    }

    void warnings_data()
    {
        QTest::addColumn<clsGraphDef>("chart");
        QTest::addColumn<QString>("warning"); // empty: none at all
        clsGraphDef future = chartOf(ByHour, 1, 8);
        future.StartTime = wall("2026-11-21T14:21:00");
        future.EndTime = wall("2026-11-22T00:00:00");
        clsGraphDef reversed = chartOf(ByHour, 1, 8);
        std::swap(reversed.StartTime, reversed.EndTime);
        clsGraphDef noTemplate = chartOf(ByHour, 0, 0);
        noTemplate.CountTemplateFile.clear();
        clsGraphDef lost = chartOf(ByHour, 0, 0);
        lost.StateTemplateFile = "Lost.HTML";
        clsGraphDef lower = chartOf(ByHour, 0, 0);
        lower.StateTemplateFile = "statechart.html";
        QTest::newRow("none") << chartOf(ByMinute, 0, 0, 288, 5) << "";
        QTest::newRow("case of a name") << lower << "";
        QTest::newRow("no intervals") << chartOf(ByHour, 0, 0, 0) << "No intervals";
        QTest::newRow("no matter to a calendar period") << chartOf(ByHour, 2, Today, 0) << "";
        QTest::newRow("no minutes") << chartOf(ByMinute, 0, 0, 24, 0) << "at least 1 minute";
        QTest::newRow("odd minutes") << chartOf(ByMinute, 0, 0, 24, 7) << "multiple of 7 minutes";
        QTest::newRow("many minutes") << chartOf(ByMinute, 0, 0, 24, 90) << "Choose Hour";
        QTest::newRow("minutes of hours") << chartOf(ByHour, 0, 0, 24, 7) << "";
        QTest::newRow("most") << chartOf(ByMinute, 0, 0, 20'000, 1) << "";
        QTest::newRow("too many") << chartOf(ByMinute, 0, 0, 20'001, 1) << "more than a chart";
        QTest::newRow("future") << future << "in the future";
        QTest::newRow("reversed") << reversed << "ends before it starts";
        QTest::newRow("unknown interval") << chartOf(5, 0, 0) << "code 5";
        QTest::newRow("unknown period") << chartOf(ByHour, 2, 9) << "code 9";
        QTest::newRow("no template") << noTemplate << "No template for counter charts";
        QTest::newRow("lost template") << lost << "Lost.HTML";
    }
    void warnings()
    {
        QFETCH(clsGraphDef, chart);
        QFETCH(QString, warning);
        const Desk desk;
        Editor editor;
        editor.load(chart);
        const QString text = editor.text("lblWarnings");
        QVERIFY2(warning.isEmpty() ? text.isEmpty() : text.contains(warning), qPrintable(text));
    }

    void newChart()
    {
        const Desk desk;
        Editor editor;
        editor.load(clsGraphDef());
        QVERIFY(!editor.hasChanges());
        QVERIFY(editor.text("lblWarnings").isEmpty());
        const clsGraphDef stored = editor.stored();
        QCOMPARE(stored.ChartFrequency, qint32(ByHour));
        QCOMPARE(stored.IntervalCount, 24);
        QCOMPARE(stored.StateTemplateData, "state");
        QCOMPARE(stored.CountTemplateData, "count");
    }

    void templates()
    {
        const Desk desk;
        desk.box.write("Own.html", "own");
        desk.box.write("notes.txt", "none");
        Editor editor;
        clsGraphDef chart = chartOf(ByHour, 0, 0);
        chart.StateTemplateData = "as read";
        editor.load(chart);
        auto *field = editor.find<QComboBox>("cmbStateTemplate");
        QCOMPARE(field->count(), 3);
        QVERIFY(field->findText("Own.html") >= 0);
        QCOMPARE(editor.stored(chart).StateTemplateData, "as read");
        field->setEditText("Own.html");
        QVERIFY(editor.hasChanges());
        QCOMPARE(editor.stored(chart).StateTemplateFile, "Own.html");
        QCOMPARE(editor.stored(chart).StateTemplateData, "own");

        const auto browse = [&](const QString &path) {
            inNextWindow([path](QWidget *window) {
                if (auto *dialog = qobject_cast<QFileDialog *>(window)) {
                    dialog->findChild<QLineEdit *>("fileNameEdit")->setText(path);
                    dialog->findChild<QDialogButtonBox *>()
                        ->button(QDialogButtonBox::Open)
                        ->click();
                }
            });
            editor.find<QPushButton>("cmdStateBrowse")->click();
        };
        browse(desk.box.path("CountChart.HTML"));
        QCOMPARE(field->currentText(), "CountChart.HTML");
        desk.box.write("elsewhere/Own.html", "far");
        browse(desk.box.path("elsewhere/Own.html"));
        QCOMPARE(field->currentText(),
                 QDir::toNativeSeparators(desk.box.path("elsewhere/Own.html")));
        QCOMPARE(editor.stored(chart).StateTemplateData, "far");
    }

    void refusals()
    {
        const Desk desk;
        Editor editor;
        editor.load(chartOf(ByHour, 1, 8));
        QVERIFY(editor.error().isEmpty());
        editor.find<QLineEdit>("txtTitle")->setText(" ");
        QVERIFY(editor.error().contains("title"));
        editor.find<QLineEdit>("txtTitle")->setText("Week");
        editor.find<QDateTimeEdit>("txtEnd")->setDateTime(wall("2026-10-01T00:00:00"));
        QVERIFY(editor.error().contains("ends before"));
        editor.choose("optFixedPeriod");
        QVERIFY(editor.error().isEmpty());
    }

    void customRangeBeginsWithThePeriodBefore()
    {
        const Desk desk;
        Editor editor;
        editor.load(chartOf(ByHour, 2, LastWeek));
        editor.choose("optCustomRange");
        QCOMPARE(editor.stored().StartTime, wall("2026-11-08T00:00:00"));
        QCOMPARE(editor.stored().EndTime, wall("2026-11-14T23:59:59"));
        editor.find<QDateTimeEdit>("txtStart")->setDateTime(wall("2026-03-29T02:30:00"));
        QCOMPARE(editor.stored().StartTime, wall("2026-03-29T02:30:00")); // an hour clocks skip
        editor.choose("optFixedPeriod");
        editor.choose("optCustomRange");
        QCOMPARE(editor.stored().StartTime, wall("2026-03-29T02:30:00"));
    }

    void preview()
    {
        const Desk desk;
        Editor editor;
        editor.load(chartOf(ByHour, 2, LastWeek));
        editor.show();
        auto *preview = editor.find<ChartPreview>("picPreview");
        const QImage state = preview->grab().toImage();
        editor.choose("optPreviewCounter");
        const QImage counter = preview->grab().toImage();
        QVERIFY(state != counter);
        QTest::keyClicks(editor.find<QLineEdit>("txtTitle"), "!");
        QCOMPARE(preview->grab().toImage(), counter); // while typing
        QTRY_VERIFY(preview->grab().toImage() != counter);
        editor.load(chartOf(6, 2, LastWeek));
        QVERIFY(preview->message().contains("not known"));
        editor.load(chartOf(ByHour, 2, LastWeek));
        editor.choose("optPreviewState");
        QVERIFY(preview->message().isEmpty());
        QCOMPARE(preview->grab().toImage(), state); // the same samples each time
        QCOMPARE(editor.text("lblPreview"), "");
        editor.load(chartOf(ByMinute, 0, 0, 2'000'000'000, 2'000'000'000));
        QVERIFY(editor.text("lblPreview").contains("last 20,000 intervals only"));
        editor.load(chartOf(ByDay, 2, ThisYear));
        QVERIFY(editor.text("lblPreview").contains("up to the time of the run"));
    }

    void sampleCharts_data()
    {
        QTest::addColumn<clsGraphDef>("chart");
        QTest::addColumn<int>("buckets");
        clsGraphDef future = chartOf(ByHour, 1, 8);
        future.StartTime = wall("2026-12-01T00:00:00");
        future.EndTime = wall("2026-12-02T00:00:00");
        QTest::newRow("whole") << chartOf(ByHour, 2, LastWeek) << 168;
        QTest::newRow("up to now") << chartOf(ByHour, 2, Today) << 15;
        QTest::newRow("last months") << chartOf(ByMonth, 0, 0, 12) << 13;
        QTest::newRow("longest") << chartOf(ByMinute, 0, 0, 1'000'000, 1) << 20'001;
        QTest::newRow("future") << future << 0;
    }
    void sampleCharts()
    {
        QFETCH(clsGraphDef, chart);
        QFETCH(int, buckets);
        const Desk desk;
        QString note;
        const auto state = std::get<StateChart>(sampleChart(chart, SampleItem::State, note));
        const auto counter = std::get<CounterChart>(sampleChart(chart, SampleItem::Counter, note));
        QCOMPARE(state.series.buckets.size(), size_t(buckets));
        QCOMPARE(counter.series.buckets.size(), size_t(buckets));
        for (const SeriesBucket &bucket : state.series.buckets)
            QVERIFY(bucket.successes >= 0 && bucket.successes <= bucket.count);
        for (const SeriesBucket &bucket : counter.series.buckets)
            QVERIFY(bucket.least <= bucket.mean && bucket.mean <= bucket.greatest);
        QVERIFY(desk.box.status.isEmpty());
    }

    void wheelPassesFieldsBy()
    {
        const Desk desk;
        Editor editor;
        editor.load(chartOf(ByHour, 0, 0));
        editor.show();
        auto *count = editor.find<QSpinBox>("txtIntervalCount");
        editor.find<QLineEdit>("txtTitle")->setFocus();
        QWheelEvent wheel({5, 5}, count->mapToGlobal(QPointF(5, 5)), {}, {0, 120}, {}, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(count, &wheel);
        QCOMPARE(count->value(), 24);
    }

    void tabOrder()
    {
        const Desk desk;
        Editor editor;
        editor.load(chartOf(ByMinute, 2, LastWeek));
        editor.show();
        QVERIFY(QTest::qWaitForWindowActive(&editor));
        QStringList visited;
        while (editor.focusWidget() && visited.size() < 40 &&
               !visited.contains(editor.focusWidget()->objectName())) {
            visited.append(editor.focusWidget()->objectName());
            QTest::keyClick(editor.focusWidget(), Qt::Key_Tab);
        }
        const QString expected =
            "txtTitle txtSampleLabel cmbQuality cmbFrequency txtMinuteInterval optFixedPeriod "
            "cmbDuration cmbStateTemplate cmdStateBrowse cmbCountTemplate cmdCountBrowse "
            "chkDetails optPreviewState cmdOK cmdCancel cmdHelp";
        QCOMPARE(visited.join(u' '), expected);
    }

    void mnemonicsAreUnique()
    {
        const Desk desk;
        Editor editor;
        QHash<QChar, QString> taken;
        const auto take = [&taken](const QString &text) {
            const QKeySequence key = QKeySequence::mnemonic(text);
            if (key.isEmpty())
                return;
            const QChar letter = key.toString().back();
            QVERIFY2(!taken.contains(letter), qPrintable(taken[letter] + " and " + text));
            taken.insert(letter, text);
        };
        for (const auto *label : editor.findChildren<QLabel *>()) {
            if (label->buddy())
                take(label->text());
        }
        for (const auto *button : editor.findChildren<QAbstractButton *>())
            take(button->text());
        QVERIFY(taken.size() > 15);
    }

    void presets_data()
    {
        QTest::addColumn<QDate>("today");
        QTest::addColumn<int>("preset");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("end");
        const QDate leap(2028, 3, 1);
        const QDate newYear(2027, 1, 1);
        QTest::newRow("seven days") << leap << int(LastSevenDays) << "2028-02-23"
                                    << "2028-02-29";
        QTest::newRow("month") << leap << int(WholeLastMonth) << "2028-02-01"
                               << "2028-02-29";
        QTest::newRow("month of last year") << newYear << int(WholeLastMonth) << "2026-12-01"
                                            << "2026-12-31";
        QTest::newRow("quarter") << QDate(2026, 11, 21) << int(WholeLastQuarter) << "2026-07-01"
                                 << "2026-09-30";
        QTest::newRow("quarter of last year") << newYear << int(WholeLastQuarter) << "2026-10-01"
                                              << "2026-12-31";
        QTest::newRow("year") << leap << int(WholeThisYear) << "2028-01-01"
                              << "2028-12-31";
    }
    void presets()
    {
        QFETCH(QDate, today);
        QFETCH(int, preset);
        const DateRange range = presetRange(static_cast<RangePreset>(preset), today);
        QTEST(range.start.toString("yyyy-MM-dd"), "start");
        QTEST(range.end.toString("yyyy-MM-dd"), "end");
        QCOMPARE(range.start.time(), QTime(0, 0));
        QCOMPARE(range.end.time(), QTime(23, 59, 59));
    }

    void rangeOfARun()
    {
        const Desk desk;
        clsGraphDef chart = chartOf(ByHour, 1, 8);
        const clsGraphDef before = chart;
        inNextWindow(
            [](QWidget *window) { window->findChild<QPushButton *>("cmdCancel")->click(); });
        QVERIFY(!editCustomRange(chart, nullptr));
        QCOMPARE(chart.XMLConfig(), before.XMLConfig());

        inNextWindow([](QWidget *window) { window->findChild<QPushButton *>("cmdOK")->click(); });
        QVERIFY(editCustomRange(chart, nullptr));
        QCOMPARE(chart.XMLConfig(), before.XMLConfig()); // to the second

        QString words;
        inNextWindow([&words](QWidget *window) {
            window->findChild<QDateTimeEdit *>("txtEnd")->setDateTime(wall("2026-11-03T08:15:00"));
            words = window->findChild<QLabel *>("lblPeriod")->text();
            window->findChild<QPushButton *>("cmdOK")->click();
        });
        QVERIFY(editCustomRange(chart, nullptr));
        QVERIFY(words.endsWith("47 intervals of an hour"));
        QCOMPARE(chart.StartTime, before.StartTime);
        QCOMPARE(chart.EndTime, wall("2026-11-03T08:15:59"));
    }

    void rangeThatEndsTooEarly()
    {
        const Desk desk;
        clsGraphDef chart = chartOf(ByHour, 1, 8);
        QString refused;
        inNextWindow([&refused](QWidget *window) {
            window->findChild<QDateTimeEdit *>("txtEnd")->setDateTime(wall("2026-10-03T08:15:00"));
            inNextWindow([&refused](QWidget *box) {
                refused = qobject_cast<QMessageBox *>(box)->text();
                qobject_cast<QMessageBox *>(box)->button(QMessageBox::Ok)->click();
            });
            window->findChild<QPushButton *>("cmdOK")->click();
            if (!window->isVisible())
                return; // it was taken
            window->findChild<QMenu *>()->actions().at(LastSevenDays)->trigger();
            window->findChild<QPushButton *>("cmdOK")->click();
        });
        QVERIFY(editCustomRange(chart, nullptr));
        QVERIFY(refused.contains("ends before"));
        QCOMPARE(chart.StartTime, wall("2026-11-14T00:00:00"));
        QCOMPARE(chart.EndTime, wall("2026-11-20T23:59:59"));
    }

    void emptyRangeOfARun()
    {
        const Desk desk;
        clsGraphDef chart; // no dates yet
        chart.SubFrequency = 1;
        chart.ChartDuration = CustomRange;
        inNextWindow([](QWidget *window) { window->findChild<QPushButton *>("cmdOK")->click(); });
        QVERIFY(editCustomRange(chart, nullptr));
        QCOMPARE(chart.StartTime, wall("2026-11-14T00:00:00"));
    }
};

QTEST_MAIN(tst_GraphDefEditor)
#include "tst_GraphDefEditor.moc"
