#include "image/ImageManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

#include "tests/support/PageReservations.h"

namespace zel {
namespace {

class ImageManagerTest : public testing::Test {
  protected:
    ImageManagerTest() { m_Pool.SetFrameGeometry(8, 4, 12, 2); }
    void TearDown() override { platform::SetPageReservationLimit(-1); }

    // Free, pending and in-use counts as one number of three digits.
    int Counts() { return m_Pool.FreeCount() * 100 + m_Pool.PendingCount() * 10 + m_Pool.InUseCount(); }
    std::vector<ZelImageInternal*> TakeFree(int count) {
        std::vector<ZelImageInternal*> images;
        for (int i = 0; i < count; ++i) images.push_back(m_Pool.GetFreeImage());
        return images;
    }
    static void ExpectFullFrame(const ZelImageInternal& image) {
        EXPECT_EQ(8u, image.w);
        EXPECT_EQ(4u, image.h);
        EXPECT_EQ(12u, image.bit_depth);
        EXPECT_EQ(2u, image.bytes_per_pixel);
        EXPECT_EQ(32u, image.num_pixels);
        EXPECT_EQ(64u, image.size_in_bytes);
    }
    // A pool whose records all wait, in the order of the result.
    std::vector<ZelImageInternal*> MakePending(int count) {
        EXPECT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(count));
        std::vector<ZelImageInternal*> images = TakeFree(count);
        for (ZelImageInternal* image : images) EXPECT_TRUE(m_Pool.SetPendingImage(image));
        return images;
    }

    const long long m_ReservationsBefore = platform::LivePageReservations();
    ImageManager m_Pool{"ImageManagerTest"};
};

TEST_F(ImageManagerTest, RecordsAreBornZeroedWithTheirGeometryAndBuffer) {
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(3));
    EXPECT_EQ(300, Counts());
    EXPECT_EQ(3, m_Pool.RegisteredCount());
    for (ZelImageInternal* image : TakeFree(3)) {
        ExpectFullFrame(*image);
        EXPECT_EQ(64u, image->buffer_size);
        EXPECT_EQ(0u, image->image_number);
        EXPECT_EQ(nullptr, image->color_pixels);
        EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(image) % kRecordAlignment);
        EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(image->pixels) % kPixelAlignment);
        EXPECT_TRUE(std::all_of(image->pixels, image->pixels + 32, [](unsigned short value) { return value == 0; }));
    }
}

TEST_F(ImageManagerTest, SameCountAndFrameSizeKeepTheRecordsWhereverTheyAre) {
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(3));
    const std::vector<ZelImageInternal*> images = TakeFree(2);
    ASSERT_TRUE(m_Pool.SetPendingImage(images[0]));
    images[0]->pixels[0] = 0x1234;
    m_Pool.SetFrameGeometry(4, 8, 12, 2);  // as many bytes as before
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(3));
    EXPECT_EQ(111, Counts());
    EXPECT_EQ(images[0], m_Pool.GetPendingImage());
    EXPECT_EQ(0x1234, images[0]->pixels[0]);
}

TEST_F(ImageManagerTest, AnotherCountOrFrameSizeBuildsThePoolAnew) {
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(3));
    TakeFree(1)[0]->pixels[0] = 0x1234;
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(2));
    EXPECT_EQ(200, Counts());

    m_Pool.SetFrameGeometry(100, 100, 16, 2);
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(2));
    EXPECT_EQ(200, Counts());
    for (const ZelImageInternal* image : TakeFree(2)) {
        EXPECT_EQ(20000u, image->buffer_size);
        EXPECT_EQ(0, image->pixels[0]);
    }
    // The change is used up: the next call keeps the records, which are in use now.
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(2));
    EXPECT_EQ(2, Counts());
    EXPECT_EQ(kPoolNegativeCount, m_Pool.PixelBufferAllocate(-1));
    EXPECT_EQ(0, Counts());
    EXPECT_EQ(0, m_Pool.RegisteredCount());
}

TEST_F(ImageManagerTest, MoreThanTheAvailableMemoryIsRefused) {
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(3));
    struct {
        unsigned width, height;
        int count;
    } const cases[] = {
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
    m_Pool.SetFrameGeometry(8, 4, 12, 2);
    EXPECT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(3));
}

// Small frames cost far more than their size.
TEST_F(ImageManagerTest, TheMemoryNeedCountsWholePages) {
    EXPECT_GE(RecordSet::MemoryNeed(100000, 512), 100000u * 8192u);
    EXPECT_EQ(RecordSet::MemoryNeed(1000, 4096) % 4096, 0u);
    EXPECT_GT(RecordSet::MemoryNeed(INT32_MAX, 0xFFFFFFFFu), std::uint64_t{INT32_MAX} << 32) << "no wrap";
}

TEST_F(ImageManagerTest, AnAllocationThatFailsHalfwayLeavesAnEmptyPool) {
    constexpr int kReservations = 1 + 3;  // the records; the pixels of each
    for (int limit = 0; limit <= kReservations; ++limit) {
        platform::SetPageReservationLimit(limit);
        const bool enough = limit == kReservations;
        EXPECT_EQ(enough ? kPoolOk : kPoolNotEnoughMemory, m_Pool.PixelBufferAllocate(3)) << limit;
        platform::SetPageReservationLimit(-1);
        EXPECT_EQ(enough ? 300 : 0, Counts());
        EXPECT_EQ(enough ? 3 : 0, m_Pool.RegisteredCount());
        EXPECT_EQ(enough ? kReservations : 0, platform::LivePageReservations() - m_ReservationsBefore);
    }
}

// A lease keeps its record readable; whether it is still the pool's is another question.
TEST_F(ImageManagerTest, LeasesAreForRecordsOfThePoolAndOutliveThem) {
    const std::vector<ZelImageInternal*> images = MakePending(70);
    ZelImageInternal stranger;
    for (ZelImageInternal* other : {&stranger, static_cast<ZelImageInternal*>(nullptr), images[0] + 1}) {
        EXPECT_FALSE(m_Pool.Lease(other));
    }
    FrameLease frame = m_Pool.TakePending();
    EXPECT_EQ(images[0], frame.image);
    EXPECT_EQ(images[69], m_Pool.TakeLastPending().image);
    EXPECT_TRUE(m_Pool.IsCurrent(m_Pool.Lease(images[69])));
    EXPECT_TRUE(m_Pool.IsCurrent(frame));
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(2));
    EXPECT_FALSE(m_Pool.IsCurrent(frame));
    EXPECT_FALSE(m_Pool.Lease(frame.image));
    EXPECT_EQ(0, frame->pixels[31]);
    frame = {};
    m_Pool.FreeImages();
    EXPECT_EQ(m_ReservationsBefore, platform::LivePageReservations());
}

TEST_F(ImageManagerTest, FreeImagesDestroysRecordsInEveryStateWithAllTheyOwn) {
    const std::vector<ZelImageInternal*> images = MakePending(3);
    m_Pool.ReleaseImage(m_Pool.GetPendingImage());
    ZelImageInternal* const held = m_Pool.GetPendingImage();
    held->color_pixels = AllocatePixels(192);
    ASSERT_TRUE(held->color_planes.Resize(32));
    EXPECT_EQ(111, Counts());
    EXPECT_TRUE(m_Pool.FreeImages());
    EXPECT_EQ(0, Counts());
    EXPECT_EQ(m_ReservationsBefore, platform::LivePageReservations());
    EXPECT_TRUE(m_Pool.FreeImages());
}

TEST_F(ImageManagerTest, RecordsInAnotherStateAreRefusedAndStayWhereTheyAre) {
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(3));
    ZelImageInternal* const pending = m_Pool.GetFreeImage();
    ASSERT_TRUE(m_Pool.SetPendingImage(pending));
    ZelImageInternal* const released = m_Pool.GetFreeImage();
    ASSERT_TRUE(m_Pool.ReleaseImage(released));
    ZelImageInternal stranger;
    for (ZelImageInternal* image : {pending, released, &stranger, static_cast<ZelImageInternal*>(nullptr)}) {
        EXPECT_FALSE(m_Pool.ReleaseImage(image));
        EXPECT_FALSE(m_Pool.SetPendingImage(image));
        EXPECT_EQ(210, Counts());
    }
}

}  // namespace
}  // namespace zel
