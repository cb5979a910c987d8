// The pool under random operations against a model of it.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "image/ImageManager.h"
#include "tests/image/ModelList.h"

namespace zel {
namespace {

// What the pool promises, on top of the model of its lists.
struct ModelPool {
    test::ModelList free, pending, in_use;

    ZelImageInternal* Move(ZelImageInternal* image, test::ModelList& to) {
        if (image) to.Enqueue(image);
        return image;
    }
    bool MoveInUse(ZelImageInternal* image, test::ModelList& to) {
        if (!in_use.Remove(image)) return false;
        to.Enqueue(image);
        return true;
    }
    void FreeAllPending() {
        while (ZelImageInternal* image = Move(pending.Dequeue(), in_use)) MoveInUse(image, free);
    }
    ZelImageInternal* GetLastPending() {
        ZelImageInternal* const image = Move(pending.DequeueTail(), in_use);
        FreeAllPending();
        return image;
    }
    void FreeAllInUse() {
        FreeAllPending();
        while (Move(in_use.Dequeue(), free)) {
        }
    }
};

class PoolModelTest : public testing::TestWithParam<int> {
  protected:
    void SetUp() override {
        m_Pool.SetFrameGeometry(16, 16, 12, 2);
        ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(GetParam()));
        while (ZelImageInternal* image = m_Pool.GetFreeImage()) m_All.push_back(image);
        for (ZelImageInternal* image : m_All) {
            ASSERT_TRUE(m_Pool.ReleaseImage(image));
            m_Model.free.Enqueue(image);
        }
        m_All.insert(m_All.end(), {&m_Stranger, nullptr});
    }

    // Operation number `choice` on both. 0 and 1, 2 and 3, 5 and 6 are the same, for they are the commonest.
    void Step(unsigned choice, ZelImageInternal* image) {
        if (choice < 2) {
            ASSERT_EQ(m_Model.Move(m_Model.free.Dequeue(), m_Model.in_use), m_Pool.GetFreeImage());
        } else if (choice < 4) {
            ASSERT_EQ(m_Model.MoveInUse(image, m_Model.pending), m_Pool.SetPendingImage(image));
        } else if (choice == 4) {
            ASSERT_EQ(m_Model.Move(m_Model.pending.Dequeue(), m_Model.in_use), m_Pool.GetPendingImage());
        } else if (choice < 7) {
            ASSERT_EQ(m_Model.MoveInUse(image, m_Model.free), m_Pool.ReleaseImage(image));
        } else if (choice == 7) {
            ASSERT_EQ(m_Model.GetLastPending(), m_Pool.GetLastPendingImage());
        } else if (choice == 8) {
            m_Model.FreeAllPending();
            m_Pool.FreeAllPendingImages();
        } else {
            m_Model.FreeAllInUse();
            m_Pool.FreeAllInUseImages();
        }
    }

    ImageManager m_Pool{"PoolModelTest"};
    ModelPool m_Model;
    ZelImageInternal m_Stranger;
    std::vector<ZelImageInternal*> m_All;
};

TEST_P(PoolModelTest, RandomOperationsAgreeWithTheModel) {
    ASSERT_EQ(static_cast<std::size_t>(GetParam() + 2), m_All.size());
    std::mt19937 random(static_cast<unsigned>(GetParam()));
    for (int step = 0; step < 20000; ++step) {
        // The two operations that empty whole lists are rare, so that the lists fill up in between.
        const auto choice = static_cast<unsigned>(random() % 50 == 0 ? 8 + random() % 2 : random() % 8);
        ASSERT_NO_FATAL_FAILURE(Step(choice, m_All[random() % m_All.size()])) << "step " << step;
        ASSERT_EQ(m_Model.free.Count(), m_Pool.FreeCount()) << "step " << step;
        ASSERT_EQ(m_Model.pending.Count(), m_Pool.PendingCount()) << "step " << step;
        ASSERT_EQ(m_Model.in_use.Count(), m_Pool.InUseCount()) << "step " << step;
    }
    ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(GetParam()));
    EXPECT_EQ(GetParam(), m_Pool.FreeCount() + m_Pool.PendingCount() + m_Pool.InUseCount());
}

INSTANTIATE_TEST_SUITE_P(Sizes, PoolModelTest, testing::Values(1, 2, 3, 8, 64, 80));

}  // namespace
}  // namespace zel
