#include "image/PixelMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "image/ZelImageInternal.h"
#include "tests/support/PageReservations.h"

namespace zel {
namespace {

class PixelMemoryTest : public testing::Test {
  protected:
    PixelMemoryTest() : m_Before(platform::LivePageReservations()) {}
    void TearDown() override {
        platform::SetPageReservationLimit(-1);
        EXPECT_EQ(m_Before, platform::LivePageReservations()) << "pages were not given back";
    }
    long long Reservations() const { return platform::LivePageReservations() - m_Before; }

  private:
    const long long m_Before;
};

TEST_F(PixelMemoryTest, MemoryIsAlignedZeroedAndUsableToItsLastByte) {
    for (std::size_t alignment : {kPixelAlignment, kRecordAlignment}) {
        for (std::size_t bytes : {std::size_t{0}, std::size_t{1}, sizeof(ZelImageInternal), std::size_t{4096},
                                  std::size_t{4097}, std::size_t{1} << 20}) {
            SCOPED_TRACE(testing::Message() << bytes << " bytes aligned to " << alignment);
            auto* memory = static_cast<unsigned char*>(AllocatePages(bytes, alignment));
            ASSERT_NE(nullptr, memory);
            EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(memory) % alignment);
            EXPECT_TRUE(std::all_of(memory, memory + bytes, [](unsigned char byte) { return byte == 0; }));
            std::memset(memory, 0xA5, bytes);
            EXPECT_EQ(1, Reservations());
            FreePages(memory);
            EXPECT_EQ(0, Reservations());
        }
    }
}

TEST_F(PixelMemoryTest, TheWordBelowLeadsToAReservationAtLeastOneWordLower) {
    void* const memory = AllocatePixels(100);
    ASSERT_NE(nullptr, memory);
    char* raw;
    std::memcpy(&raw, static_cast<char*>(memory) - sizeof raw, sizeof raw);
    const auto distance = static_cast<char*>(memory) - raw;
    EXPECT_GE(distance, static_cast<std::ptrdiff_t>(sizeof raw));
    EXPECT_LE(distance, static_cast<std::ptrdiff_t>(kPixelAlignment + sizeof raw));
    FreePixels(memory);
}

TEST_F(PixelMemoryTest, TheTwoLowBitsOfAPointerAreIgnoredWhenItIsFreed) {
    char* const memory = static_cast<char*>(AllocatePixels(100));
    ASSERT_NE(nullptr, memory);
    FreePixels(memory + 3);
    EXPECT_EQ(0, Reservations());
}

TEST_F(PixelMemoryTest, SizesThatCannotBeHadAnswerNull) {
    EXPECT_EQ(nullptr, AllocatePixels(SIZE_MAX));
    EXPECT_EQ(nullptr, AllocatePixels(SIZE_MAX - kPixelAlignment));
    platform::SetPageReservationLimit(0);
    EXPECT_EQ(nullptr, AllocatePixels(1));
    FreePixels(nullptr);
}

class PlaneSetTest : public PixelMemoryTest {
  protected:
    void ExpectEmpty() {
        EXPECT_EQ(0u, m_Set.count);
        for (const unsigned short* plane : m_Set.planes) EXPECT_EQ(nullptr, plane);
        EXPECT_EQ(0, Reservations());
    }
    PlaneSet m_Set{};
};

TEST_F(PlaneSetTest, ResizingToTheCurrentCountKeepsTheSamePlanes) {
    ASSERT_TRUE(m_Set.Resize(0));
    ExpectEmpty();
    ASSERT_TRUE(m_Set.Resize(1000));
    const PlaneSet before = m_Set;
    before.planes[2][999] = 0x1234;
    ASSERT_TRUE(m_Set.Resize(1000));
    EXPECT_TRUE(std::equal(before.planes, before.planes + 3, m_Set.planes));
    EXPECT_EQ(0x1234, m_Set.planes[2][999]);
    EXPECT_EQ(3, Reservations());

    ASSERT_TRUE(m_Set.Resize(0));
    ExpectEmpty();
}

TEST_F(PlaneSetTest, ResizingToAnotherCountGivesThreeFreshPlanes) {
    for (unsigned count : {5000u, 10u, 100000u}) {
        ASSERT_TRUE(m_Set.Resize(count));
        EXPECT_EQ(count, m_Set.count);
        EXPECT_EQ(3, Reservations());
        for (unsigned short* plane : m_Set.planes) {
            EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(plane) % kPixelAlignment);
            EXPECT_EQ(0, plane[count - 1]);
            std::fill(plane, plane + count, static_cast<unsigned short>(0xFFFF));
        }
    }
    m_Set.Resize(0);
}

TEST_F(PlaneSetTest, AFailedResizeLeavesAnEmptySet) {
    for (int planes_to_be_had : {0, 1, 2}) {
        ASSERT_TRUE(m_Set.Resize(100));
        platform::SetPageReservationLimit(planes_to_be_had);
        EXPECT_FALSE(m_Set.Resize(200)) << planes_to_be_had;
        platform::SetPageReservationLimit(-1);
        ExpectEmpty();
    }
}

TEST_F(PixelMemoryTest, ConstructionClearsEveryFieldOfARecordAndDestructionFreesTheBuffers) {
    alignas(ZelImageInternal) static unsigned char memory[sizeof(ZelImageInternal)];
    std::memset(memory, 0xEE, sizeof memory);
    auto* image = new (memory) ZelImageInternal;
    EXPECT_EQ(0u, image->w | image->h | image->bit_depth | image->bytes_per_pixel | image->num_pixels |
                      image->size_in_bytes | image->x_origin | image->y_origin | image->x_pixels | image->y_pixels |
                      image->x_bin | image->y_bin | image->exposure_time_us | image->image_number |
                      image->reserved_image[0] | image->reserved_image[1] | image->color_size_in_bytes |
                      image->reserved_color[0] | image->reserved_color[3] | image->buffer_size |
                      image->hand_over_delta_ms | image->hand_over_time_ms | image->arrival_time_ms |
                      image->queue_delay_ms | image->post_processed | image->color_planes.count);
    EXPECT_EQ(nullptr, image->pixels);
    EXPECT_EQ(nullptr, image->color_pixels);
    EXPECT_EQ(nullptr, image->color_planes.planes[0]);
    EXPECT_EQ(nullptr, image->next);

    image->pixels = static_cast<unsigned short*>(AllocatePixels(10));
    image->color_pixels = AllocatePixels(30);
    ASSERT_TRUE(image->color_planes.Resize(5));
    EXPECT_EQ(5, Reservations());
    image->~ZelImageInternal();
}

}  // namespace
}  // namespace zel
