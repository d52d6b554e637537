#include "report/DeviceJob.h"

#include "base/Files.h"
#include "charts/ChartPainter.h"

#include <QDir>
#include <QRegularExpression>
#include <QSet>

Chart chartOf(const ReportContext &context, const DeviceFacts &device, const ItemFacts &item)
{
    const clsGraphDef &chart = context.plan.chart;
    const ChartFrame frame = context.chartFrame(
        chart.ChartTitle, device.counts.name + QStringLiteral(" \u2013 ") + item.name);
    if (item.series.isState())
        return StateChart{frame, item.series, item.tests};
    return CounterChart{frame, chart.SampleLabel, item.unit, item.series, item.values};
}

DeviceJob::DeviceJob(const ReportContext &context, std::unique_ptr<DeviceQuestions> questions,
                     QString folder, Neighbours neighbours, RunSession &session)
    : m_context(context)
    , m_questions(std::move(questions))
    , m_folder(std::move(folder))
    , m_neighbours(std::move(neighbours))
    , m_hasFiles(context.plan.pdf != PlannedReport::Pdf::Alone)
{
    if (!m_hasFiles)
        return;
    for (const int number : m_questions->itemNumbers()) {
        const QString image = u'G' + session.nextImageNumber();
        m_files.push_back({image + QLatin1String(".PNG"), image + QLatin1String(".HTM"),
                           QString::number(number) + QLatin1String("_detail.csv"),
                           context.imageSize(), std::nullopt});
    }
}

void DeviceJob::start(WorkerPool &pool)
{
    pool.submitWork(m_folder, [self = shared_from_this(), &pool] {
        try {
            self->computeFacts(pool);
        } catch (...) {
            self->m_done.set_exception(std::current_exception());
        }
    });
}

void DeviceJob::computeFacts(WorkerPool &pool)
{
    m_facts = m_questions->takeFacts();
    m_questions.reset();
    m_partsLeft = m_files.size() + 1;
    for (size_t i = m_files.size(); i-- > 0;) { // parts come first in, first done
        pool.submitPart(imagePath(i), [self = shared_from_this(), i] {
            self->drawChart(i);
            ++self->m_itemsDone;
            self->endPart();
        });
    }
    endPart();
}

void DeviceJob::drawChart(size_t item)
{
    const ItemFacts &facts = m_facts.items[item];
    ItemFiles &files = m_files[item];
    files.problem = facts.error;
    if (files.problem)
        return;
    try {
        const Chart chart = chartOf(m_context, m_facts, facts);
        files.imageSize = chartSize(chart);
        saveChart(chart, imagePath(item), m_context.settings.IMG_Format);
    } catch (const std::exception &exception) {
        files.problem = errorOf(exception);
    }
}

/// The thread that ends the last part writes the pages, which show what became of the others.
void DeviceJob::endPart()
{
    if (--m_partsLeft > 0)
        return;
    try {
        writeFiles();
    } catch (...) {
        m_done.set_exception(std::current_exception());
    }
}

void DeviceJob::writeFiles()
{
    if (m_hasFiles) {
        for (const OutputFile &file : deviceFiles(m_context, m_facts, m_files, m_neighbours))
            saveExactFile(m_folder + file.name, file.bytes);
        removeStaleCharts();
    }
    DeviceResult result;
    for (const ItemFacts &item : m_facts.items) {
        result.samples += item.samples;
        result.charts += item.error ? 0 : 1;
        if (item.error && !m_hasFiles)
            result.chartErrors.push_back({m_facts.counts.name + u' ' + item.name, *item.error});
    }
    for (size_t i = 0; i < m_files.size(); ++i) {
        if (m_files[i].problem)
            result.chartErrors.push_back({imagePath(i), *m_files[i].problem});
    }
    if (m_context.plan.pdf != PlannedReport::Pdf::None)
        result.paper = paperCharts();
    result.counts = std::move(m_facts.counts);
    result.hasCounted = !m_facts.counted.empty();
    result.tests = std::move(m_facts.tests);
    result.testsError = m_facts.testsError;
    result.figures = std::move(m_facts.figures);
    m_done.set_value(std::move(result));
}

/// The charts as values that take over those of the facts.
std::vector<PaperChart> DeviceJob::paperCharts()
{
    constexpr int antialiased = 2;
    std::vector<PaperChart> charts;
    for (ItemFacts &item : m_facts.items) {
        PaperChart &paper = charts.emplace_back();
        paper.item = item.name;
        if (item.error) {
            paper.problem = item.error->description;
            continue;
        }
        paper.chart = chartOf(m_context, m_facts, item);
        std::visit(
            [](auto &chart) {
                chart.frame.quality = antialiased;
                chart.frame.credit.clear(); // the page has it
            },
            *paper.chart);
        item.series.buckets = {};
    }
    return charts;
}

void DeviceJob::removeStaleCharts() const
{
    // Image numbers differ from run to run: what the new page does not cite would pile up.
    QSet<QString> cited;
    for (const ItemFiles &files : m_files) {
        if (!files.problem)
            cited.insert(files.image);
        cited.insert(files.page);
    }
    static const QRegularExpression chartFile(QStringLiteral("^G[0-9A-Z]+\\.(PNG|HTM)$"));
    QDir folder(nativePath(m_folder));
    const QStringList names = folder.entryList(QDir::Files);
    for (const QString &name : names) {
        if (!cited.contains(name) && chartFile.match(name).hasMatch())
            folder.remove(name);
    }
}
