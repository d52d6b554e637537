#include "series/TestTrack.h"

#include <algorithm>

namespace {

constexpr quint64 payload = 0x7f; ///< bits of a byte that hold digits
constexpr quint64 more = 0x80;    ///< another byte follows

void append(QByteArray &stream, quint64 number)
{
    while (number > payload) {
        stream.append(static_cast<char>((number & payload) | more));
        number >>= 7;
    }
    stream.append(static_cast<char>(number));
}

quint64 next(const char *&position)
{
    quint64 number = 0;
    for (int shift = 0;; shift += 7) {
        const auto byte = static_cast<quint8>(*position++);
        number |= (byte & payload) << shift;
        if (byte < more)
            return number;
    }
}

// Small numbers of either sign become small numbers without one.
quint64 zigzag(qint64 number)
{
    return (static_cast<quint64>(number) << 1) ^ static_cast<quint64>(number >> 63);
}

qint64 unzigzag(quint64 number)
{
    return static_cast<qint64>(number >> 1) ^ -static_cast<qint64>(number & 1);
}

} // namespace

void TestTrack::add(qint64 second, bool succeeded)
{
    ++m_size;
    if (!m_stream.isEmpty() && second < m_last) {
        m_late.push_back({second, succeeded});
        return;
    }
    const qint64 step = second - m_last;
    append(m_stream, zigzag(step - m_step) << 1 | (succeeded ? 1 : 0));
    m_last = second;
    m_step = step;
}

void TestTrack::addBefore(qint64 second, bool succeeded)
{
    if (!m_before || second >= m_before->second)
        m_before = {second, succeeded};
}

qint64 TestTrack::bytes() const
{
    return m_stream.capacity() + static_cast<qint64>(m_late.capacity() * sizeof(Test));
}

std::vector<Test> TestTrack::tests() const
{
    std::vector<Test> tests;
    tests.reserve(m_size);
    qint64 second = 0;
    qint64 step = 0;
    const char *position = m_stream.constData();
    for (const char *const end = position + m_stream.size(); position < end;) {
        const quint64 coded = next(position);
        step += unzigzag(coded >> 1);
        second += step;
        tests.push_back({second, (coded & 1) != 0});
    }
    if (m_late.empty())
        return tests;
    tests.insert(tests.end(), m_late.begin(), m_late.end());
    std::stable_sort(tests.begin(), tests.end(),
                     [](const Test &a, const Test &b) { return a.second < b.second; });
    return tests;
}
