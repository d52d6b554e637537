#include "report/Templates.h"

#include "core/Error.h"
#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/Paths.h"
#include "core/State.h"
#include "core/Status.h"

QString GetHTIPart(const QString &text, QLatin1String marker, bool before)
{
    const qsizetype at = text.indexOf(marker);
    if (before)
        return at < 0 ? text : text.left(at);
    const qsizetype behind = at + marker.size();
    if (at < 0 || text.size() - behind < 2)
        return QString();
    return text.mid(behind) + u' ';
}

QString fillTemplate(const QString &text, const Placeholders &values)
{
    static constexpr QLatin1String fence("%%");
    const QStringView view(text);
    QString filled;
    filled.reserve(text.size() + 64);
    qsizetype done = 0;
    qsizetype at = text.indexOf(fence);
    while (at >= 0) {
        const QStringView behind = view.mid(at + fence.size());
        qsizetype next = at + 1;
        for (const auto &[name, value] : values) {
            if (behind.startsWith(name) && behind.mid(name.size()).startsWith(fence)) {
                filled += view.mid(done, at - done);
                filled += value;
                next = done = at + name.size() + 2 * fence.size();
                break;
            }
        }
        at = text.indexOf(fence, next);
    }
    filled += view.mid(done);
    return filled;
}

QString htmlEscaped(const QString &text)
{
    return text.toHtmlEscaped();
}

void clsChartOutputBuilder::LoadTOCTemplates()
{
    if (folder.isEmpty())
        folder = NormalizeFolder(gConfig->PTH_Config());
    const auto load = [this](const QString &name) {
        try {
            return readTextFile(folder + name);
        } catch (const Error &error) {
            ShowStatus(QStringLiteral("Error loading template '%1' ").arg(name) + errorTail(error));
            return QString();
        }
    };
    TOC = load(gConfig->TIN_TOC);
    TOC_ReportItem = load(gConfig->TIN_TOC_ReportItem);
    REPORT = load(gConfig->TIN_REPORT);
    REP_TOC = load(gConfig->TIN_REP_TOC);
    REP_DeviceItem = load(gConfig->TIN_REP_DeviceItem);
    REP_Top = load(gConfig->TIN_REP_Top);
    REP_Summary = load(gConfig->TIN_REP_Summary);
    STATE_Detail = load(gConfig->TIN_STATE_Detail);
    STATE_DetailItem = load(gConfig->TIN_STATE_DetailItem);
    COUNT_Detail = load(gConfig->TIN_COUNT_Detail);
    COUNT_DetailItem = load(gConfig->TIN_COUNT_DetailItem);
    DEV_Rep = load(gConfig->TIN_DEV_Rep);
    VARB_Item = load(gConfig->TIN_VARB_Item);
}

void PageText::write(const QString &piece)
{
    m_text += piece;
    m_text += QLatin1String("\r\n");
}
