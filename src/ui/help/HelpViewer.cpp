#include "ui/help/HelpViewer.h"

#include "base/Error.h"
#include "base/Paths.h"
#include "ui/common/Messages.h"
#include "ui/help/frmHelp.h"

#include <QApplication>
#include <QShortcut>

namespace {

frmHelp *openViewer()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (auto *viewer = qobject_cast<frmHelp *>(window))
            return viewer;
    }
    return nullptr;
}

} // namespace

void showHelp(const QString &page, QWidget *from)
{
    // A child of the window that asked: beside a modal window only its own children take input.
    QWidget *const owner = from ? from->window() : nullptr;
    frmHelp *viewer = openViewer();
    try {
        if (!viewer || viewer->parentWidget() != owner) {
            delete viewer;
            viewer = new frmHelp(shareFolder() + QLatin1String("/Help"), owner);
        }
        viewer->openPage(page);
    } catch (const Error &error) {
        showCritical(from, QStringLiteral("Help"), errorTail(error));
    }
}

void openHelpOnF1(QWidget *window, const QString &page)
{
    const auto *shortcut = new QShortcut(QKeySequence::HelpContents, window);
    QObject::connect(shortcut, &QShortcut::activated, window,
                     [window, page] { showHelp(page, window); });
}
