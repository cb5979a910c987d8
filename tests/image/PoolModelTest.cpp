// The pool under random operations: against a model on one thread, and for lost or doubly held records on several.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <iterator>
#include <mutex>
#include <random>
#include <set>
#include <thread>
#include <vector>

#include "image/ImageManager.h"
#include "platform/Memory.h"
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
    }

    void Step(unsigned choice, ZelImageInternal* image) {
        switch (choice) {
            case 0:
            case 1:
                ASSERT_EQ(m_Model.Move(m_Model.free.Dequeue(), m_Model.in_use), m_Pool.GetFreeImage());
                break;
            case 2:
            case 3:
                ASSERT_EQ(m_Model.MoveInUse(image, m_Model.pending), m_Pool.SetPendingImage(image));
                break;
            case 4:
                ASSERT_EQ(m_Model.Move(m_Model.pending.Dequeue(), m_Model.in_use), m_Pool.GetPendingImage());
                break;
            case 5:
            case 6:
                ASSERT_EQ(m_Model.MoveInUse(image, m_Model.free), m_Pool.ReleaseImage(image));
                break;
            case 7:
                ASSERT_EQ(m_Model.GetLastPending(), m_Pool.GetLastPendingImage());
                break;
            case 8:
                m_Model.FreeAllPending();
                m_Pool.FreeAllPendingImages();
                break;
            default:
                m_Model.FreeAllInUse();
                m_Pool.FreeAllInUseImages();
        }
    }

    ImageManager m_Pool{"PoolModelTest"};
    ModelPool m_Model;
    std::vector<ZelImageInternal*> m_All;
};

TEST_P(PoolModelTest, RandomOperationsAgreeWithTheModel) {
    ASSERT_EQ(static_cast<std::size_t>(GetParam()), m_All.size());
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

// Transport and application threads at work. Each record that a thread gets is its own until it passes it on: the
// record's first pixels are written and read without further locking.
class PoolThreadsTest : public testing::Test {
  protected:
    static constexpr int kRecords = 8;
    static constexpr int kSteps = 20000;

    void SetUp() override {
        m_Pool.SetFrameGeometry(16, 16, 12, 2);
        ASSERT_EQ(kPoolOk, m_Pool.PixelBufferAllocate(kRecords));
    }

    void Fill(std::mt19937& random) {
        ZelImageInternal* const image = m_Pool.GetFreeImage();
        if (!image) return;
        image->image_number = static_cast<unsigned>(random());
        image->pixels[0] = image->pixels[255] = static_cast<unsigned short>(image->image_number);
        if (random() % 8 == 0) {
            Check(m_Pool.ReleaseImage(image));
        } else {
            Check(m_Pool.SetPendingImage(image));
        }
    }

    void Consume(std::mt19937& random, std::vector<ZelImageInternal*>& held) {
        ZelImageInternal* const image = random() % 4 == 0 ? m_Pool.GetLastPendingImage() : m_Pool.GetPendingImage();
        if (image) {
            Check(image->pixels[0] == static_cast<unsigned short>(image->image_number));
            Check(image->pixels[255] == image->pixels[0]);
            held.push_back(image);
        }
        while (held.size() > random() % 3) {
            const auto at = held.begin() + static_cast<std::ptrdiff_t>(random() % held.size());
            (*at)->image_number = 0;
            (*at)->pixels[0] = (*at)->pixels[255] = 0;
            Check(m_Pool.ReleaseImage(*at));
            held.erase(at);
        }
        if (random() % 64 == 0) m_Pool.FreeAllPendingImages();
    }

    void Work(unsigned seed) {
        std::mt19937 random(seed);
        std::vector<ZelImageInternal*> held;
        for (int step = 0; step < kSteps; ++step) {
            if (seed % 2) {
                Fill(random);
            } else {
                Consume(random, held);
            }
        }
        for (ZelImageInternal* image : held) Check(m_Pool.ReleaseImage(image));
    }

    void Check(bool holds) {
        if (!holds) m_Failures.fetch_add(1);
    }

    ImageManager m_Pool{"PoolThreadsTest"};
    std::atomic<int> m_Failures{0};
};

TEST_F(PoolThreadsTest, NoRecordIsLostOrHeldTwice) {
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 4; ++seed) threads.emplace_back([this, seed] { Work(seed); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, m_Failures.load());
    EXPECT_EQ(0, m_Pool.InUseCount());
    EXPECT_EQ(kRecords, m_Pool.FreeCount() + m_Pool.PendingCount());

    m_Pool.FreeAllInUseImages();
    std::set<ZelImageInternal*> records;
    while (ZelImageInternal* image = m_Pool.GetFreeImage()) records.insert(image);
    EXPECT_EQ(std::size_t{kRecords}, records.size());
}

}  // namespace
}  // namespace zel
