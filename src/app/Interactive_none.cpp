// The build without windows: it runs unattended only.

#include "app/Interactive.h"
#include "base/Error.h"

#include <QGuiApplication>

std::unique_ptr<QCoreApplication> createWindowApplication(int &argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

int runInteractive(const Options &)
{
    throw Error(ItemNotFound, QStringLiteral("This program was built without its window; use "
                                             "/AUTO, --run or --list (see --help)"));
}

void showStartError(const QString &) {}
