#include "image/ImageList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace zel {
namespace {

// Records are named by their place in `m_Records`: 'a', 'b', 'c', ...
class ImageListTest : public testing::Test {
  protected:
    static constexpr int kRecords = 12;

    ZelImageInternal* Record(char name) { return &m_Records[name - 'a']; }
    char Name(const ZelImageInternal* image) {
        if (!image) return '-';
        const auto index = image - m_Records;
        return index >= 0 && index < kRecords ? static_cast<char>('a' + index) : '?';
    }
    void EnqueueAll(const std::string& names) {
        for (char name : names) ASSERT_TRUE(Enqueue(&m_List, Record(name)));
    }
    // Takes every element from the front.
    std::string Drain() {
        std::string names;
        while (ZelImageInternal* image = Dequeue(&m_List)) names += Name(image);
        return names;
    }
    std::string DrainFromTail() {
        std::string names;
        while (ZelImageInternal* image = DequeueTail(&m_List)) names += Name(image);
        return names;
    }

    Logger m_Logger{"ImageManager", "ImageListTest"};
    ImageList m_List{"m_ImageListFree", m_Logger};
    ZelImageInternal m_Records[kRecords];
};

// The list's own lock is all there is here.
TEST_F(ImageListTest, ThreadsOnOneListLoseNothing) {
    for (ZelImageInternal& image : m_Records) Enqueue(&m_List, &image);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this, i] {
            for (int step = 0; step < 20000; ++step) {
                ZelImageInternal* const image = i % 2 ? Dequeue(&m_List) : DequeueTail(&m_List);
                if (!image) continue;
                ++image->image_number;
                Enqueue(&m_List, image);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::string names = Drain();
    std::sort(names.begin(), names.end());
    EXPECT_EQ("abcdefghijkl", names);
    unsigned taken = 0;
    for (const ZelImageInternal& image : m_Records) taken += image.image_number;
    EXPECT_EQ(80000u, taken);
}

TEST_F(ImageListTest, NullAndEmptyAnswerNothing) {
    EXPECT_FALSE(Enqueue(nullptr, Record('a')));
    EXPECT_FALSE(Enqueue(&m_List, nullptr));
    EXPECT_FALSE(Remove(nullptr, Record('a')));
    EXPECT_FALSE(Remove(&m_List, nullptr));
    EXPECT_FALSE(Remove(&m_List, Record('a')));
    EXPECT_EQ(nullptr, Dequeue(nullptr));
    EXPECT_EQ(nullptr, DequeueTail(nullptr));
    EXPECT_EQ(nullptr, Dequeue(&m_List));
    EXPECT_EQ(nullptr, DequeueTail(&m_List));
    EXPECT_EQ(0, m_List.Count());
}

// After Remove took the tail, the next element appended stands before the older ones.
TEST_F(ImageListTest, RemovingTheTailMakesTheNextElementTheFirst) {
    EnqueueAll("abc");
    ASSERT_TRUE(Remove(&m_List, Record('c')));
    EnqueueAll("de");
    EXPECT_EQ("deab", Drain());
}

// An element that is in the list already is appended all the same and counted twice.
TEST_F(ImageListTest, ADuplicateIsLinkedASecondTime) {
    EnqueueAll("abc");
    EXPECT_TRUE(Enqueue(&m_List, Record('a')));
    EXPECT_EQ(4, m_List.Count());
    EXPECT_EQ('a', Name(Dequeue(&m_List)));
}

TEST_F(ImageListTest, TheTailLinkedASecondTimeComesOutTwice) {
    EnqueueAll("aa");
    EXPECT_EQ(2, m_List.Count());
    EXPECT_EQ("aa", Drain());
    EnqueueAll("aa");
    EXPECT_EQ("aa", DrainFromTail());
    EnqueueAll("bc");
    EXPECT_EQ("bc", Drain());
}

// Duplicates may make the list circular: every operation ends all the same, the sentinel never comes out, and the
// count bounds what comes out.
TEST_F(ImageListTest, RandomOperationsWithDuplicatesEnd) {
    std::mt19937 random(7);
    for (int step = 0; step < 20000; ++step) {
        ZelImageInternal* const image = &m_Records[random() % 4];
        const int count = m_List.Count();
        ZelImageInternal* taken = nullptr;
        switch (random() % 6) {
            case 0:
                taken = Dequeue(&m_List);
                break;
            case 1:
                taken = DequeueTail(&m_List);
                break;
            case 2:
                Remove(&m_List, image);
                break;
            default:
                Enqueue(&m_List, image);
        }
        if (taken) {
            ASSERT_NE('?', Name(taken)) << step;
            ASSERT_LT(m_List.Count(), count) << step;
        }
        if (step % 100 == 99) {
            const int left = m_List.Count();
            ASSERT_LE(static_cast<int>(Drain().size()), left);
            ASSERT_EQ(0, m_List.Count());
        }
    }
}

}  // namespace
}  // namespace zel
