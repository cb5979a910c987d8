// A measured number with its spread: one sample for each repetition. Arithmetic goes repetition by repetition, so that
// the ratio of two jobs that took turns has the spread of the ratio and not that of the machine.
#ifndef BENCH_QUANTITY_H
#define BENCH_QUANTITY_H

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace zel::bench {

class Quantity {
  public:
    Quantity(double exact = 0) : m_Samples{exact} {}
    explicit Quantity(std::vector<double> samples) : m_Samples(std::move(samples)) {}

    double Median() const { return Quantile(0.5); }
    // Of the samples in order the one at this share of the way.
    double Quantile(double share) const {
        if (m_Samples.empty()) return 0;
        std::vector<double> sorted = m_Samples;
        const auto at =
            sorted.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(sorted.size() - 1) + 0.5);
        std::nth_element(sorted.begin(), at, sorted.end());
        return *at;
    }
    bool HasSpread() const { return m_Samples.size() > 1; }

    friend Quantity operator/(const Quantity& a, const Quantity& b) {
        return Combine(a, b, [](double x, double y) { return x / y; });
    }
    friend Quantity operator*(const Quantity& a, const Quantity& b) {
        return Combine(a, b, [](double x, double y) { return x * y; });
    }
    friend Quantity operator-(const Quantity& a, const Quantity& b) {
        return Combine(a, b, [](double x, double y) { return x - y; });
    }

  private:
    template <class Operation>
    static Quantity Combine(const Quantity& a, const Quantity& b, Operation operation) {
        const std::size_t count = std::max(a.m_Samples.size(), b.m_Samples.size());
        std::vector<double> samples;
        for (std::size_t i = 0; i < count; ++i) samples.push_back(operation(a.At(i), b.At(i)));
        return Quantity(std::move(samples));
    }
    double At(std::size_t i) const { return m_Samples[m_Samples.size() == 1 ? 0 : i]; }

    std::vector<double> m_Samples;
};

}  // namespace zel::bench

#endif
