#include "image/ImageList.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace zel {
namespace {

struct ImageListTest : testing::Test {
    Logger m_Logger{"ImageManager", "ImageListTest"};
    ImageList m_List{"m_ImageListFree", m_Logger};
    ZelImageInternal m_Records[4];
};

// An element that is in the list already is appended all the same and counted twice.
TEST_F(ImageListTest, ADuplicateIsLinkedASecondTime) {
    for (ZelImageInternal* (*const take)(ImageList*) : {&Dequeue, &DequeueTail}) {
        EXPECT_TRUE(Enqueue(&m_List, m_Records) && Enqueue(&m_List, m_Records));
        EXPECT_EQ(2, m_List.Count());
        EXPECT_TRUE(take(&m_List) == m_Records && take(&m_List) == m_Records);
        EXPECT_TRUE(!take(&m_List) && !take(nullptr));
    }
    EXPECT_FALSE(Enqueue(nullptr, m_Records) || Remove(nullptr, m_Records));
    EXPECT_FALSE(Enqueue(&m_List, nullptr) || Remove(&m_List, nullptr));
}

// Duplicates may make the list circular: every operation ends all the same, the sentinel never comes out, and the
// count bounds what comes out.
TEST_F(ImageListTest, RandomOperationsWithDuplicatesEnd) {
    std::mt19937 random(7);
    for (int step = 0; step < 20000; ++step) {
        ZelImageInternal* const image = &m_Records[random() % 4];
        const auto choice = random() % 6;
        const int count = m_List.Count();
        if (choice > 2) Enqueue(&m_List, image);
        if (choice == 2) Remove(&m_List, image);
        if (choice < 2) {
            const ZelImageInternal* const taken = choice ? Dequeue(&m_List) : DequeueTail(&m_List);
            const bool is_record = !std::less()(taken, m_Records) && std::less()(taken, std::end(m_Records));
            ASSERT_EQ(taken != nullptr, is_record) << step;
            ASSERT_TRUE(!taken || m_List.Count() < count) << step;
        }
        if (step % 100 != 99) continue;
        int left = m_List.Count();
        while (Dequeue(&m_List)) --left;
        ASSERT_TRUE(left >= 0 && m_List.Count() == 0);
    }
}

}  // namespace
}  // namespace zel
