#include "ui/editors/DeviceFilter.h"

#include "base/NaturalOrder.h"

#include <QStringMatcher>

namespace {

constexpr qsizetype maxWords = 64; ///< bits in DeviceFilter::Words

QStringList foldedTexts(const QStringList &texts)
{
    QStringList folded;
    folded.reserve(texts.size());
    for (const QString &text : texts)
        folded.append(foldedText(text));
    return folded;
}

} // namespace

void DeviceFilter::setDevices(const MonitoredDevices &devices)
{
    m_deviceTexts.clear();
    m_deviceTexts.reserve(static_cast<qsizetype>(devices.devices.size()));
    // A line break, which is never part of a word, prevents matches across two columns.
    for (const MonitoredDevice &device : devices.devices)
        m_deviceTexts.append(
            foldedText(device.name + u'\n' + device.muid + u'\n' + device.description));
    m_nameTexts = foldedTexts(devices.itemNames);
    m_descriptionTexts = foldedTexts(devices.itemDescriptions);
    setSearch(m_words.join(u' '), m_selectedOnly);
}

void DeviceFilter::setSearch(const QString &text, SelectedOnly selectedOnly)
{
    m_selectedOnly = selectedOnly;
    m_words = foldedText(text).simplified().split(u' ', Qt::SkipEmptyParts).mid(0, maxWords);
    findWords(m_deviceTexts, m_inDevice);
    findWords(m_nameTexts, m_inName);
    findWords(m_descriptionTexts, m_inDescription);
}

void DeviceFilter::findWords(const QStringList &texts, std::vector<Words> &found) const
{
    found.assign(static_cast<size_t>(texts.size()), 0);
    for (qsizetype word = 0; word < m_words.size(); ++word) {
        const QStringMatcher matcher(m_words[word]);
        for (qsizetype i = 0; i < texts.size(); ++i) {
            if (matcher.indexIn(texts[i]) >= 0)
                found[static_cast<size_t>(i)] |= Words(1) << word;
        }
    }
}

DeviceFilter::Words DeviceFilter::wordsLeft(int device) const
{
    const Words all = m_words.size() == maxWords ? ~Words(0) : (Words(1) << m_words.size()) - 1;
    return all & ~m_inDevice[static_cast<size_t>(device)];
}

bool DeviceFilter::finds(const MonitoredItem &item, Words wordsLeft) const
{
    if (item.name < 0 || wordsLeft == 0)
        return wordsLeft == 0;
    const Words found = m_inName[static_cast<size_t>(item.name)] |
                        m_inDescription[static_cast<size_t>(item.description)];
    return (wordsLeft & ~found) == 0;
}
