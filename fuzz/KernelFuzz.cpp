// Every kernel of every variant against the scalar ones one after the other, on rows that end or begin at a page that
// nobody may touch. The first bytes choose kernel, variant, sizes and settings; the samples follow from the rest.
#include <cstring>
#include <memory>

#include "fuzz/Input.h"
#include "kernels/Kernels.h"
#include "tests/support/GuardPages.h"

using namespace zel::kernels;
using zel::fuzz::Choices;
using zel::test::GuardPages;

namespace {

constexpr unsigned kMostWidth = 700;
constexpr unsigned kMostSamples = 1500;
std::size_t s_RoomsTaken = 0;

// Mostly a few vectors long.
unsigned Width(Choices& in, unsigned most = kMostWidth) { return in.Number(0, in.Number(0, 15) ? most / 8 : most); }

// The same samples twice, for the scalar kernel and for the other one.
template <class T>
struct Rows {
    Rows(Choices& in, std::size_t size, unsigned largest = 0xFFFF) : count(size) {
        static std::vector<GuardPages> s_Rooms;
        const bool ends = !in.Flag();
        for (T*& at : side) {
            while (s_RoomsTaken >= s_Rooms.size()) s_Rooms.emplace_back(kMostSamples * sizeof(std::uint32_t));
            const GuardPages& room = s_Rooms[s_RoomsTaken++];
            at = ends ? room.Last<T>(count) : room.First<T>();
        }
        static const std::vector<T> s_Any = Pool(false), s_Extremes = Pool(true);
        const T* const from = (in.Number(0, 3) ? s_Any : s_Extremes).data() + in.Random() % kMostSamples;
        for (std::size_t i = 0; i < count; ++i) side[0][i] = side[1][i] = static_cast<T>(from[i] & largest);
    }
    std::span<T> operator[](int which) const { return {side[which], count}; }
    void Compare(std::size_t most = SIZE_MAX) const {
        FuzzCheck(std::equal(side[0], side[0] + std::min(most, count), side[1]));
    }
    static std::vector<T> Pool(bool extremes) {
        std::vector<T> samples(2 * kMostSamples);
        Choices in(nullptr, 0);
        for (T& sample : samples) sample = static_cast<T>(extremes ? 0u - (in.Random() >> 30 & 1) : in.Random());
        return samples;
    }
    std::size_t count;
    T* side[2];
};
using Samples = Rows<std::uint16_t>;
using Bytes = Rows<std::uint8_t>;

struct Planes {
    Planes(Choices& in, std::size_t w) : planes{{in, w}, {in, w}, {in, w}} {}
    PlanarRow operator[](int which) const {
        return {{planes[0].side[which], planes[1].side[which], planes[2].side[which]}, planes[0].count};
    }
    void Compare() const {
        std::ranges::for_each(planes, [](const Samples& plane) { plane.Compare(); });
    }
    Samples planes[3];
};

// A table for samples of so many bits, exactly as long as it must be: any entries, or lines with a few steps.
struct Table {
    Table(unsigned bits, bool straight) : mask((1u << bits) - 1), room((mask + 3) * 2) {
        entries = room.Last<std::uint16_t>(mask + 3);
        Choices in(nullptr, 0);
        for (unsigned i = 0; i < mask + 3; ++i) {
            entries[i] =
                static_cast<std::uint16_t>(straight ? std::min(i + i / 700 + i % 2777 / 2700, mask) : in.Random());
        }
        if (straight) lines = MakeLineTable({entries, mask + 1}, bits);
    }
    unsigned mask;
    GuardPages room;
    std::uint16_t* entries;
    LineTable lines;
};
const Table& AnyTable(bool straight, unsigned bits) {
    static std::unique_ptr<Table> s_Tables[2][17];
    std::unique_ptr<Table>& table = s_Tables[straight][bits];
    if (!table) table = std::make_unique<Table>(bits, straight);
    return *table;
}

ChannelMaps AnyMaps(Choices& in) {
    ChannelMaps maps;
    for (SampleMap& map : maps) {
        const unsigned kind = in.Number(0, 3);
        if (kind == 1) map = {nullptr, in.Sample(), in.Sample()};
        if (kind >= 2) map = {AnyTable(kind == 2, 16).entries};
    }
    return maps;
}

ColorTransform AnyTransform(Choices& in) {
    const unsigned bits = in.Number(1, 16);
    ColorTransform transform{{}, static_cast<std::uint16_t>((1u << bits) - 1), nullptr, in.Number(0, 16)};
    const bool wild = in.Number(0, 7) == 0;
    for (float& entry : transform.matrix) {
        const std::uint32_t any = in.Random();
        entry = static_cast<float>(static_cast<int>(any % 6000) - 3000) / 1000;
        if (wild) std::memcpy(&entry, &any, sizeof entry);
    }
    if (in.Flag()) transform.table = AnyTable(in.Flag(), bits).entries;
    return transform;
}

// What comes in one step must be what its steps come to, one after the other.
void TryTaps(Choices& in, const KernelTable& table) {
    const unsigned w = Width(in), kind = in.Number(0, 4);
    const std::size_t count = kind < 3 ? w : std::size_t{w} / 2 * 4;
    const Bytes packed(in, scalar::PackedSize12(count), 0xFF);
    const Samples raw(in, count), top(in, w), bottom(in, w);
    if (kind == 0 || kind == 2 || kind == 4) scalar::Unpack12(packed[0], raw[0]);
    if (kind == 0) table.unpack12(packed[1], raw[1]), raw.Compare();
    if (kind == 1 || kind == 2) scalar::ReorderRowTwoTaps(raw[0], top[0]);
    if (kind == 1) table.reorder_row_two_taps(raw[1], top[1]);
    if (kind == 2) table.unpack_row_two_taps(packed[1], top[1]);
    if (kind == 3 || kind == 4) scalar::ReorderRowPairFourTaps(raw[0], top[0], bottom[0]);
    if (kind == 3) table.reorder_row_pair_four_taps(raw[1], top[1], bottom[1]);
    if (kind == 4) table.unpack_row_pair_four_taps(packed[1], top[1], bottom[1]);
    top.Compare(), bottom.Compare();
}

void TryLookUp(Choices& in, const KernelTable& kernel) {
    const Samples row(in, Width(in));
    const bool straight = in.Flag();
    const Table& table = AnyTable(straight, in.Number(1, 16));
    const auto index = static_cast<std::uint16_t>(table.mask), value = in.Flag() ? in.Sample() : std::uint16_t{0xFFFF};
    scalar::LookUp(row[0], table.entries, index, value);
    if (straight) kernel.look_up_by_lines(row[1], table.entries, table.lines, index, value);
    if (!straight) kernel.look_up(row[1], table.entries, index, value);
    row.Compare();
}

void TrySums(Choices& in, const KernelTable& table) {
    constexpr unsigned kFactors[] = {1, 2, 3, 4, 5, 8, 127, 128};
    const unsigned h = in.Number(1, in.Flag() ? 30 : 2), w = in.Number(1, kMostWidth / h);
    const unsigned bx = kFactors[in.Number(0, 7)], by = kFactors[in.Number(0, 7)];
    const Samples frame(in, std::size_t{w} * h), slot(in, frame.count);
    if (in.Flag()) {
        const unsigned ceiling = (1u << in.Number(8, 16)) - 1;
        scalar::Bin(frame[0], w, h, bx, by, ceiling);
        table.bin(frame[1], w, h, bx, by, ceiling);
        return frame.Compare(std::size_t{w / bx} * (h / by));
    }
    // No more frames in the ring than sums of 32 bits hold; the slot that is replaced is in its sum.
    const std::uint32_t count = in.Number(1, in.Flag() ? 3 : 65537);
    const Rows<std::uint32_t> sums(in, frame.count, 0xFFFFFFFF);
    const bool replace = in.Flag();
    for (std::size_t k = 0; k < frame.count; ++k) {
        const std::uint64_t others = sums.side[0][k] % (std::uint64_t{0xFFFF} * (count - 1) + 1);
        sums.side[0][k] = sums.side[1][k] = static_cast<std::uint32_t>(others + (replace ? slot.side[0][k] : 0));
    }
    scalar::AverageStep(frame[0], slot[0], sums[0], count, replace);
    table.average_step(frame[1], slot[1], sums[1], count, replace);
    frame.Compare(), slot.Compare(), sums.Compare();
}

void TryColor(Choices& in, const KernelTable& table) {
    const std::size_t w = Width(in, kMostWidth / 2) + 1;
    const bool small = in.Flag();
    const unsigned largest = small ? 16383 : 65535, kind = in.Number(0, 6);
    const Samples above(in, w, largest), row(in, w, largest), below(in, w, largest);
    const bool first = in.Number(0, 7) == 0, last = in.Number(0, 7) == 0;
    const int phase = static_cast<int>(in.Number(0, 5));
    const auto mosaic = [&](int i) {
        return MosaicRow{first ? nullptr : above.side[i], row.side[i], last ? nullptr : below.side[i], w, phase, small};
    };
    const Planes planes(in, w);
    const ColorSteps steps{AnyMaps(in), AnyTransform(in), AnyMaps(in), static_cast<ColorFormat>(in.Number(0, 2))};
    const auto map = [&](const ChannelMaps& maps) {
        for (unsigned k = 0; k < 3; ++k) scalar::MapSamples(planes.planes[k][0], maps[k]);
    };
    const Bytes out(in, w * BytesPerPixel(steps.format));
    if (kind == 0) FuzzCheck(table.all_bits(row[1]) == scalar::AllBits(row[0]));
    if (kind == 1 && phase % 5 != 0) scalar::DemosaicColumns(mosaic(0), 0, w, planes[0]);
    if (kind == 6 || (kind == 1 && phase % 5 == 0)) scalar::DemosaicRow(mosaic(0), planes[0]);
    if (kind == 1) table.demosaic_row(mosaic(1), planes[1]), planes.Compare();
    if (kind == 6 || kind == 5) map(steps.input);
    for (unsigned k = 0; k < 3 && kind == 5; ++k) table.map_samples(planes.planes[k][1], steps.input[k]);
    if (kind == 5) planes.Compare();
    if (kind == 6 || kind == 4 || kind == 2) scalar::TransformRow(planes[0], steps.transform);
    if (kind == 2) table.transform_row(planes[1], steps.transform), planes.Compare();
    if (kind == 6) map(steps.output);
    if (kind == 6 || kind == 4 || kind == 3) scalar::PackRow(planes[0], steps.format, out.side[0]);
    if (kind == 3) table.pack_row(planes[1], steps.format, out.side[1]);
    if (kind == 4) table.transform_pack_row(planes[1], steps.transform, steps.format, out.side[1]);
    if (kind == 6) table.color_row(mosaic(1), steps, planes[1], out.side[1]);
    out.Compare();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Choices in(data, size);
    s_RoomsTaken = 0;
    constexpr Variant kVariants[] = {Variant::kAvx2WithoutGathers, Variant::kAvx2, Variant::kAvx512, Variant::kScalar};
    constexpr decltype(&TryTaps) kGroups[] = {TryTaps, TryLookUp, TrySums, TryColor};
    const KernelTable* const table = FindKernels(kVariants[in.Number(0, 3)]);
    const auto group = kGroups[in.Number(0, 3)];
    if (table) group(in, *table);
    return 0;
}
