// The commands of the main window on its reports: their definitions and their pages.

#include "base/Error.h"
#include "base/Files.h"
#include "config/Status.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Definitions.h"
#include "definitions/Usage.h"
#include "report/OutputTree.h"
#include "scheduling/Standings.h"
#include "ui/common/Messages.h"
#include "ui/editors/frmReportDefEditor.h"
#include "ui/main/DefinitionManager.h"
#include "ui/main/ReportList.h"
#include "ui/main/ReportView.h"
#include "ui/main/StatusBox.h"
#include "ui/main/UndoSteps.h"
#include "ui/main/frmGrapherMain.h"
#include "ui/main/frmHistory.h"
#include "ui/main/frmVersions.h"

#include <QAction>
#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QGuiApplication>
#include <QPushButton>
#include <QUrl>

namespace {

constexpr qsizetype titlesAsked = 10; ///< of reports to be removed

QString quoted(const QString &title)
{
    return u'\u201c' + title + u'\u201d';
}

/// "report definition “Servers”", "3 report definitions"
QString namesOf(const Reports &reports)
{
    return reports.size() == 1
               ? QLatin1String("report definition ") + quoted(reports.front()->ReportTitle)
               : QStringLiteral("%1 report definitions").arg(reports.size());
}

QString removalQuestion(const Reports &reports)
{
    QString question =
        QStringLiteral("Are you sure you wish to remove the %1?").arg(namesOf(reports));
    if (reports.size() == 1)
        return question;
    qsizetype left = titlesAsked;
    question += u'\n';
    for (const auto &report : reports) {
        if (left-- > 0)
            question += u'\n' + report->ReportTitle;
    }
    return left < 0 ? question + QLatin1String("\n…") : question;
}

/// Whether another report than those removed has its pages in the same folder: identifiers may
/// differ in nothing that a folder's name has.
bool isShared(const QString &folder, const OutputTree &tree)
{
    const auto &all = definitions().gReportDefs;
    return std::any_of(all.begin(), all.end(), [&](const auto &report) {
        return tree.reportFolder(report->ReportID).compare(folder, Qt::CaseInsensitive) == 0;
    });
}

} // namespace

void frmGrapherMain::addReport()
{
    ShowStatus(QStringLiteral("Loading report definition editor."));
    editReport(clsReportDef());
    ShowStatus(QStringLiteral("Idle."));
}

void frmGrapherMain::modifyReport()
{
    updateCommands();
    if (!cmdReportModify->isEnabled())
        return;
    if (const auto report = definitions().gReportDefs.find(lvReports->selectedIds().constFirst()))
        editReport(*report);
}

void frmGrapherMain::duplicateReport()
{
    const QStringList selected = lvReports->selectedIds();
    const auto report =
        selected.size() == 1 ? definitions().gReportDefs.find(selected.constFirst()) : nullptr;
    if (report)
        editReport(duplicate(*report, definitions().gReportDefs));
}

/// Lets the user edit a report, which is a new one when there is none of its id. True when it was
/// saved.
bool frmGrapherMain::editReport(const clsReportDef &shown)
{
    const qsizetype before = definitions().changeCount();
    const bool isNew = !definitions().gReportDefs.contains(shown.ReportID);
    frmReportDefEditor editor(this);
    editor.load(shown);
    editor.setSaveAction([&] {
        const auto latest = definitions().gReportDefs.find(shown.ReportID);
        const auto changed = std::make_shared<clsReportDef>(latest ? *latest : shown);
        editor.store(*changed);
        definitions().store(changed);
    });
    editor.exec();
    const bool isSaved = editor.tag() == u"SAVE";
    if (const auto saved = definitions().gReportDefs.find(shown.ReportID))
        m_undo->add((isNew ? QLatin1String("addition of ") : QLatin1String("change of ")) +
                        quoted(saved->ReportTitle),
                    before);
    // Charts and schedules may have changed even where the report has not.
    m_list->refresh();
    if (isSaved)
        lvReports->select(shown.ReportID);
    updateCommands();
    return isSaved;
}

void frmGrapherMain::removeReport()
{
    updateCommands();
    if (!cmdReportRemove->isEnabled())
        return;
    Reports reports;
    QStringList ids;
    for (const QString &id : lvReports->selectedIds()) {
        if (const auto report = definitions().gReportDefs.find(id)) {
            reports.push_back(report);
            ids.append(id);
        }
    }
    bool withPages = false;
    if (reports.empty() ||
        !askYesNo(this, QStringLiteral("Remove Report Definition"),
                  QStringLiteral("Edit, Undo brings definitions back as long as this window is "
                                 "open, but not their pages.\n") +
                      removalQuestion(reports),
                  QStringLiteral("Delete their &pages, too, and all earlier runs of them"),
                  withPages))
        return;
    const qsizetype before = definitions().changeCount();
    try {
        definitions().removeReportDefs(ids);
        m_undo->add(QLatin1String("removal of the ") + namesOf(reports), before);
        if (withPages)
            removePages(ids);
        refreshReportList();
    } catch (const Error &error) {
        showCritical(this, QStringLiteral("Not Removed"),
                     QStringLiteral("The report definition could not be removed. It stays as it "
                                    "was.") +
                         QLatin1String("\n\n") + errorTail(error));
    }
    m_list->refresh();
    updateCommands();
}

/// The folders vanish at once; emptying them takes as long as it takes.
void frmGrapherMain::removePages(const QStringList &reportIds)
{
    const OutputTree tree(gConfig());
    QStringList folders;
    for (const QString &id : reportIds) {
        try {
            if (isShared(tree.reportFolder(id), tree))
                continue;
            const QString folder = tree.setAside(id);
            if (!folder.isEmpty())
                folders.append(folder);
        } catch (const Error &error) {
            txtStatusInfo->addLine(QLatin1String("Error removing pages ") + errorTail(error));
        }
    }
    auto *removing = new Background(this);
    connect(removing, &Background::ended, removing, &QObject::deleteLater);
    removing->start([this, folders](const Background::Link &link) {
        for (const QString &folder : folders) {
            if (!QDir(folder).removeRecursively())
                link.deliver([this, folder] {
                    txtStatusInfo->addLine(
                        QStringLiteral("Error removing pages: the folder '%1' is still there")
                            .arg(folder));
                });
        }
    });
}

void frmGrapherMain::undo()
{
    const QString what = m_undo->next();
    if (what.isEmpty())
        return;
    try {
        m_undo->undo();
        txtStatusInfo->addLine(QStringLiteral("Taken back: %1.").arg(what));
        refreshReportList();
    } catch (const Error &error) {
        showCritical(this, QStringLiteral("Not Undone"),
                     QStringLiteral("The %1 could not be taken back.").arg(what) +
                         QLatin1String("\n\n") + errorTail(error));
    }
    m_list->refresh();
    updateCommands();
}

void frmGrapherMain::showCharts()
{
    frmChartManager(*m_undo, this).exec();
    m_list->refresh();
    updateCommands();
}

void frmGrapherMain::showSchedules()
{
    frmScheduleManager(*m_undo, this).exec();
    m_list->refresh();
    updateCommands();
}

void frmGrapherMain::showVersions()
{
    frmVersions dialog(this);
    dialog.exec();
    if (dialog.tag() == u"SAVE")
        loadReports();
    updateCommands();
}

void frmGrapherMain::showHistory()
{
    frmHistory dialog(this);
    dialog.exec();
}

/// The path of the one selected report's page; empty, and a message, where there is none.
QString frmGrapherMain::selectedPage()
{
    const QStringList selected = lvReports->selectedIds();
    const auto report =
        selected.size() == 1 ? definitions().gReportDefs.find(selected.constFirst()) : nullptr;
    if (!report)
        return {};
    const QString page = OutputTree(gConfig()).reportPage(report->ReportID);
    if (fileExists(page))
        return page;
    showInformation(this, QStringLiteral("Open Page"),
                    QStringLiteral("There is no page of this report yet. Run the report first."));
    return {};
}

void frmGrapherMain::openPage()
{
    if (const QString page = selectedPage(); !page.isEmpty())
        openInBrowser(QLatin1String("file://") + page);
}

void frmGrapherMain::openContents()
{
    QString page =
        QLatin1String("file://") + OutputTree(gConfig()).folder() + QLatin1String("REPORTS.HTM");
    openInBrowser(page.replace(u'\\', u'/'));
}

void frmGrapherMain::copyLink()
{
    const QString page = selectedPage();
    if (page.isEmpty())
        return;
    const QString link = QUrl::fromLocalFile(nativePath(page)).toString(QUrl::FullyEncoded);
    QGuiApplication::clipboard()->setText(link);
    txtStatusInfo->addLine(QLatin1String("Copied: ") + link);
}

void frmGrapherMain::openFolder()
{
    if (const QString page = selectedPage(); !page.isEmpty())
        openInBrowser(QLatin1String("file://") + QFileInfo(page).path());
}

void frmGrapherMain::openInBrowser(const QString &url)
{
    const QString path = nativePath(url.mid(int(qstrlen("file://"))));
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        showWarning(this, QStringLiteral("Warning"),
                    QLatin1String("Error loading browser to ") + url);
}
