#include "report/Csv.h"
#include "report/StateRow.h"
#include "report/Templates.h"
#include "report/clsGraphEntry.h"

#include <QTest>

namespace {
/// A series of days named "a", "b", "c".
DataSeries seriesOf(int scale, std::vector<BucketValue> buckets)
{
    std::vector<AxisBucket> places(buckets.size());
    for (size_t i = 0; i < places.size(); ++i)
        places[i].longLabel = QChar(u'a' + static_cast<char16_t>(i));
    return {scale, std::make_shared<const BucketAxis>(std::move(places), ByDay, 0),
            std::move(buckets)};
}

} // namespace

class TestTemplates : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsAtTheMarker()
    {
        const auto parts = [](const QString &text) {
            const QLatin1String marker("%%m%%");
            return QString(GetHTIPart(text, marker, true) + '|' + GetHTIPart(text, marker, false));
        };
        QCOMPARE(parts("ab%%m%%cd"), "ab|cd ");
        QCOMPARE(parts("ab%%m%%c"), "ab|"); // one character behind the marker is lost
        QCOMPARE(parts("ab%%m%%"), "ab|");
        QCOMPARE(parts("ab%%M%%cd"), "ab%%M%%cd|");
        QCOMPARE(parts("a%%m%%b%%m%%c"), "a|b%%m%%c ");
        QCOMPARE(parts(""), "|");
    }

    void fillsPlaceholders()
    {
        const auto filled = [](const QString &text) {
            return fillTemplate(text, {{QLatin1String("a"), QString("1")},
                                       {QLatin1String("a.b"), QString("2")},
                                       {QLatin1String("a"), QString("3")},
                                       {QLatin1String("text"), QString("<p>%%a%%")},
                                       {QLatin1String("html"), PageValue::html("<p a='1'>")}});
        };
        QCOMPARE(filled("%%a%% %%a.b%%"), "1 2");
        QCOMPARE(filled("%%x%% %%A%%"), "%%x%% %%A%%"); // unknown ones stay
        QCOMPARE(filled("%%x%%a%%"), "%%x1");
        QCOMPARE(filled("%%text%%%%html%%"), "&lt;p>%%a%%<p a='1'>"); // values are final
    }

    void cutsBeforeItFills()
    {
        const auto [before, behind] =
            fillListTemplate("<%%name%%:%%m%%;%%name%%>", QLatin1String("%%m%%"),
                             {{QLatin1String("name"), QString("%%m%%")}});
        QCOMPARE(before + '|' + behind, "<%%m%%:|;%%m%%> ");
    }
    void makesTextsSafe()
    {
        const auto safe = [](const QString &text) { return PageValue(text).markup(); };
        for (const char *kept :
             {"<B>a</b> <i >b</i><br/>2<sup>3</sup>", "R&D &lt;script&gt; &#60;", "<3 a < b <= c"})
            QCOMPARE(safe(kept), kept);
        QCOMPARE(safe("<script>x()</script> <"), "&lt;script>x()&lt;/script> &lt;");
        QCOMPARE(safe("<b onclick=x()>a</b>"), "&lt;b onclick=x()>a&lt;/b>");
        QCOMPARE(safe("<b<i>"), "&lt;b<i></i>");
        QCOMPARE(safe("<!-- <?xml <!DOCTYPE </ x>"), "&lt;!-- &lt;?xml &lt;!DOCTYPE &lt;/ x>");
        QCOMPARE(safe(QString("a<") + QChar(0xD800)), QString("a&lt;") + QChar(0xD800));
        QCOMPARE(safe("\" onload='x()'"), "&quot; onload=&#39;x()&#39;");
        QCOMPARE(safe("<b><i>a"), "<b><i>a</i></b>");
        QCOMPARE(safe("<b>a<i>b</b>c</i>"), "<b>a<i>b</i></b>c&lt;/i>");
        QCOMPARE(safe("a</b></br>"), "a&lt;/b>&lt;/br>");
        QCOMPARE(safe(QString("<b>").repeated(18)),
                 QString("<b>").repeated(16) + "&lt;b>&lt;b>" + QString("</b>").repeated(16));
    }

    void saysWhetherTheChartScrolls()
    {
        // The most values of a frequency that fit: minutes, hours, days, months, years.
        for (const auto &[frequency, fits] :
             {std::pair(ByMinute, 121), {ByHour, 25}, {ByDay, 31}, {ByMonth, 13}, {ByYear, 11}}) {
            for (const int more : {0, 1}) {
                clsGraphEntry entry;
                entry.frequency = frequency;
                entry.series1 = QStringList(fits + more, "1").join(u',');
                QCOMPARE(entry.FillChartTemplate("%%chart.scroll%% %%chart.maxscroll%%"),
                         QString("%1 %2").arg(more ? "true" : "false").arg(fits - 1));
                QCOMPARE(entry.pointCount, fits - 1 + more);
            }
        }
    }

    void joinsSeriesOfAState()
    {
        clsGraphEntry entry;
        ItemFacts item;
        item.setSeries(seriesOf(stateScale, {{4, 3}, {0, 0}, {2, 2}}));
        entry.setItem(item);
        entry.startTime = QDateTime({2024, 3, 1}, {4, 5, 6}, Qt::UTC);
        QCOMPARE(entry.FillChartTemplate(
                     "%%chart.series1%%|%%chart.series2%%|%%chart.series3%%|%%chart.labels%%|"
                     "%%chart.series1.total%%|%%chart.series2.total%%|%%chart.ranged%%|"
                     "%%chart.starttime%%"),
                 "3, ,2|1, ,0|75, ,100|a,b,c|5|1|true|2024-Mar-01 04:05");
    }

    void formatsStateRows()
    {
        const QString rowTemplate = "%%sample.label%%%%sample.href%% %%successcount%% "
                                    "%%criticalcount%% %%totalcount%% %%successrate%%";
        const auto filled = [&](const StateRow &row) { return row.filled(rowTemplate); };
        QCOMPARE(filled({"x", 2, 1}), "x 2 1 3 66.67");
        QCOMPARE(filled({"x", 0, 0}), "x 0 0 0 n/a");
        QCOMPARE(filled({"x", 123456789, 0}), "x 123456789 0 123456789 100.00");
        const StateRow device{"x", 1, 0, linkText("javascript:\"Ä/1") + "/DEVREP.HTM"};
        QCOMPARE(filled(device), "x href=\"javascript%3A%22%C3%84%2F1/DEVREP.HTM\" 1 0 1 100.00");
        QCOMPARE(device.filledAsTotal(rowTemplate),
                 "<b>Total</b> <b>1</b> <b>0</b> <b>1</b> <b>100.00</b>");
    }

    void writesCsvRecords()
    {
        CsvText csv;
        csv.text("Zürich \"A\", 1").number(0.1).number(-12.0).fixed(99.99995);
        csv.endRecord();
        csv.text("").text("=1").text("+1").text("-1").text("@a").text("\ta").text("\ra").text(" =");
        csv.quotedNumber("-2.5").endRecord();
        QCOMPARE(csv.bytes(), "\"Zürich \"\"A\"\", 1\",0.1,-12,100\r\n"
                              "\"\",\"'=1\",\"'+1\",\"'-1\",\"'@a\",\"'\ta\",\"'\ra\",\" =\","
                              "\"-2.5\"\r\n");
    }
};

QTEST_GUILESS_MAIN(TestTemplates)
#include "tst_Templates.moc"
