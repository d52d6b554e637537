#include "app/Application.h"
#include "app/Options.h"
#include "base/ProgramState.h"
#include "platform/Terminal.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    const ProgramState state;
    platform::letLimitedWritesFail();
    const Options options = parseOptions(platform::programArguments(argc, argv));
    if (options.unattended() || !options.error.isEmpty())
        platform::attachTerminal();

    QCoreApplication::setApplicationName(QStringLiteral("VantrelGrapher"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VANTREL_VERSION));
    if (!options.error.isEmpty())
        return refuse(options.error);
    if (options.command == Command::Help)
        return printText(usageText());
    if (options.command == Command::Version)
        return printText(QStringLiteral("VantrelGrapher " VANTREL_VERSION "\n"));

    const std::unique_ptr<QCoreApplication> application = createApplication(argc, argv, options);
    return runApplication(options);
}
