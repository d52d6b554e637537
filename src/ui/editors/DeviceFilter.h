#pragma once

#include "database/MonitoredDevices.h"

#include <QString>
#include <QStringList>

#include <vector>

enum class SelectedOnly { No, Yes };

/// Searches devices and data items. The search text is one or several words; an item is found when
/// each word is in its name or description, or in the name, MUID or description of its device,
/// without regard to case and accents.
class DeviceFilter
{
public:
    /// Prepares for these devices. Called again when they change.
    void setDevices(const MonitoredDevices &devices);

    void setSearch(const QString &text, SelectedOnly selectedOnly);
    SelectedOnly selectedOnly() const { return m_selectedOnly; }

    /// The words that are not in a device itself and have to be found in its items, as bits.
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
    std::vector<Words> m_inDevice; ///< by device, the words that are in it
    std::vector<Words> m_inName;   ///< by item name
    std::vector<Words> m_inDescription;
};
