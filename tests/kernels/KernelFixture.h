// A vector variant of the kernels, and random numbers.
#ifndef TESTS_KERNELS_KERNELFIXTURE_H
#define TESTS_KERNELS_KERNELFIXTURE_H

#include <gmock/gmock.h>

#include <random>
#include <vector>

#include "kernels/Kernels.h"

namespace zel::test {

using kernels::KernelTable;
using kernels::LineTable;
using kernels::Variant;
using Samples = std::vector<std::uint16_t>;
namespace scalar = kernels::scalar;

class KernelTest : public testing::TestWithParam<Variant> {
  protected:
    void SetUp() override {
        m_Table = kernels::FindKernels(GetParam());
        if (!m_Table) GTEST_SKIP() << "this machine does not run the variant";
    }
    unsigned Number(unsigned low, unsigned high) {
        return std::uniform_int_distribution<unsigned>(low, high)(m_Random);
    }
    // Random samples, extreme ones among them.
    Samples Row(std::size_t count, unsigned largest) {
        Samples row(count);
        for (auto& sample : row) sample = static_cast<std::uint16_t>(Number(0, 3) ? Number(0, largest) : largest);
        return row;
    }

    const KernelTable* m_Table = nullptr;
    std::mt19937 m_Random{20261121};
};

}  // namespace zel::test

#endif
