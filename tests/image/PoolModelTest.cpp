// The pool under random operations against a model of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "image/ImageManager.h"

namespace zel {
namespace {

// A pool list in plain words: a sequence and the element that the next one goes behind.
class ModelList {
  public:
    int Count() const { return static_cast<int>(m_Items.size()); }

    // Behind the tail; at the front when there is none. Answers the element.
    ZelImageInternal* Enqueue(ZelImageInternal* image) {
        if (!image) return nullptr;
        m_Items.insert(m_Tail ? std::ranges::find(m_Items, m_Tail) + 1 : m_Items.begin(), image);
        return m_Tail = image;
    }
    ZelImageInternal* Dequeue() { return m_Items.empty() ? nullptr : Remove(m_Items.front()); }

    // The tail, or the last element when there is none; the one before becomes the tail.
    ZelImageInternal* DequeueTail() {
        if (m_Items.empty()) return nullptr;
        const auto at = m_Tail ? std::ranges::find(m_Items, m_Tail) : m_Items.end() - 1;
        ZelImageInternal* const before = at == m_Items.begin() ? nullptr : *(at - 1);
        ZelImageInternal* const image = Remove(*at);
        m_Tail = before;
        return image;
    }
    ZelImageInternal* Remove(ZelImageInternal* image) {
        if (std::erase(m_Items, image) == 0) return nullptr;
        if (m_Tail == image) m_Tail = nullptr;
        return image;
    }

  private:
    std::vector<ZelImageInternal*> m_Items;
    ZelImageInternal* m_Tail = nullptr;
};

struct PoolModelTest : testing::TestWithParam<int> {
    void SetUp() override {
        m_Pool.SetFrameGeometry(16, 16, 12, 2);
        ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(GetParam()));
        while (ZelImageInternal* image = m_Pool.GetFreeImage()) m_All.push_back(m_InUse.Enqueue(image));
        ASSERT_EQ(static_cast<std::size_t>(GetParam()), m_All.size());
        m_All.insert(m_All.end(), {&m_Stranger, nullptr});
    }

    // Operation number `choice` on both. 0 and 1, 2 and 3, 5 and 6 are the same, for they are the commonest.
    void Step(unsigned choice, ZelImageInternal* image) {
        if (choice < 2) {
            ASSERT_EQ(m_InUse.Enqueue(m_Free.Dequeue()), m_Pool.GetFreeImage());
        } else if (choice < 4) {
            ASSERT_EQ(m_Pending.Enqueue(m_InUse.Remove(image)) != nullptr, m_Pool.SetPendingImage(image));
        } else if (choice == 4) {
            ASSERT_EQ(m_InUse.Enqueue(m_Pending.Dequeue()), m_Pool.GetPendingImage());
        } else if (choice < 7) {
            ASSERT_EQ(m_Free.Enqueue(m_InUse.Remove(image)) != nullptr, m_Pool.ReleaseImage(image));
        } else if (choice == 7) {
            ASSERT_EQ(m_InUse.Enqueue(m_Pending.DequeueTail()), m_Pool.GetLastPendingImage());
            FreeAllPending();
        } else if (choice == 8) {
            m_Pool.FreeAllPendingImages();
            FreeAllPending();
        } else {
            m_Pool.FreeAllInUseImages();
            FreeAllPending();
            while (m_Free.Enqueue(m_InUse.Dequeue())) continue;
        }
    }
    // Each is in use on its way.
    void FreeAllPending() {
        while (ZelImageInternal* image = m_InUse.Enqueue(m_Pending.Dequeue())) m_Free.Enqueue(m_InUse.Remove(image));
    }

    ImageManager m_Pool{"PoolModelTest"};
    ModelList m_Free, m_Pending, m_InUse;
    ZelImageInternal m_Stranger;
    std::vector<ZelImageInternal*> m_All;
};

TEST_P(PoolModelTest, RandomOperationsAgreeWithTheModel) {
    std::mt19937 random(static_cast<unsigned>(GetParam()));
    for (int step = 0; step < 20000; ++step) {
        // The two operations that empty whole lists are rare, so that the lists fill up in between.
        const auto choice = static_cast<unsigned>(random() % 50 == 0 ? 8 + random() % 2 : random() % 8);
        ASSERT_NO_FATAL_FAILURE(Step(choice, m_All[random() % m_All.size()])) << "step " << step;
        ASSERT_EQ(m_Free.Count(), m_Pool.FreeCount()) << "step " << step;
        ASSERT_EQ(m_Pending.Count(), m_Pool.PendingCount()) << "step " << step;
        ASSERT_EQ(m_InUse.Count(), m_Pool.InUseCount()) << "step " << step;
    }
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(GetParam()));
    EXPECT_EQ(GetParam(), m_Pool.FreeCount() + m_Pool.PendingCount() + m_Pool.InUseCount());
}

INSTANTIATE_TEST_SUITE_P(Sizes, PoolModelTest, testing::Values(1, 2, 3, 8, 64, 80));

}  // namespace
}  // namespace zel
