#include "ui/ToolTip.h"

QString wrappingToolTip(const QString &text)
{
    if (text.isEmpty())
        return {};
    QString html = text.toHtmlEscaped();
    for (const QChar separator : {u'/', u'\\'})
        html.replace(separator, QString(separator) + QChar(0x200B)); // paths may break here
    return QLatin1String("<p style='white-space: pre-wrap'>") + html + QLatin1String("</p>");
}
