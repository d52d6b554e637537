#include "../charts/ChartSamples.h"
#include "base/ProgramState.h"
#include "charts/ChartStyle.h"
#include "report/PdfReport.h"
#include "support/Rows.h"
#include "support/Zones.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace {

/// What one of the tools for PDF files prints; they check the file, too.
QString outputOf(const QString &tool, const QStringList &arguments)
{
    QProcess process;
    process.start(tool, arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return "cannot run " + tool;
    return QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError()) +
           QString("status %1").arg(process.exitCode());
}

const QString hostile = "<b>\n%1 (x) \\) ~ \u0141\u00F3d\u017A \u202Eend";
const QString shown = "<b> %1 (x) \\) ~ \u0141\u00F3d\u017A end";

/// A report of so many devices with so many charts each, one of them not drawn.
class Report
{
public:
    explicit Report(int devices, int charts)
    {
        m_plan.title = hostile;
        m_plan.latest = utc("2024-03-05T00:00:00");
        m_plan.pdf = PlannedReport::Pdf::Beside;
        m_figures.period = {m_plan.latest / 1000 - 86'400, m_plan.latest / 1000};
        m_plan.service = ServiceTime(m_figures.period, {}, {});
        const ReportContext context(m_plan, m_builder, m_settings);
        PdfReport pdf(context, path());
        for (int i = 0; i < devices; ++i) {
            const DeviceFigures device = deviceOf(i);
            std::vector<PaperChart> paper;
            for (int chart = 0; chart < charts; ++chart)
                paper.push_back({"Item",
                                 StateChart{context.chartFrame("Chart", device.name),
                                            stateSeries({{3, 1}, {4, 0}})},
                                 {}});
            if (charts > 0)
                paper.front() = {"Bad", {}, "too many"};
            pdf.addDevice(device, paper);
            m_figures.devices.insert(m_figures.devices.begin(), device);
        }
        if (QDir(m_folder.path()).exists("REPORT.PDF"))
            qFatal("The file is there before it is whole");
        summarize(m_figures, m_plan.service);
        pdf.finish(m_figures);
    }

    QString path() const { return m_folder.filePath("REPORT.PDF"); }
    QStringList files() const { return QDir(m_folder.path()).entryList(QDir::Files); }
    QString text(int page) const
    {
        const QString number = QString::number(page);
        return outputOf("pdftotext", {"-layout", "-f", number, "-l", number, path(), "-"});
    }

private:
    DeviceFigures deviceOf(int number) const
    {
        DeviceFigures device;
        device.name = hostile + " Device " + QString::number(number);
        device.folder = QString::number(number);
        ItemFigures &item = device.items.emplace_back();
        item.isState = item.counts = true;
        std::vector<Test> tests;
        for (qint64 i = 0; i <= 24; ++i)
            tests.push_back({m_figures.period.from + i * 3600, i < 5 || i > 5 + number % 7});
        item.present = periodFigures(tests, {}, m_plan.service, true);
        addToTimeline(device.timeline, tests, m_plan.service, item.present.rate);
        summarize(device, m_plan.service, {}, 99);
        return device;
    }

    QTemporaryDir m_folder;
    PlannedReport m_plan;
    clsChartOutputBuilder m_builder;
    clsGrapherConfig m_settings;
    ReportFigures m_figures;
};

} // namespace

class tst_PdfReport : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void initTestCase()
    {
        setZone("UTC");
        warmUpFonts();
    }
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void pages_data()
    {
        // The pages before the devices, and those of each device.
        const Rows<int, int, int, int, QString, QString> row("devices", "charts", "front", "each",
                                                             "locale", "size");
        row("none", 0, 0, 1, 0, "de_DE", "595 x 842 pts (A4)");
        row("one without charts", 1, 0, 3, 1, "en_US", "612 x 792 pts (letter)");
        row("two a page", 3, 2, 3, 1, "en_GB", "595 x 842 pts (A4)");
        row("four a page", 3, 5, 3, 2, "en_US", "612 x 792 pts (letter)");
        row("many", 150, 1, 7, 1, "de_DE", "595 x 842 pts (A4)");
    }
    void pages()
    {
        QFETCH(int, devices);
        QFETCH(int, front);
        QFETCH(int, each);
        QFETCH(int, charts);
        QFETCH(QString, locale);
        QFETCH(QString, size);
        QLocale::setDefault(QLocale(locale));
        const Report report(devices, charts);
        QCOMPARE(report.files(), QStringList("REPORT.PDF"));

        const QString check = outputOf("qpdf", {"--check", report.path()});
        QVERIFY2(check.contains("No syntax") && check.endsWith("status 0"), qPrintable(check));
        const QString info = outputOf("pdfinfo", {report.path()});
        QVERIFY2(info.contains(
                     QRegularExpression(QString("Pages: +%1\n").arg(front + devices * each))) &&
                     info.contains(size) && info.contains("Title:           " + shown) &&
                     info.contains("Mar  5 00:00:00 2024"),
                 qPrintable(info));
        const QString fonts = outputOf("pdffonts", {report.path()});
        QVERIFY2(fonts.contains("yes no  yes") && !fonts.contains("no  no "), qPrintable(fonts));
        const QString title = report.text(1);
        QVERIFY2(title.contains("2024-03-05 00:00") && title.contains("succeeded") == (devices > 0),
                 qPrintable(title));

        // Bookmarks lead to the devices, whose pages are numbered from 1.
        const QByteArray outline =
            outputOf("qpdf", {"--json", "--json-key=outlines", report.path()}).toUtf8();
        for (const int number : {0, devices / 2, devices - 1}) {
            if (devices == 0)
                continue;
            const QString name = QString("Device %1").arg(number);
            const int page = front + number * each + 1;
            const QRegularExpression mark(
                QString("\"destpageposfrom1\": %1,[^{}]*%2\"").arg(page).arg(name));
            QVERIFY2(mark.match(outline).hasMatch(), qPrintable(name + outline.left(3000)));
            const QString text = report.text(page);
            QVERIFY2(
                text.contains(QRegularExpression(name + "$", QRegularExpression::MultilineOption)),
                qPrintable(text));
            QVERIFY(text.contains(QRegularExpression(QString(" %1\n").arg(number * each + 1))));
            QCOMPARE(text.contains("could not be drawn: too many"), charts > 0);
        }
        // The contents link to each device, and tables to those that they name.
        QFile file(report.path());
        QVERIFY(file.open(QFile::ReadOnly));
        QVERIFY(file.readAll().count("/Subtype /Link") >= devices * 2);
        if (devices > 0)
            QVERIFY(report.text(2).contains(QRegularExpression("Device 0 +1\\b")));
    }

    void leavesNothingUnfinished()
    {
        QTemporaryDir folder;
        {
            PdfDocument document(folder.filePath("a.pdf"), QPageSize(QPageSize::A4), "A");
            document.newPage();
        }
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList());
    }
};

QTEST_MAIN(tst_PdfReport)
#include "tst_PdfReport.moc"
