// Saving beside the thread that takes the frames, with frames that no camera made.

#include <deque>

#include "include/ZelImage.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/frames/SaveQueue.h"

namespace zelcam {

constexpr std::size_t kBuffers = 3;

struct SaveQueueTest : testing::Test, zel::detail::FrameOwner {
    void give_back(ZelColorImage*, bool) noexcept override { --m_OnLoan; }

    // Every third is much larger than the others, so that those behind it are ready before it is.
    zel::Frame Frame(unsigned number) {
        const unsigned short size = number % 3 == 0 ? 512 : 8;
        ZelColorImage& image = m_Images.emplace_back();
        image.w = image.h = size;
        image.bytes_per_pixel = 2;
        image.image_number = number;
        image.pixels = m_Samples.data();
        m_MostOnLoan = std::max(m_MostOnLoan, ++m_OnLoan);
        return {std::shared_ptr<FrameOwner>(this, [](FrameOwner*) {}), &image, std::nullopt, {}};
    }

    std::size_t Files(const std::string& extension) const {
        std::size_t count = 0;
        for (const auto& file : std::filesystem::directory_iterator(m_Folder.Path()))
            count += file.path().extension() == extension;
        return count;
    }

    TemporaryFolder m_Folder;
    std::deque<ZelColorImage> m_Images;
    std::vector<unsigned short> m_Samples = std::vector<unsigned short>(512 * 512, 1234);
    std::atomic<std::size_t> m_OnLoan = 0;
    std::size_t m_MostOnLoan = 0;
    int m_Ends = 0;
    PictureSaver m_Saver{{m_Folder / "", "p", "png"}, 40, {}, {}};
    SaveQueue m_Queue{m_Saver, kBuffers, [this] { ++m_Ends; }};
};

TEST_F(SaveQueueTest, NumbersAndReportsAreInTheOrderOfFrames) {
    std::vector<std::pair<unsigned, std::string>> expected, reported;
    for (unsigned number = 0; number < 40; ++number) {
        expected.emplace_back(number, "p_00" + std::to_string(number + 101).substr(1) + ".png");
        ASSERT_TRUE(m_Queue.WaitForRoom());
        m_Queue.Add(Frame(number), [&](Json json) { reported.emplace_back(json["frame_number"], json["file"]); });
    }
    m_Queue.Finish();
    EXPECT_EQ(reported, expected);
    EXPECT_EQ(m_OnLoan, 0u);
    EXPECT_LE(m_MostOnLoan, kBuffers);
    EXPECT_EQ(Files(".json"), 40u);
}

TEST_F(SaveQueueTest, AFailureEndsTheRunAndLeavesWholePictures) {
    unsigned reported = 0;
    for (unsigned number = 0; m_Queue.WaitForRoom(); ++number) {
        ASSERT_LT(number, 1000u) << "the failure is not noticed";
        zel::Frame frame = Frame(number);
        if (number == 4) frame.native()->buffer_size = 1;
        m_Queue.Add(std::move(frame), [&](Json) { ++reported; });
    }
    ExpectFailure([&] { m_Queue.Finish(); }, kFailed, "frame 4 can't be saved");
    EXPECT_EQ(m_Ends, 1);
    EXPECT_EQ(m_OnLoan, 0u);
    EXPECT_GE(reported, 4u);
    for (const char* extension : {".png", ".json"}) EXPECT_EQ(Files(extension), reported);
}

}  // namespace zelcam
