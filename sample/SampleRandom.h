#pragma once

#include <cstdint>

/// Mixes two numbers into one whose bits look independent of them (the splitmix64 finaliser).
constexpr std::uint64_t SampleHash(std::uint64_t a, std::uint64_t b) {
    std::uint64_t z = a + 0x9E3779B97F4A7C15u * (b + 1);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
}

/// A small generator whose numbers are the same on every machine, which those of <random>'s
/// distributions are not. One expression draws one number, since compilers differ in the order in
/// which they evaluate the parts of it.
class SampleRandom {
  public:
    explicit SampleRandom(std::uint64_t seed) : _state(seed) {}

    std::uint64_t next() { return SampleHash(_state, _count++); }
    /// 0 to `bound` - 1; `bound` is at least 1.
    std::uint32_t below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(((next() >> 32) * bound) >> 32);
    }
    /// From 0 up to, not including, 1.
    double unit() { return static_cast<double>(next() >> 11) * 0x1p-53; }
    double range(double low, double high) { return low + (high - low) * unit(); }
    bool chance(double probability) { return unit() < probability; }

  private:
    std::uint64_t _state;
    std::uint64_t _count = 0;
};
