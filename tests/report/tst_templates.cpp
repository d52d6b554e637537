#include "report/Csv.h"
#include "report/GraphEntry.h"
#include "report/StateRow.h"
#include "report/SummaryFigures.h"
#include "report/Templates.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

#include <QTest>

namespace {

/// A series of days named "a", "b", "c".
DataSeries seriesOf(int scale, std::vector<BucketValue> buckets)
{
    std::vector<AxisBucket> places(buckets.size());
    for (size_t i = 0; i < places.size(); ++i)
        places[i].longLabel = QChar(u'a' + static_cast<char16_t>(i));
    return {scale, std::make_shared<const BucketAxis>(std::move(places), 2, 0), std::move(buckets)};
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
        QCOMPARE(parts("%%m%%cd"), "|cd ");
        QCOMPARE(parts("ab%%m%%c"), "ab|"); // one character behind the marker is lost
        QCOMPARE(parts("ab%%m%%"), "ab|");
        QCOMPARE(parts("abcd"), "abcd|");
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
        QCOMPARE(filled("%%a%%-%%a%%"), "1-1");
        QCOMPARE(filled("%%a%% %%a.b%%"), "1 2");
        QCOMPARE(filled("%%x%% %%A%%"), "%%x%% %%A%%"); // unknown ones stay
        QCOMPARE(filled("%%x%%a%%"), "%%x1");
        QCOMPARE(filled("100%%%a%%"), "100%1");
        QCOMPARE(filled("%%text%%%%html%%"), "&lt;p>%%a%%<p a='1'>"); // values are final
        QCOMPARE(filled("50% of 80%%"), "50% of 80%%");
    }

    void cutsBeforeItFills()
    {
        const auto [before, behind] =
            fillListTemplate("<%%name%%:%%m%%;%%name%%>", QLatin1String("%%m%%"),
                             {{QLatin1String("name"), QString("%%m%%")}});
        QCOMPARE(before + '|' + behind, "<%%m%%:|;%%m%%> ");
    }

    void makesTextsSafe_data()
    {
        const Rows<QString, QString> row("text", "markup");
        row("kept", "<B>a</B> <i >b</i><br/>2<sup>3</sup>", "<B>a</b> <i >b</i><br/>2<sup>3</sup>");
        row("entities", "R&D &lt;script&gt; &#60;", "R&D &lt;script&gt; &#60;");
        row("no markup", "<3 a < b <= c <", "<3 a < b <= c &lt;");
        row("script", "<script>x()</script>", "&lt;script>x()&lt;/script>");
        row("attribute", "<b onclick=x()>a</b>", "&lt;b onclick=x()>a&lt;/b>");
        row("inside a tag", "<b<i>", "&lt;b<i></i>");
        row("comment", "core1<!--", "core1&lt;!--");
        row("declarations", "<?xml <!DOCTYPE </ x>", "&lt;?xml &lt;!DOCTYPE &lt;/ x>");
        row("damaged character", QString("a<") + QChar(0xD800) + 'b',
            QString("a&lt;") + QChar(0xD800) + 'b');
        row("quotes", "\" onload='x()'", "&quot; onload=&#39;x()&#39;");
        row("never closed", "<b><i>a", "<b><i>a</i></b>");
        row("closed across", "<b>a<i>b</b>c</i>", "<b>a<i>b</i></b>c&lt;/i>");
        row("never opened", "a</b></br>", "a&lt;/b>&lt;/br>");
        row("nested deep", QString("<b>").repeated(18),
            QString("<b>").repeated(16) + QString("&lt;b>").repeated(2) +
                QString("</b>").repeated(16));
    }
    void makesTextsSafe()
    {
        QFETCH(QString, text);
        QTEST(PageValue(text).markup(), "markup");
    }

    void saysWhetherTheChartScrolls()
    {
        const auto filled = [](int frequency, int values) {
            clsGraphEntry entry;
            entry.frequency = frequency;
            entry.series1 = QStringList(values, "1").join(u',');
            const QString text = entry.FillChartTemplate("%%chart.scroll%% %%chart.maxscroll%%");
            return QString("%1 %2 %3").arg(text).arg(entry.pointCount).arg(entry.filled);
        };
        QCOMPARE(filled(1, 25), "false 24 24 1"); // hours: 25 values fit
        QCOMPARE(filled(1, 26), "true 24 25 1");
        QCOMPARE(filled(0, 121), "false 120 120 1");
        QCOMPARE(filled(2, 32), "true 30 31 1");
        QCOMPARE(filled(3, 13), "false 12 12 1");
        QCOMPARE(filled(4, 12), "true 10 11 1");
    }

    void joinsSeriesOfAState()
    {
        clsGraphEntry entry;
        entry.setSeries(seriesOf(stateScale, {{4, 3}, {0, 0}, {2, 2}}));
        entry.startTime = QDateTime({2024, 3, 1}, {4, 5, 6}, Qt::UTC);
        QCOMPARE(entry.FillChartTemplate(
                     "%%chart.series1%%|%%chart.series2%%|%%chart.series3%%|%%chart.labels%%|"
                     "%%chart.series1.total%%|%%chart.series2.total%%|%%chart.ranged%%|"
                     "%%chart.starttime%%"),
                 "3, ,2|1, ,0|75, ,100|a,b,c|5|1|true|2024-Mar-01 04:05");
    }

    void joinsSeriesOfACounter()
    {
        clsGraphEntry entry;
        entry.setSeries(seriesOf(3, {{2, 0, 1.5, -1, 4}, {0, 0}, {1, 0, 1234567.25, 0, 9}}));
        QCOMPARE(entry.series1, "1.5, ,1234567.25");
        QCOMPARE(entry.lowRange, "-1");
        QCOMPARE(entry.upperRange, "9");
        QCOMPARE(entry.ranged, "false");
    }

    void formatsStateRows()
    {
        const auto texts = [](double successes, double failures) {
            const QString rowTemplate =
                "%%sample.label%% %%successcount%% %%criticalcount%% %%totalcount%% "
                "%%successrate%%";
            const StateRow row{"x", successes, failures};
            CsvText csv;
            row.addCounts(csv);
            csv.endRecord();
            return QStringList{row.filled(rowTemplate), row.filledAsTotal(rowTemplate),
                               QString::fromUtf8(csv.bytes())};
        };
        QCOMPARE(texts(2, 1), QStringList({"x 2 1 3 66.67",
                                           "<b>Total</b> <b>2</b> <b>1</b> <b>3</b> <b>66.67</b>",
                                           "2,1,3\r\n"}));
        QCOMPARE(texts(0, 0),
                 QStringList({"x 0 0 0 n/a", "<b>Total</b> <b>0</b> <b>0</b> <b>0</b> <b>n/a</b>",
                              "0,0,0\r\n"}));
        QCOMPARE(texts(123456789, 0),
                 QStringList({"x 123456789 0 123456789 100.00",
                              "<b>Total</b> <b>123456789</b> <b>0</b> <b>123456789</b> "
                              "<b>100.00</b>",
                              "123456789,0,123456789\r\n"}));
    }

    void linksRowsOfDevices()
    {
        const QString rowTemplate = "<a%%sample.href%%>%%sample.label%%</a>";
        const StateRow device{"x", 1, 0, linkText("javascript:\"Ä/1") + "/DEVREP.HTM"};
        QCOMPARE(device.filled(rowTemplate),
                 "<a href=\"javascript%3A%22%C3%84%2F1/DEVREP.HTM\">x</a>");
        QCOMPARE(device.filledAsTotal(rowTemplate), "<a><b>Total</b></a>");
        QCOMPARE(StateRow({"x", 1, 0}).filled(rowTemplate), "<a>x</a>");
    }

    void writesCsvRecords()
    {
        CsvText csv;
        csv.text("Zürich \"A\", 1").number(0.1).number(-12).fixed(99.99995);
        csv.endRecord();
        csv.text("").text("=1").text("+1").text("-1").text("@a").text("\ta").text("\ra").text(" =");
        csv.quotedNumber("-2.5").endRecord();
        QCOMPARE(csv.bytes(), "\"Zürich \"\"A\"\", 1\",0.1,-12,100\r\n"
                              "\"\",\"'=1\",\"'+1\",\"'-1\",\"'@a\",\"'\ta\",\"'\ra\",\" =\","
                              "\"-2.5\"\r\n");
    }

    void readsFiguresAgain()
    {
        const Sandbox box;
        QVERIFY(!readSummaryFigures(box.path("repsum.csv")));
        const auto figures = [&box](const QByteArray &records) {
            box.write("repsum.csv", "\"Sample\",\"Success\"\r\n" + records);
            const auto read = readSummaryFigures(box.path("repsum.csv"));
            return read ? fillTemplate("%%total.rate%% of %%total.tests%%, %%total.failed%% failed "
                                       "at %%total.troubled%%, %%total.silent%% silent of "
                                       "%%total.devices%%",
                                       read->placeholders())
                        : "none";
        };
        QCOMPARE(
            figures(
                "\"a\",3,1,4,75\r\n\"b\",2,0,2,100\r\n\"c\",0,0,0,0\r\n"), // as it was written once
            "83.33 of 6, 1 failed at 1, 1 silent of 3");
        QCOMPARE(figures("\"a\",3,1,4,75\r\n\"b\",2,0,2,100\r\n\"c\",0,0,0,\r\n"),
                 "83.33 of 6, 1 failed at 1, 1 silent of 3");
        // Names with commas, quotes and line ends.
        QCOMPARE(figures("\"a,\"\"b\"\"\r\n,1\",0,2,2,0\r\n\"\",1,0,1,100\r\n"),
                 "33.33 of 3, 2 failed at 1, 0 silent of 2");
        QCOMPARE(figures(""), "n/a of 0, 0 failed at 0, 0 silent of 0");
        QCOMPARE(figures("\"a\",3,1,4,75\r\n\"b\",2"), "none"); // cut short
        QCOMPARE(figures("\"a\",x,1,4,75\r\n"), "none");
    }
};

QTEST_GUILESS_MAIN(TestTemplates)
#include "tst_templates.moc"
