#include "base/Error.h"

#include <new>

Error::Error(int errorNumber, QString errorDescription)
    : number(errorNumber)
    , description(std::move(errorDescription))
    , m_what(errorTail(*this).toUtf8())
{}

const char *Error::what() const noexcept
{
    return m_what.constData();
}

Error errorOf(const std::exception &exception)
{
    if (const auto *error = dynamic_cast<const Error *>(&exception))
        return *error;
    if (dynamic_cast<const std::bad_alloc *>(&exception))
        return Error(OutOfMemory, QStringLiteral("Out of memory"));
    return Error(DeviceIO, QString::fromLocal8Bit(exception.what()));
}

QString errorTail(const Error &error)
{
    return QLatin1Char('[') + QString::number(error.number) + QLatin1String("] ") +
           error.description;
}
