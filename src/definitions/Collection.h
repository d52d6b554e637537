#pragma once

#include "base/Error.h"

#include <QHash>
#include <QString>

#include <algorithm>
#include <memory>
#include <vector>

/// Entries in the order in which they were added, each with a unique key. Keys are compared without
/// regard to case; an entry's key never changes. Look-up takes constant time. Copies of a
/// collection share its entries.
///
///     for (const std::shared_ptr<clsGraphDef> &chart : gChartDefs)
///     if (const std::shared_ptr<clsGraphDef> chart = gChartDefs.find(report.ChartID))
template <typename T>
class Collection
{
public:
    using Pointer = std::shared_ptr<T>;

    qsizetype size() const { return static_cast<qsizetype>(m_entries.size()); }
    bool isEmpty() const { return m_entries.empty(); }
    auto begin() const { return m_entries.begin(); }
    auto end() const { return m_entries.end(); }
    const Pointer &at(qsizetype position) const
    {
        return m_entries.at(static_cast<size_t>(position));
    }

    bool contains(const QString &key) const { return m_positions.contains(key.toLower()); }

    /// Null when there is none.
    Pointer find(const QString &key) const
    {
        const auto found = m_positions.constFind(key.toLower());
        return found == m_positions.cend() ? Pointer() : m_entries[*found];
    }

    /// Appends an entry. Throws Error(DuplicateKey) naming the key.
    void add(const QString &key, Pointer entry)
    {
        if (contains(key))
            throw Error(DuplicateKey, QStringLiteral("The key '%1' is in use already").arg(key));
        m_positions.insert(key.toLower(), m_entries.size());
        m_keys.push_back(key);
        m_entries.push_back(std::move(entry));
    }

    /// Replaces the entry with that key, or appends one.
    void replace(const QString &key, Pointer entry)
    {
        if (const auto found = m_positions.constFind(key.toLower()); found != m_positions.cend())
            m_entries[*found] = std::move(entry);
        else
            add(key, std::move(entry));
    }

    /// False when there is no such entry.
    bool remove(const QString &key)
    {
        const auto found = m_positions.constFind(key.toLower());
        if (found == m_positions.cend())
            return false;
        const auto position = static_cast<std::ptrdiff_t>(*found);
        m_entries.erase(m_entries.begin() + position);
        m_keys.erase(m_keys.begin() + position);
        countAgain();
        return true;
    }

    void clear() { *this = Collection(); }

    /// Sorts the entries by the text that `textOf(entry)` returns, ascending and without regard to
    /// case; equal texts keep their order.
    template <typename TextOf>
    void sortByText(TextOf textOf)
    {
        struct Sorted
        {
            QString text;
            QString key;
            Pointer entry;
        };
        std::vector<Sorted> sorted;
        sorted.reserve(m_entries.size());
        for (size_t i = 0; i < m_entries.size(); ++i)
            sorted.push_back({textOf(*m_entries[i]), m_keys[i], m_entries[i]});
        std::stable_sort(sorted.begin(), sorted.end(), [](const Sorted &a, const Sorted &b) {
            return a.text.compare(b.text, Qt::CaseInsensitive) < 0;
        });
        for (size_t i = 0; i < sorted.size(); ++i) {
            m_keys[i] = std::move(sorted[i].key);
            m_entries[i] = std::move(sorted[i].entry);
        }
        countAgain();
    }

private:
    void countAgain()
    {
        m_positions.clear();
        for (size_t i = 0; i < m_keys.size(); ++i)
            m_positions.insert(m_keys[i].toLower(), i);
    }

    std::vector<Pointer> m_entries;
    std::vector<QString> m_keys;        ///< as added, one for each entry
    QHash<QString, size_t> m_positions; ///< in m_entries, by lower-case key
};
