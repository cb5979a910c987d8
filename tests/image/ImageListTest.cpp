#include "image/ImageList.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

namespace zel {
namespace {

// Records are named by their place in `m_Records`: 'a', 'b', 'c', ...
class ImageListTest : public testing::Test {
  protected:
    static constexpr int kRecords = 4;

    ZelImageInternal* Record(char name) { return &m_Records[name - 'a']; }
    char Name(const ZelImageInternal* image) {
        if (!image) return '-';
        const auto index = image - m_Records;
        return index >= 0 && index < kRecords ? static_cast<char>('a' + index) : '?';
    }
    // Takes every element from the front.
    std::string Drain() {
        std::string names;
        while (ZelImageInternal* image = Dequeue(&m_List)) names += Name(image);
        return names;
    }

    Logger m_Logger{"ImageManager", "ImageListTest"};
    ImageList m_List{"m_ImageListFree", m_Logger};
    ZelImageInternal m_Records[kRecords];
};

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

// An element that is in the list already is appended all the same and counted twice.
TEST_F(ImageListTest, ADuplicateIsLinkedASecondTime) {
    for (const auto& [names, taken] : {std::pair("abca", "a"), {"aa", "aa"}, {"bc", "bc"}}) {
        for (const char* name = names; *name; ++name) EXPECT_TRUE(Enqueue(&m_List, Record(*name)));
        EXPECT_EQ(static_cast<int>(std::strlen(names)), m_List.Count());
        EXPECT_EQ(taken, Drain().substr(0, std::strlen(taken)));
    }
    Enqueue(&m_List, Record('a'));
    Enqueue(&m_List, Record('a'));
    EXPECT_EQ(Record('a'), DequeueTail(&m_List));
    EXPECT_EQ(Record('a'), DequeueTail(&m_List));
    EXPECT_EQ(nullptr, DequeueTail(&m_List));
}

// Duplicates may make the list circular: every operation ends all the same, the sentinel never comes out, and the
// count bounds what comes out.
TEST_F(ImageListTest, RandomOperationsWithDuplicatesEnd) {
    std::mt19937 random(7);
    for (int step = 0; step < 20000; ++step) {
        ZelImageInternal* const image = &m_Records[random() % kRecords];
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
