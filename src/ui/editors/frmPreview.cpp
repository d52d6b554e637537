#include "ui/editors/frmPreview.h"

#include "base/Clock.h"
#include "ui/common/UiState.h"
#include "ui/common/Widgets.h"
#include "ui/editors/ChartPeriod.h"
#include "ui/editors/DataPreview.h"
#include "ui/help/HelpViewer.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
const QString helpPage = QStringLiteral("preview.html");
}

frmPreview::frmPreview(const clsGraphDef &chart, const QString &muid, const QString &dataIdent,
                       QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frmPreview"));
    setWindowTitle(QStringLiteral("Preview"));
    setModal(true);
    setSizeGripEnabled(true);
    auto *preview = new DataPreview;
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close | QDialogButtonBox::Help);
    buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("cmdClose"));
    buttons->button(QDialogButtonBox::Help)->setObjectName(QStringLiteral("cmdHelp"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(preview, 1);
    layout->addWidget(newTextLabel(QStringLiteral("lblPeriod"), periodInWords(chart)));
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::helpRequested, this, [this] { showHelp(helpPage, this); });
    openHelpOnF1(this, helpPage);
    resize(760, 520);
    restoreWindowState(this);
    preview->choose(muid, dataIdent);
    preview->showChart(chart, currentInstant());
}

void frmPreview::done(int result)
{
    saveWindowState(this);
    QDialog::done(result);
}
