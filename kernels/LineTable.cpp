#include "kernels/LineTable.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <optional>

namespace zel::kernels {

namespace {
constexpr int kOne = 1 << LineTable::kFractionBits;
constexpr int kMiddle = 0x8000;  // of a block, its places scaled to 16 bits
constexpr int kSteepest = 0x7EFF;
constexpr unsigned kMarkedShare = 16;  // one entry in so many may be marked

struct Line {
    int slope;
    int offset;  // in 256ths: whole and fraction
};

int Rise(int slope, int place) { return (slope * (place - kMiddle)) >> 16; }

// The entries of one block, and the lines that tell them.
class Block {
  public:
    Block(std::span<const std::uint16_t> table, std::size_t first, std::size_t size)
        : m_Entries(table.subspan(first, size)),
          m_First(static_cast<int>(first)),
          m_Largest(static_cast<int>(table.size()) - 1),
          m_PlaceStep(0x10000 / static_cast<int>(size)) {}

    // The line that gives all entries from `begin` to `end`, if there is one.
    //
    // A slope asks the offset to be at least what one entry needs and at most what another one allows. Where the first
    // is more, only slopes on one side can do, and so far away at least as the two entries' places tell. That goes on
    // until the offset has room or the slopes are used up.
    std::optional<Line> Fit(std::size_t begin, std::size_t end) const {
        if (begin >= end) return Line{0, 0};
        const double width = std::max<double>(1, static_cast<double>(end - 1 - begin) * m_PlaceStep);
        double slope = (Difference(end - 1) - Difference(begin)) / width * kOne * 0x10000;
        double lowest = -kSteepest, highest = kSteepest;
        for (slope = std::clamp(std::round(slope), lowest, highest); lowest <= highest;) {
            const Room room = RoomOf(static_cast<int>(slope), begin, end);
            if (room.least <= room.most) {
                return Line{static_cast<int>(slope), room.most == INT_MAX ? room.least : Mean(room)};
            }
            const int apart = (room.least_at - room.most_at);
            if (apart == 0) break;
            const double step = std::max(1.0, std::ceil((room.least - room.most) * 65536.0 / std::abs(apart)) - 1);
            (apart > 0 ? lowest : highest) = slope + (apart > 0 ? step : -step);
            slope = apart > 0 ? lowest : highest;
        }
        return std::nullopt;
    }

    // How many entries from the first on one line can give.
    std::size_t LongestFit(std::size_t at_most) const {
        std::size_t fits = 0;
        while (fits < at_most) {
            const std::size_t middle = (fits + at_most + 1) / 2;
            if (Fit(0, middle)) {
                fits = middle;
            } else {
                at_most = middle - 1;
            }
        }
        return fits;
    }

  private:
    struct Room {
        int least = INT_MIN, most = INT_MAX;
        int least_at = 0, most_at = 0;  // the places that ask for them
    };
    static int Mean(const Room& room) { return room.least + (room.most - room.least) / 2; }
    int Difference(std::size_t i) const { return m_Entries[i] - m_First - static_cast<int>(i); }

    // What the offset of a line of this slope must be between.
    Room RoomOf(int slope, std::size_t begin, std::size_t end) const {
        Room room;
        for (std::size_t i = begin; i < end; ++i) {
            const int place = static_cast<int>(i) * m_PlaceStep;
            const int least = Difference(i) * kOne - Rise(slope, place);
            if (least > room.least) room.least = least, room.least_at = place;
            // More than the largest entry is as good.
            const int most = m_Entries[i] == m_Largest ? INT_MAX : least + kOne - 1;
            if (most < room.most) room.most = most, room.most_at = place;
        }
        return room;
    }

    std::span<const std::uint16_t> m_Entries;
    int m_First;
    int m_Largest;
    int m_PlaceStep;
};

void Put(LineTable::Lines& lines, std::size_t block, const std::optional<Line>& line) {
    const auto whole = static_cast<unsigned>(line ? line->offset >> LineTable::kFractionBits : 0);
    const auto slope = static_cast<unsigned>(line ? line->slope : LineTable::kMark << 8);
    lines.whole_low[block] = static_cast<std::uint8_t>(whole);
    lines.whole_high[block] = static_cast<std::uint8_t>(whole >> 8);
    lines.fraction[block] = static_cast<std::uint8_t>(line ? line->offset : 0);
    lines.slope_low[block] = static_cast<std::uint8_t>(slope);
    lines.slope_high[block] = static_cast<std::uint8_t>(slope >> 8);
}
}  // namespace

int LineTable::Entry(unsigned sample) const {
    const std::size_t block = sample >> (bits - kBlockBits);
    const auto place = static_cast<std::uint16_t>(sample << (16 + kBlockBits - bits));
    const Lines& line = lines[place >> 8 > last[block] ? 1 : 0];
    if (line.slope_high[block] == kMark) return -1;
    const auto slope = static_cast<std::int16_t>(line.slope_high[block] << 8 | line.slope_low[block]);
    const int change = (Rise(slope, place) + line.fraction[block]) >> kFractionBits;
    const unsigned whole = line.whole_low[block] + line.whole_high[block] * 256u;
    const auto entry = static_cast<std::uint16_t>(sample + whole + static_cast<unsigned>(change));
    return std::min<int>(entry, (1 << bits) - 1);
}

LineTable MakeLineTable(std::span<const std::uint16_t> table, unsigned bits) {
    LineTable made{};
    if (bits < LineTable::kLeastBits || bits > LineTable::kMostBits) return made;
    made.bits = bits;
    const std::size_t size = table.size() / LineTable::kBlocks;
    std::size_t marked = 0;
    for (std::size_t i = 0; i < LineTable::kBlocks && marked * kMarkedShare <= table.size(); ++i) {
        const Block block(table, i * size, size);
        std::optional<Line> first = block.Fit(0, size);
        const std::size_t split = first ? size : block.LongestFit(size - 1);
        if (!first) first = block.Fit(0, split);
        Put(made.lines[0], i, first);
        Put(made.lines[1], i, block.Fit(split, size));
        made.last[i] = static_cast<std::uint8_t>(split * 256 / size - 1);
        for (std::size_t sample = i * size; sample < (i + 1) * size; ++sample) {
            const int entry = made.Entry(static_cast<unsigned>(sample));
            if (entry >= 0 && entry == table[sample]) continue;
            ++marked;
            // A line that is not marked gives what the table has, or the table is told by none.
            if (entry >= 0) return LineTable{};
        }
    }
    return marked * kMarkedShare <= table.size() ? made : LineTable{};
}

}  // namespace zel::kernels
