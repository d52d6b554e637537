#include "app/CheckedFile.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Xml.h"
#include "definitions/Advice.h"
#include "definitions/Dates.h"

#include <QRegularExpression>

CheckedFile::CheckedFile(Findings &findings, const QString &path)
    : m_findings(findings)
{
    try {
        m_source = SourceText::read(path);
        parseXml(m_document, QString::fromUtf8(m_source.bytes));
        m_isRead = true;
    } catch (const Error &error) {
        if (m_source.path.isEmpty())
            m_findings.add(nativePath(path), error.description);
        else
            m_findings.addPlaced(m_source.path, error.description);
    }
}

void CheckedFile::add(const pugi::xml_node &element, const char *attribute, const QString &text)
{
    m_findings.add(m_source, m_source.offsetOf(element, attribute), text);
}

void CheckedFile::requireRoot(const char *name)
{
    if (m_isRead && qstrcmp(root().name(), name) != 0)
        add(root(), nullptr,
            QStringLiteral("the root element is '%1', not '%2'")
                .arg(QString::fromUtf8(root().name()), QLatin1String(name)));
}

void CheckedFile::requireNumber(const pugi::xml_node &element, const NumberRule &rule)
{
    if (element.attribute(rule.attribute))
        requireInRange(element, rule, QString::fromUtf8(element.attribute(rule.attribute).value()));
}

void CheckedFile::requireNumberList(const pugi::xml_node &element, const NumberRule &rule)
{
    const QString list = GetAttr(element, rule.attribute, QString());
    if (list.trimmed().isEmpty())
        return;
    const QStringList entries = list.split(u',');
    for (const QString &entry : entries)
        requireInRange(element, rule, entry);
}

void CheckedFile::requireDate(const pugi::xml_node &element, const char *attribute)
{
    const QString text = GetAttr(element, attribute, QString());
    if (!text.isEmpty() && !isXmlDate(text))
        add(element, attribute,
            QStringLiteral("%1='%2' is not a date like 2024-03-31T10:00:00-00:00")
                .arg(QLatin1String(attribute), text));
}

void CheckedFile::requireNewId(const pugi::xml_node &element, const char *attribute, Ids &ids)
{
    const QString id = GetAttr(element, attribute, QString());
    if (id.isEmpty())
        add(element, attribute, QStringLiteral("%1 is missing").arg(QLatin1String(attribute)));
    else if (ids.contains(id.toLower()))
        add(element, attribute,
            QStringLiteral("%1 '%2' comes twice").arg(QLatin1String(attribute), id));
    ids.insert(id.toLower());
}

void CheckedFile::requireNewTitle(const pugi::xml_node &element, const char *attribute, Ids &titles)
{
    const QString title = GetAttr(element, attribute, QString());
    const QString key = titleKey(title);
    if (!key.isEmpty() && titles.contains(key))
        add(element, attribute, sameTitleWarning(title));
    titles.insert(key);
}

void CheckedFile::requireKnown(const pugi::xml_node &element, const char *attribute, const Ids &ids,
                               const QString &what)
{
    const QString id = GetAttr(element, attribute, QString());
    if (!ids.contains(id.toLower()))
        add(element, attribute, QStringLiteral("there is no %1 '%2'").arg(what, id));
}

void CheckedFile::requireInRange(const pugi::xml_node &element, const NumberRule &rule,
                                 const QString &text)
{
    bool isNumber = false;
    const int number = text.trimmed().toInt(&isNumber);
    const QLatin1String name(rule.attribute);
    if (!isNumber)
        add(element, rule.attribute,
            QStringLiteral("%1: '%2' is not a valid number").arg(name, text));
    else if (number < rule.min || number > rule.max)
        add(element, rule.attribute,
            rule.max == NumberRule::any
                ? QStringLiteral("%1: %2 is less than %3").arg(name, text).arg(rule.min)
                : QStringLiteral("%1: %2 is not within %3 to %4")
                      .arg(name, text)
                      .arg(rule.min)
                      .arg(rule.max));
}

void checkTemplateText(Findings &findings, const QString &path, const TemplateNames &kind)
{
    SourceText source;
    try {
        source = SourceText::read(path);
    } catch (const Error &error) {
        findings.add(nativePath(path), error.description);
        return;
    }
    if (source.bytes.isEmpty()) {
        findings.add(nativePath(path), QStringLiteral("the template is empty"));
        return;
    }
    static const QRegularExpression placeholder(QStringLiteral("%%([A-Za-z][A-Za-z0-9_.]*)%%"));
    const QString text = QString::fromUtf8(source.bytes);
    for (auto found = placeholder.globalMatch(text); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        if (!kind.knows(match.capturedView(1)))
            findings.add(source, text.left(match.capturedStart()).toUtf8().size(),
                         QStringLiteral("'%1' is not a placeholder of a template for %2")
                             .arg(match.captured(), kind.attribute));
    }
    if (!kind.marker.isEmpty() &&
        !text.contains(QLatin1String("%%") + kind.marker + QLatin1String("%%")))
        findings.add(
            source, 0,
            QStringLiteral("the marker %%%1%% is missing: the list has no place").arg(kind.marker));
}
