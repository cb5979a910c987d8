#include "image/ImageManager.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <tuple>
#include <vector>

#include "tests/support/PageReservations.h"

namespace zel {
namespace {

struct ImageManagerTest : testing::Test {
    ImageManagerTest() { m_Pool.SetFrameGeometry(8, 4, 12, 2); }
    void TearDown() override { platform::SetPageReservationLimit(-1); }

    // Free, pending and in-use counts as one number of three digits.
    int Counts() { return m_Pool.FreeCount() * 100 + m_Pool.PendingCount() * 10 + m_Pool.InUseCount(); }
    const long long m_ReservationsBefore = platform::LivePageReservations();
    ImageManager m_Pool{"ImageManagerTest"};
};

TEST_F(ImageManagerTest, AnotherCountOrFrameSizeBuildsThePoolAnewWithZeroedRecords) {
    const struct {
        unsigned width, height;
        int count;
        bool anew;
    } steps[] = {{8, 4, 3, true}, {4, 8, 3, false}, {4, 8, 2, true}, {100, 100, 2, true}, {100, 100, 2, false}};
    for (const auto& [w, h, count, anew] : steps) {
        SCOPED_TRACE(testing::Message() << count << " of " << w << " x " << h);
        m_Pool.SetFrameGeometry(w, h, 12, 2);
        ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(count));
        EXPECT_EQ(anew ? 100 * count : count, Counts()) << "kept wherever they are";
        EXPECT_EQ(count, m_Pool.RegisteredCount());
        m_Pool.FreeAllInUseImages();
        while (ZelImageInternal* image = m_Pool.TakeFree().image) {
            EXPECT_EQ(image->pixels[0], anew ? 0 : 0x1234);
            image->pixels[0] = 0x1234;
            EXPECT_EQ(std::tuple(w, h, 12u, 2u),
                      std::tie(image->w, image->h, image->bit_depth, image->bytes_per_pixel));
            EXPECT_EQ(std::tuple(w * h, 2 * w * h, 2 * w * h),
                      std::tie(image->num_pixels, image->size_in_bytes, image->buffer_size));
            EXPECT_EQ(nullptr, image->color_pixels);
            EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(image) % kRecordAlignment);
        }
    }
    EXPECT_EQ(kPoolNegativeCount, m_Pool.PixelBufferAllocate(-1));
    EXPECT_EQ(0, Counts() + m_Pool.RegisteredCount());
}

TEST_F(ImageManagerTest, MoreThanTheAvailableMemoryIsRefused) {
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(3));
    const std::tuple<unsigned, unsigned, int> cases[] = {
        {65535, 32767, 100000},  // 4 GB each
        {8, 4, INT32_MAX},       // many small ones
        {65536, 32768, 1},       // a frame of 2^32 bytes
        {65536, 65536, 1},       // 2^32 pixels
        {65536, 65537, 1},       // wraps to a small frame
    };
    for (const auto& [width, height, count] : cases) {
        m_Pool.SetFrameGeometry(width, height, 16, 2);
        EXPECT_EQ(kPoolNotEnoughMemory, m_Pool.PixelBufferAllocate(count)) << width << "x" << height << " " << count;
        EXPECT_EQ(0, Counts());
    }
    // Small frames cost far more than their size: whole pages count.
    EXPECT_GE(RecordSet::MemoryNeed(100000, 512), 100000u * 8192u);
    EXPECT_GT(RecordSet::MemoryNeed(INT32_MAX, 0xFFFFFFFFu), std::uint64_t{INT32_MAX} << 32) << "no wrap";
}

// A lease keeps its record readable; whether it is still the pool's is another question.
TEST_F(ImageManagerTest, LeasesAreForRecordsOfThePoolAndOutliveThem) {
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(70));
    std::vector<ZelImageInternal*> images;
    while (ZelImageInternal* image = m_Pool.GetFreeImage()) images.push_back(image);
    for (ZelImageInternal* image : images) EXPECT_TRUE(m_Pool.SetPendingImage(image));
    ZelImageInternal stranger;
    EXPECT_FALSE(m_Pool.Lease(&stranger) || m_Pool.Lease(nullptr) || m_Pool.Lease(images[0] + 1));
    FrameLease frame = m_Pool.TakePending();
    EXPECT_EQ(images[0], frame.image);
    EXPECT_EQ(images[69], m_Pool.TakeLastPending().image);
    EXPECT_TRUE(m_Pool.IsCurrent(m_Pool.Lease(images[69])));
    EXPECT_TRUE(m_Pool.IsCurrent(frame));
    frame->color_pixels = AllocatePixels(192);
    ASSERT_TRUE(frame->color_planes.Resize(32));
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(2));
    EXPECT_FALSE(m_Pool.IsCurrent(frame));
    EXPECT_FALSE(m_Pool.Lease(frame.image));
    EXPECT_EQ(0, frame->pixels[31]);
    frame = {};
    m_Pool.SetPendingImage(m_Pool.GetFreeImage());
    EXPECT_TRUE(m_Pool.FreeImages() && m_Pool.FreeImages());
    EXPECT_EQ(0, Counts());
    EXPECT_EQ(m_ReservationsBefore, platform::LivePageReservations());
}

}  // namespace
}  // namespace zel
