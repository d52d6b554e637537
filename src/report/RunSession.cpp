#include "report/RunSession.h"

RunSession::RunSession(const clsGrapherConfig &configuration, DatabaseSource source, RunLog &runLog)
    : settings(configuration)
    , tree(settings)
    , log(runLog)
    , database(std::move(source))
{
    if (pool.size() < pool.wanted())
        log.status(QStringLiteral("Only %1 of %2 threads can be started to draw charts.")
                       .arg(pool.size())
                       .arg(pool.wanted()));
}
