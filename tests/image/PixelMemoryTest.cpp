#include "image/PixelMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "tests/support/PageReservations.h"

namespace zel {
namespace {

struct PixelMemoryTest : testing::Test {
    void TearDown() override {
        platform::SetPageReservationLimit(-1);
        EXPECT_EQ(0, Reservations()) << "pages were not given back";
    }
    long long Reservations() const { return platform::LivePageReservations() - m_Before; }

  private:
    const long long m_Before = platform::LivePageReservations();
};

TEST_F(PixelMemoryTest, MemoryIsAlignedZeroedAndUsableToItsLastByte) {
    for (std::size_t alignment : {kPixelAlignment, kRecordAlignment}) {
        for (std::size_t bytes : {std::size_t{0}, std::size_t{1}, std::size_t{4097}, std::size_t{1} << 20}) {
            SCOPED_TRACE(testing::Message() << bytes << " bytes aligned to " << alignment);
            auto* memory = static_cast<unsigned char*>(AllocatePages(bytes, alignment));
            ASSERT_NE(nullptr, memory);
            EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(memory) % alignment);
            EXPECT_EQ(std::count(memory, memory + bytes, 0), static_cast<std::ptrdiff_t>(bytes));
            std::memset(memory, 0xA5, bytes);
            FreePages(memory + 3);  // the two low bits are ignored
            EXPECT_EQ(0, Reservations());
        }
    }
}

TEST_F(PixelMemoryTest, SizesThatCannotBeHadAnswerNull) {
    EXPECT_FALSE(AllocatePixels(SIZE_MAX) || AllocatePixels(SIZE_MAX - kPixelAlignment));
    platform::SetPageReservationLimit(0);
    EXPECT_FALSE(AllocatePixels(1));
    FreePixels(nullptr);
}

TEST_F(PixelMemoryTest, PlanesAreResizedTogetherOrNotAtAll) {
    PlaneSet set{};
    for (const unsigned count : {5000u, 5000u, 10u}) {
        const bool same = set.count == count;
        ASSERT_TRUE(set.Resize(count));
        EXPECT_EQ(count, set.count);
        EXPECT_EQ(3, Reservations());
        for (unsigned short* plane : set.planes) {
            EXPECT_EQ(same ? 0xFFFF : 0, plane[count - 1]) << "kept, or anew";
            std::fill(plane, plane + count, static_cast<unsigned short>(0xFFFF));
        }
    }
    EXPECT_TRUE(set.Resize(0));
    EXPECT_EQ(0u, set.count);
}

}  // namespace
}  // namespace zel
