#include "definitions/TemplateFile.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Paths.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {

bool isPageName(const QString &path)
{
    return path.endsWith(QLatin1String(".htm"), Qt::CaseInsensitive) ||
           path.endsWith(QLatin1String(".html"), Qt::CaseInsensitive);
}

QString declaredAsUtf8(QString text)
{
    static const QRegularExpression declaration(
        QStringLiteral(
            "(<meta\\b[^>]*?\\bcharset\\s*=\\s*[\"']?|<\\?xml\\b[^>]*?\\bencoding\\s*=\\s*[\"'])"
            "(?!utf-8\\b)[\\w.:-]+"),
        QRegularExpression::CaseInsensitiveOption);
    return text.replace(declaration, QStringLiteral("\\1utf-8"));
}

} // namespace

QString chartTemplatePath(const QString &name, const QString &folder)
{
    return std::any_of(name.begin(), name.end(), isSeparator) ? name : folder + name;
}

QString templateFault(const QString &path)
{
    const QFileInfo file(nativePath(path));
    if (!file.exists())
        return QStringLiteral("File not found: '%1'").arg(file.filePath());
    if (file.isFile() && isPageName(file.filePath()) && isPageName(file.canonicalFilePath()))
        return QString();
    return QStringLiteral("'%1' is not a template: only regular files named *.htm or *.html are")
        .arg(file.filePath());
}

QString companionFault(const QString &name, const QString &folder)
{
    if (name == u".." || std::any_of(name.begin(), name.end(), isSeparator))
        return QStringLiteral("'%1' is not a file of the configuration folder").arg(name);
    const QFileInfo file(nativePath(folder + name));
    if (!file.exists())
        return QStringLiteral("there is no companion file '%1'").arg(name);
    for (const QString &path : {file.filePath(), file.canonicalFilePath()}) {
        for (const QLatin1String ending :
             {QLatin1String(".config"), QLatin1String(".xml"), QLatin1String(".fac")}) {
            if (path.endsWith(ending, Qt::CaseInsensitive))
                return QStringLiteral("'%1' is a configuration, which is not published").arg(name);
        }
    }
    return QString();
}

QString readTemplate(const QString &path)
{
    if (const QString fault = templateFault(path); !fault.isEmpty())
        throw Error(fileExists(path) ? PermissionDenied : FileNotFound, fault);
    const QString text = readTextFile(path);
    if (text.isEmpty())
        throw Error(InvalidFileFormat, QStringLiteral("'%1' is empty").arg(nativePath(path)));
    return declaredAsUtf8(text);
}
