#pragma once

#include <cmath>
#include <cstdint>

namespace demo {

/// Random numbers (SplitMix64) that are the same for a seed on every system, which the standard
/// library's distributions do not guarantee.
class Random
{
public:
    explicit Random(std::uint64_t seed)
        : m_state(seed)
    {}

    std::uint64_t next()
    {
        std::uint64_t z = m_state += 0x9E3779B97F4A7C15u;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }
    /// 0 <= value < 1
    double share() { return double(next() >> 11) * 0x1p-53; }
    double between(double low, double high) { return low + (high - low) * share(); }
    bool chance(double probability) { return share() < probability; }
    /// Times between events that happen once in `mean` on average.
    double waiting(double mean) { return -mean * std::log(1.0 - share()); }
    /// Roughly normal, mean 0 and deviation 1, within -3 and 3: the sum of three uniform numbers.
    double normal()
    {
        constexpr std::uint64_t mask = (1u << 21) - 1;
        const std::uint64_t bits = next();
        const auto sum = (bits & mask) + ((bits >> 21) & mask) + (bits >> 42 & mask);
        return (double(sum) / double(mask) - 1.5) * 2.0;
    }

private:
    std::uint64_t m_state;
};

} // namespace demo
