#include "core/Error.h"

Error::Error(int errorNumber, QString errorDescription)
    : number(errorNumber)
    , description(std::move(errorDescription))
    , m_what(errorTail(*this).toUtf8())
{}

const char *Error::what() const noexcept
{
    return m_what.constData();
}

QString errorTail(const Error &error)
{
    return QLatin1Char('[') + QString::number(error.number) + QLatin1String("] ") +
           error.description;
}
