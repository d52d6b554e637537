#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <optional>
#include <vector>

/// One test of a state item.
struct Test
{
    qint64 second = 0; ///< instant, in whole seconds since 1970-01-01 UTC
    bool succeeded = false;

    bool operator==(const Test &) const = default;
};

/// The second in which an instant in milliseconds lies.
inline qint64 floorSeconds(qint64 instant)
{
    return instant / 1000 - (instant % 1000 < 0 ? 1 : 0);
}

/// The tests of one state item, kept while samples are read: one or two bytes a test where the
/// tests come at a steady rate. Used by one thread at a time.
class TestTrack
{
public:
    /// Adds a test; in any order, but those in order of time take the least memory.
    void add(qint64 second, bool succeeded);

    /// Notes a test before the first that is wanted; the last of them stays.
    void addBefore(qint64 second, bool succeeded);
    const std::optional<Test> &before() const { return m_before; }

    size_t size() const { return m_size; }
    qint64 bytes() const;

    /// All tests in order of time; of the same time, in the order in which they were added.
    std::vector<Test> tests() const;

private:
    // Each test of the stream is the change of the step since the one before, zigzag coded, with
    // the result in the lowest bit, as a little-endian base-128 number.
    QByteArray m_stream;
    std::vector<Test> m_late; ///< those that came after a later one
    qint64 m_last = 0;        ///< second of the stream's last test
    qint64 m_step = 0;        ///< seconds between the stream's last two
    size_t m_size = 0;
    std::optional<Test> m_before;
};
