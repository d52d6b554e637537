#include "ui/HelpViewer.h"

#include "core/Error.h"
#include "core/Paths.h"
#include "ui/HelpWindow.h"
#include "ui/Messages.h"

#include <QPointer>
#include <QShortcut>

void showHelp(const QString &page, QWidget *from)
{
    // A child of the window that asked: beside a modal window only its own children take input.
    static QPointer<frmHelp> viewer;
    QWidget *const owner = from ? from->window() : nullptr;
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
