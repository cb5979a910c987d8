#include "util/HuffmanLengths.h"

#include <algorithm>

namespace zel {

namespace {

// A tree in one array: the leaves by rising count, behind them the inner nodes in the order they are made, which is by
// rising count too. The two lightest nodes without a parent therefore stand at the front of one half or the other.
class Tree {
  public:
    explicit Tree(const LiteralCounts& counts) {
        for (std::size_t i = 0; i < kLiteralSymbols; ++i) {
            if (counts[i]) m_Nodes[m_Leaves++] = {counts[i], static_cast<std::uint16_t>(i), 0};
        }
        std::sort(m_Nodes.begin(), m_Nodes.begin() + static_cast<std::ptrdiff_t>(m_Leaves),
                  [](const Node& left, const Node& right) { return left.weight < right.weight; });
        std::size_t leaf = 0, inner = m_Leaves;
        for (m_End = m_Leaves; m_End < 2 * m_Leaves - 1; ++m_End) {
            std::uint64_t weight = 0;
            for (int child = 0; child < 2; ++child) {
                const bool take_leaf =
                    leaf < m_Leaves && (inner == m_End || m_Nodes[leaf].weight <= m_Nodes[inner].weight);
                Node& node = m_Nodes[take_leaf ? leaf++ : inner++];
                node.parent = static_cast<std::uint16_t>(m_End);
                weight += node.weight;
            }
            m_Nodes[m_End] = {weight, 0, 0};
        }
    }

    // Answers the longest length.
    unsigned Lengths(LiteralLengths& lengths) const {
        std::array<std::uint8_t, 2 * kLiteralSymbols> depths{};
        unsigned longest = 0;
        for (std::size_t i = m_End - 1; i-- > 0;) {
            depths[i] = static_cast<std::uint8_t>(depths[m_Nodes[i].parent] + 1);
            if (i >= m_Leaves) continue;
            lengths[m_Nodes[i].symbol] = depths[i];
            longest = std::max<unsigned>(longest, depths[i]);
        }
        return longest;
    }

  private:
    struct Node {
        std::uint64_t weight;
        std::uint16_t symbol;
        std::uint16_t parent;
    };
    std::array<Node, 2 * kLiteralSymbols> m_Nodes;
    std::size_t m_Leaves = 0;
    std::size_t m_End = 0;
};

}  // namespace

LiteralLengths MakeLiteralLengths(const LiteralCounts& counts) {
    LiteralCounts flatter = counts;
    LiteralLengths lengths{};
    // Halving the counts brings rare symbols up; equal counts would give lengths of 8 and 9.
    while (Tree(flatter).Lengths(lengths) > kMaxLiteralLength) {
        for (std::uint32_t& count : flatter) count = (count + 1) / 2;
    }
    return lengths;
}

}  // namespace zel
