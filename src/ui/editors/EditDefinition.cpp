#include "ui/editors/EditDefinition.h"

#include "definitions/Definitions.h"
#include "definitions/Usage.h"
#include "ui/editors/frmGraphDefEditor.h"
#include "ui/editors/frmScheduleDefEditor.h"

namespace {

/// Empty where nobody else is affected.
QString affected(Reports users, const char *what, const QString &besides)
{
    std::erase_if(users, [&besides](const auto &report) {
        return report->ReportID.compare(besides, Qt::CaseInsensitive) == 0;
    });
    if (users.empty())
        return {};
    return QStringLiteral("This %1 is %2%3. A change is for all of them.")
        .arg(QLatin1String(what), besides.isEmpty() ? QString() : QStringLiteral("also "),
             usageText(users));
}

template <typename Editor, typename Definition>
bool edit(const Definition &definition, const QString &note, QWidget *parent)
{
    Editor editor(parent);
    editor.load(definition);
    editor.setNote(note);
    editor.setSaveAction([&editor, &definition] {
        const auto saved = std::make_shared<Definition>(definition);
        editor.store(*saved);
        definitions().store(saved);
    });
    editor.exec();
    return editor.tag() == u"SAVE";
}

} // namespace

bool editChart(const clsGraphDef &chart, QWidget *parent, const QString &besides)
{
    const Reports users = reportsWithChart(definitions().gReportDefs, chart.ChartID);
    return edit<frmGraphDefEditor>(chart, affected(users, "chart", besides), parent);
}

bool editSchedule(const clsScheduleDef &schedule, QWidget *parent, const QString &besides)
{
    const Reports users = reportsWithSchedule(definitions().gReportDefs, schedule.ScheduleID);
    return edit<frmScheduleDefEditor>(schedule, affected(users, "schedule", besides), parent);
}
