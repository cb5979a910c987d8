// The log lines of the pool, to the letter.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <string>
#include <vector>

#include "image/ImageList.h"
#include "image/ImageManager.h"
#include "tests/support/RecordedLog.h"

namespace zel {
namespace {

using testing::ElementsAre;

std::string Line(const char* format, const void* image, const char* list, int num = 0) {
    char text[200];
    std::snprintf(text, sizeof text, format, static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(image)),
                  list, num);
    return text;
}
std::string Changed(const char* list, const void* image, int num) {
    char text[200];
    std::snprintf(text, sizeof text, "list:%s image: 0x%0" PRIxPTR " list->num:%d", list,
                  reinterpret_cast<std::uintptr_t>(image), num);
    return text;
}
std::string Removed(const void* image, const char* list) {
    return Line("successfully removed image:0x%08llx from %s list", image, list);
}
std::string NotRemoved(const void* image, const char* list) {
    return Line("***FAILED*** to removed image:0x%08llx from %s list", image, list);
}

class PoolLogTest : public testing::Test {
  protected:
    PoolLogTest() {
        m_Pool.SetFrameGeometry(8, 4, 12, 2);
        EXPECT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(2));
        m_Image = m_Pool.GetFreeImage();
        m_Image->image_number = 7;
        m_Log.Clear();
    }
    // The lines since the last call.
    std::vector<std::string> Messages() {
        std::vector<std::string> messages = m_Log.Messages("ImageManager");
        m_Log.Clear();
        return messages;
    }

    test::RecordedLog m_Log;
    ImageManager m_Pool{"PoolLogTest"};
    ZelImageInternal* m_Image;
};

TEST_F(PoolLogTest, ARecordsWayRound) {
    const char* const free = "m_ImageListFree";
    const char* const pending = "m_ImageListPending";
    const char* const in_use = "m_ImageListInUse";
    m_Pool.SetPendingImage(m_Image);
    EXPECT_THAT(Messages(),
                ElementsAre(Changed(in_use, m_Image, 0), Removed(m_Image, in_use),
                            "image    7 --> pendng  free:   1  pending:   0  in_use:   0", Changed(pending, m_Image, 1),
                            "image    7 --> pendng  free:   1  pending:   1  in_use:   0"));
    m_Pool.GetPendingImage();
    EXPECT_THAT(Messages(), ElementsAre(Changed(pending, m_Image, 0), Changed(in_use, m_Image, 1),
                                        "image    7 --> in_use  free:   1  pending:   0  in_use:   1"));
    m_Pool.ReleaseImage(m_Image);
    EXPECT_THAT(Messages(),
                ElementsAre(Changed(in_use, m_Image, 0), Removed(m_Image, in_use), Changed(free, m_Image, 2),
                            "image 7 enqueued to m_ImageListFree", "image    7 --> free         size:2"));
    ZelImageInternal* const other = m_Pool.GetFreeImage();
    EXPECT_THAT(Messages(), ElementsAre(Changed(free, other, 1), Changed(in_use, other, 1),
                                        "image ???? --> in_use  free:   1  pending:   0  in_use:   1"));
}

TEST_F(PoolLogTest, Failures) {
    m_Pool.GetFreeImage();
    m_Log.Clear();
    EXPECT_EQ(nullptr, m_Pool.GetFreeImage());
    EXPECT_EQ(1,
              m_Log.Count("No free images available! image ???? --> in_use  free:   0  pending:   0  in_use:   2", 0));
    EXPECT_EQ(1, m_Log.Count("list:m_ImageListFree  list->head->next == list->head, returning 0", 2));

    ZelImageInternal stranger;
    EXPECT_FALSE(m_Pool.SetPendingImage(&stranger));
    EXPECT_FALSE(m_Pool.ReleaseImage(&stranger));
    EXPECT_EQ(2, m_Log.Count(NotRemoved(&stranger, "m_ImageListInUse"), 0));
    EXPECT_EQ(1, m_Log.Count("***ERROR***:ImageManager::SetPendingImage() - Remove() failed\n", 0));
    EXPECT_EQ(1, m_Log.Count("ImageManager::ReleaseImage() - Remove() failed\n", 0));
    EXPECT_EQ(nullptr, Dequeue(nullptr));
    EXPECT_EQ(1, m_Log.Count("list == 0, returning 0", 2));
}

TEST_F(PoolLogTest, NewestPendingAndFreeingAll) {
    m_Pool.SetPendingImage(m_Image);
    m_Log.Clear();
    EXPECT_EQ(m_Image, m_Pool.GetLastPendingImage());
    EXPECT_EQ(1, m_Log.Count("image    7 --> in_use  free:   1  pending:   0  in_use:   1", 2));
    EXPECT_EQ(1, m_Log.Count("called FreeAllPendingImages", 2));
    m_Pool.FreeAllInUseImages();
    EXPECT_EQ(2, m_Log.Count("called FreeAllPendingImages", 2));
    EXPECT_EQ(1, m_Log.Count("called FreeAllInUseImages", 2));
}

TEST_F(PoolLogTest, DestroyingEveryRecord) {
    ZelImageInternal* const free = m_Pool.GetFreeImage();
    m_Pool.ReleaseImage(free);
    m_Log.Clear();
    m_Pool.FreeImages();
    EXPECT_THAT(Messages(),
                ElementsAre("flags: 0x00000007 ", ">>>> FREE_IMAGES <<<<", "Dequeueing m_ImageListFree",
                            Changed("m_ImageListFree", free, 0),
                            "list:m_ImageListFree  list->head->next == list->head, returning 0",
                            "Dequeueing m_ImageListPending",
                            "list:m_ImageListPending  list->head->next == list->head, returning 0",
                            "Dequeueing m_ImageListInUse", Changed("m_ImageListInUse", m_Image, 0),
                            "list:m_ImageListInUse  list->head->next == list->head, returning 0", " FINISHED \n"));
}

// A list of its own, for what no operation of the pool does.
TEST_F(PoolLogTest, DuplicatesAreLoggedUnlessTheyAreTheLastElement) {
    Logger logger("ImageManager");
    ImageList list("m_ImageListFree", logger);
    ZelImageInternal images[2];
    Enqueue(&list, &images[0]);
    Enqueue(&list, &images[1]);
    const char* const duplicate = "***********************DUPLICATE IMAGE IN m_ImageListFree";
    Enqueue(&list, &images[1]);
    EXPECT_EQ(0, m_Log.Count(duplicate));
    while (Dequeue(&list)) {
    }
    Enqueue(&list, &images[0]);
    Enqueue(&list, &images[1]);
    Enqueue(&list, &images[0]);
    EXPECT_EQ(1, m_Log.Count(duplicate, 2));
    EXPECT_EQ(1, m_Log.Count(Changed("m_ImageListFree", &images[0], 3), 2));
}

}  // namespace
}  // namespace zel
