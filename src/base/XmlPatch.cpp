#include "base/XmlPatch.h"

#include "base/Xml.h"

#include <QList>
#include <QStringEncoder>

#include <algorithm>
#include <cctype>

namespace {

bool isBlank(char character)
{
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

/// The end of an element's name that begins at an offset.
qsizetype endOfName(const QByteArray &utf8, qsizetype at)
{
    while (at < utf8.size() && !isBlank(utf8[at]) && utf8[at] != '>' && utf8[at] != '/')
        ++at;
    return at;
}

/// In ASCII, whatever the encoding of the file is.
QByteArray escaped(const QString &value)
{
    QByteArray text;
    const auto characters = value.toUcs4();
    for (const uint character : characters) {
        const bool isPlain = character >= ' ' && character < 127 && character != '&' &&
                             character != '<' && character != '>' && character != '"' &&
                             character != '\'';
        text += isPlain ? QByteArray(1, static_cast<char>(character))
                        : "&#" + QByteArray::number(character) + ';';
    }
    return text;
}

/// The encoding of UTF-16 and UTF-32 text; null for other text.
std::optional<QStringConverter::Encoding> wideEncoding(const QByteArray &bytes)
{
    const auto encoding = QStringConverter::encodingForData(bytes, u'<');
    return encoding == QStringConverter::Utf8 ? std::nullopt : encoding;
}

} // namespace

AttributeOffsets attributeOffsets(const QByteArray &utf8, const pugi::xml_node &element,
                                  const char *attribute)
{
    if (element.offset_debug() < 0)
        return {};
    qsizetype at = endOfName(utf8, static_cast<qsizetype>(element.offset_debug()));
    const auto ends = [&] { return at >= utf8.size() || utf8[at] == '>' || utf8[at] == '/'; };
    while (!ends()) {
        while (!ends() && isBlank(utf8[at]))
            ++at;
        const qsizetype name = at;
        while (!ends() && !isBlank(utf8[at]) && utf8[at] != '=')
            ++at;
        const bool isWanted = QByteArrayView(utf8).sliced(name, at - name) == attribute;
        while (!ends() && utf8[at] != '"' && utf8[at] != '\'')
            ++at;
        if (ends())
            break;
        const qsizetype value = at + 1;
        const qsizetype end = utf8.indexOf(utf8[at], value); // exists, as the text was parsed
        if (isWanted)
            return {name, value, end};
        at = end + 1;
    }
    return {};
}

XmlPatch::XmlPatch(const QByteArray &bytes)
    : m_bytes(bytes)
    , m_utf8(decodeXml(bytes).toUtf8())
{
    parseXml(m_document, QString::fromUtf8(m_utf8));
}

void XmlPatch::set(const pugi::xml_node &element, const char *attribute, const QString &value)
{
    const AttributeOffsets found = attributeOffsets(m_utf8, element, attribute);
    if (found.name >= 0) {
        m_changes.push_back({found.value, found.end - found.value, escaped(value)});
        return;
    }
    const qsizetype at = endOfName(m_utf8, static_cast<qsizetype>(element.offset_debug()));
    m_changes.push_back({at, 0, QByteArray(" ") + attribute + "=\"" + escaped(value) + '"'});
}

QByteArray XmlPatch::bytes() const
{
    std::vector<Change> changes = m_changes;
    std::stable_sort(changes.begin(), changes.end(),
                     [](const Change &a, const Change &b) { return a.at > b.at; });
    QByteArray utf8 = m_utf8;
    for (const Change &change : changes)
        utf8.replace(change.at, change.length, change.text);

    if (const auto wide = wideEncoding(m_bytes)) {
        QStringEncoder encoder(*wide, QStringConverter::Flag::Stateless);
        const QByteArray mark = encoder(QStringView(u"\uFEFF"));
        const QByteArray text = encoder(QString::fromUtf8(utf8));
        return m_bytes.startsWith(mark) ? mark + text : text;
    }
    if (m_bytes.endsWith(m_utf8)) // UTF-8, perhaps after a byte-order mark
        return m_bytes.chopped(m_utf8.size()) + utf8;
    // Windows-1252: a byte for each character.
    QByteArray bytes = m_bytes;
    for (const Change &change : changes) {
        const auto characters = [this](qsizetype at, qsizetype length) {
            return QString::fromUtf8(m_utf8.mid(at, length)).size();
        };
        bytes.replace(characters(0, change.at), characters(change.at, change.length), change.text);
    }
    return bytes;
}
