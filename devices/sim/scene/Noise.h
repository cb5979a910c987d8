// Random numbers of the simulated sensor. They are the same on every machine and in all products.
#ifndef SIM_NOISE_H
#define SIM_NOISE_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace zel::sim {

// A small generator of 64-bit numbers: a counter whose bits are mixed.
class RandomNumbers {
  public:
    explicit RandomNumbers(std::uint64_t seed) : m_State(seed) {}

    std::uint64_t Next() {
        Skip(1);
        std::uint64_t z = m_State;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }

    // As if Next had been called so often.
    void Skip(std::uint64_t count) { m_State += count * 0x9E3779B97F4A7C15u; }

    // 0 <= result < 1
    double NextFraction() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }

    // 0 <= result < limit, for a limit below 2 to the 32
    std::size_t NextBelow(std::uint32_t limit) { return static_cast<std::size_t>(((Next() >> 32) * limit) >> 32); }

  private:
    std::uint64_t m_State;
};

// Normally distributed numbers of mean 0 and variance 1. A stretch that starts at a random place of the table serves as
// fresh noise.
constexpr std::size_t kGaussianTableSize = std::size_t{1} << 18;
constexpr std::size_t kGaussianStretch = 1024;  // samples in a row that one random place serves

const std::array<float, kGaussianTableSize>& GaussianTable();

// The start of a stretch.
const float* GaussianStretch(RandomNumbers& numbers);

}  // namespace zel::sim

#endif
