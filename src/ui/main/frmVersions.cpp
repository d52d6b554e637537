#include "ui/main/frmVersions.h"

#include "base/Error.h"
#include "definitions/Definitions.h"
#include "ui/common/Messages.h"
#include "ui/common/ScrollPane.h"
#include "ui/common/UiState.h"
#include "ui/common/Widgets.h"
#include "ui/editors/ChartPeriod.h"
#include "ui/help/HelpViewer.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr int fileRole = Qt::UserRole;
constexpr int versionRole = Qt::UserRole + 1;
const QString helpPage = QStringLiteral("definitions.html");

QString captionOf(const QString &file)
{
    const QString name = QFileInfo(file).fileName();
    const QStringList captions = {QStringLiteral("Reports"), QStringLiteral("Charts"),
                                  QStringLiteral("Schedules")};
    return captions.value(definitions().files().indexOf(file), name) + QLatin1String(" (") + name +
           u')';
}

} // namespace

frmVersions::frmVersions(QWidget *parent)
    : QDialog(parent)
    , lvVersions(new QTreeWidget)
    , lblDifference(newTextLabel(QStringLiteral("lblDifference"), 3))
    , cmdRestore(newButton(QStringLiteral("cmdRestore"), QStringLiteral("&Restore"),
                           QStringLiteral("Puts the selected version in the file's place; what "
                                          "it replaces becomes a version")))
{
    setObjectName(QStringLiteral("frmVersions"));
    setWindowTitle(QStringLiteral("Earlier Versions of the Definitions"));
    setModal(true);
    setSizeGripEnabled(true);
    lvVersions->setObjectName(QStringLiteral("lvVersions"));
    lvVersions->setAccessibleName(QStringLiteral("Earlier versions of each file"));
    lvVersions->setHeaderLabels(
        {QStringLiteral("File, and until when its versions held"), QStringLiteral("Size")});
    lvVersions->setUniformRowHeights(true);
    lvVersions->setAllColumnsShowFocus(true);
    lblDifference->setAccessibleName(QStringLiteral("What restoring would change"));

    auto *scroll = new ScrollPane(lblDifference);
    scroll->setWidgetResizable(true);
    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName(QStringLiteral("sspVersions"));
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(lvVersions);
    splitter->addWidget(scroll);
    splitter->setStretchFactor(0, 1);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close | QDialogButtonBox::Help);
    buttons->addButton(cmdRestore, QDialogButtonBox::ActionRole);
    buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("cmdClose"));
    buttons->button(QDialogButtonBox::Help)->setObjectName(QStringLiteral("cmdHelp"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(newTextLabel(
        QStringLiteral("lblIntroduction"),
        QStringLiteral("Each change keeps the version of the file that it replaces: the last %1 "
                       "of each. The dates of runs stay as they are now.")
            .arg(versionsKept)));
    layout->addWidget(splitter, 1);
    layout->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::helpRequested, this, [this] { showHelp(helpPage, this); });
    connect(cmdRestore, &QPushButton::clicked, this, &frmVersions::restore);
    connect(lvVersions, &QTreeWidget::currentItemChanged, this, &frmVersions::showDifference);
    openHelpOnF1(this, helpPage);
    activateAfterDialogs(this);
    resize(84 * fontMetrics().averageCharWidth(), 26 * fontMetrics().lineSpacing());
    fill();
    restoreWindowState(this);
    lvVersions->setFocus();
}

void frmVersions::fill()
{
    lvVersions->clear();
    QTreeWidgetItem *first = nullptr;
    for (const QString &file : definitions().files()) {
        auto *top = new QTreeWidgetItem(lvVersions, {captionOf(file)});
        top->setToolTip(0, wrappingToolTip(file));
        for (const FileVersion &version : versionsOf(file)) {
            auto *row = new QTreeWidgetItem(
                top, {momentInWords(version.replaced), QLocale().formattedDataSize(version.bytes)});
            row->setData(0, fileRole, file);
            row->setData(0, versionRole, version.path);
            first = first ? first : row;
        }
        if (top->childCount() == 0)
            top->setText(0, top->text(0) + QLatin1String(": none yet"));
    }
    lvVersions->expandAll();
    lvVersions->resizeColumnToContents(0);
    lvVersions->setCurrentItem(first ? first : lvVersions->topLevelItem(0));
    showDifference();
}

void frmVersions::showDifference()
{
    const QTreeWidgetItem *row = lvVersions->currentItem();
    const QString version = row ? row->data(0, versionRole).toString() : QString();
    cmdRestore->setEnabled(false);
    if (version.isEmpty()) {
        lblDifference->setText(QStringLiteral("Select a version to see what it would change."));
        return;
    }
    try {
        const QStringList lines =
            definitions().whatRestoring(row->data(0, fileRole).toString(), version);
        lblDifference->setText(lines.isEmpty()
                                   ? QStringLiteral("It holds the same definitions as the file "
                                                    "does now.")
                                   : QLatin1String("Restoring it\n") + lines.join(u'\n'));
        cmdRestore->setEnabled(!lines.isEmpty());
    } catch (const Error &error) {
        lblDifference->setText(QStringLiteral("It cannot be restored: ") + error.description);
    }
}

void frmVersions::restore()
{
    const QTreeWidgetItem *row = lvVersions->currentItem();
    if (!row || !askYesNo(this, windowTitle(),
                          QStringLiteral("Restore the version that held until %1?\nThe present one "
                                         "is kept as a version.")
                              .arg(row->text(0))))
        return;
    try {
        definitions().restoreVersion(row->data(0, fileRole).toString(),
                                     row->data(0, versionRole).toString());
        m_tag = QStringLiteral("SAVE");
    } catch (const Error &error) {
        showCritical(this, QStringLiteral("Not Restored"),
                     QStringLiteral("The version could not be restored. The file is as it was.") +
                         QLatin1String("\n\n") + errorTail(error));
    }
    fill();
}

void frmVersions::done(int result)
{
    saveWindowState(this);
    QDialog::done(result);
}
