#pragma once

#include "data/MonitoredDevices.h"

#include <QString>
#include <QStringList>

#include <vector>

enum class SelectedOnly { No, Yes };

/// What a search text finds among devices and data items. A text is one or several words; an item
/// is found when each word stands in its name or description, or in the name, MUID or description
/// of its device; case and accents do not matter.
class DeviceFilter
{
public:
    /// Prepares for these devices. To be called again when they change.
    void setDevices(const MonitoredDevices &devices);

    void setSearch(const QString &text, SelectedOnly selectedOnly);
    SelectedOnly selectedOnly() const { return m_selectedOnly; }
    bool isSearching() const { return !m_words.isEmpty(); }

    /// The words that are left to be found in the items of a device, as bits; 0: the device itself
    /// has them all.
    using Words = quint64;
    Words wordsLeft(int device) const;
    /// An item without a name (-1) has none of the words.
    bool finds(const MonitoredItem &item, Words wordsLeft) const;

private:
    void findWords(const QStringList &texts, std::vector<Words> &found) const;

    QStringList m_deviceTexts; ///< folded
    QStringList m_nameTexts;
    QStringList m_descriptionTexts;
    QStringList m_words;
    SelectedOnly m_selectedOnly = SelectedOnly::No;
    std::vector<Words> m_inDevice; ///< by device, the words that stand in it
    std::vector<Words> m_inName;   ///< by item name
    std::vector<Words> m_inDescription;
};
