#include "app/Application.h"
#include "app/Options.h"
#include "core/platform/Terminal.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    platform::letLimitedWritesFail();
    const Options options = parseOptions(platform::programArguments(argc, argv));
    if (options.unattended() || !options.error.isEmpty())
        platform::attachTerminal();

    QCoreApplication::setApplicationName(QStringLiteral("VantrelGrapher"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VANTREL_VERSION));
    if (!options.error.isEmpty())
        return refuse(options.error);
    if (options.command == Command::Help)
        return show(usageText());
    if (options.command == Command::Version)
        return show(QStringLiteral("VantrelGrapher " VANTREL_VERSION "\n"));

    const std::unique_ptr<QCoreApplication> application = createApplication(argc, argv, options);
    return runApplication(options);
}
