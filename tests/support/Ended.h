#pragma once

#include <QProcess>

/// How a program ended that a test has run.
struct Ended
{
    int status = -1; ///< -1 when it did not start, crashed, or took longer than four minutes
    QString output;
    QString errors;

    QString all() const { return output + errors; }
};

inline Ended run(const QString &program, const QStringList &arguments, const QString &folder = {})
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    const bool ended = process.waitForFinished(240'000);
    const QString output = QString::fromUtf8(process.readAllStandardOutput());
    if (!ended || process.exitStatus() != QProcess::NormalExit)
        return {-1, output, process.errorString()};
    return {process.exitCode(), output, QString::fromUtf8(process.readAllStandardError())};
}
