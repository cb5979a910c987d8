// Frames of a simulated camera on their way into files.
#include "record/camera/CameraRecorder.h"

#include <future>

#include "record/RecordingReader.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"
#include "zel/Sdk.h"

namespace zel::record {

using testing::ElementsAre;
using zelcam::TemporaryFolder;

struct CameraRecorderTest : testing::Test {
    void SetUp() override {
        zelcam::UseFastCameras();
        m_Sdk.emplace();
        m_Camera.emplace(m_Sdk->open("300101"));
        m_Camera->set(zel::settings::buffers, 32u);
        m_Camera->start({.frames = 24});
        m_Options.files.file = m_Folder.Path() / "run.ome.tif";
    }

    void Begin() {
        const auto session = RecordingSession::Begin();
        m_Recorder.emplace(FactsOf(*m_Camera, session, "test"), m_Options, session);
    }
    std::vector<Offered> Offer(int count) {
        std::vector<Offered> answers;
        for (int i = 0; i < count; ++i) {
            auto frame = m_Camera->wait_frame(std::chrono::seconds(60));
            EXPECT_TRUE(frame);
            answers.push_back(m_Recorder->Offer(std::make_shared<const zel::Frame>(frame.take())));
        }
        return answers;
    }
    // The numbers of a file's frames.
    std::vector<unsigned> Numbers(const char* name) {
        const RecordingReader reader(m_Folder.Path() / name);
        std::vector<unsigned> numbers;
        for (std::size_t i = 0; i < reader.Frames(); ++i) numbers.push_back(reader.Frame(i).number);
        return numbers;
    }

    const TemporaryFolder m_Folder;
    RecorderOptions m_Options;
    std::optional<zel::Sdk> m_Sdk;
    std::optional<zel::Camera> m_Camera;
    std::optional<CameraRecorder> m_Recorder;
};

TEST_F(CameraRecorderTest, WhatTheDiskIsTooSlowForIsCountedAtOnce) {
    std::promise<void> disk;
    m_Options.before_writing = [ready = disk.get_future().share()] { ready.wait(); };
    m_Options.most_waiting = 3;
    Begin();
    const auto answers = Offer(8);
    EXPECT_EQ(std::count(answers.begin(), answers.end(), Offered::kTaken), 3);
    EXPECT_EQ(answers.back(), Offered::kLost);
    EXPECT_EQ(std::tuple(m_Recorder->Status().lost_disk, m_Recorder->Status().waiting), std::tuple(5u, 3u));
    disk.set_value();
    const auto files = m_Recorder->Finish("frames");
    ASSERT_EQ(files.size(), 1u);
    const RecordingEnd end = RecordingReader(files[0].path).End().value();
    EXPECT_EQ(std::tuple(end.frames, end.lost_disk, end.lost_buffer), std::tuple(3u, 5u, 0u));
    EXPECT_EQ(m_Recorder->Offer(nullptr), Offered::kEnded);
}

TEST_F(CameraRecorderTest, ARingHasTheLastFramesAndWritesThemWhenItIsAsked) {
    std::ofstream(m_Folder.Path() / "run_0001.ome.tif") << "somebody else's";
    m_Options.ring_seconds = 3600.0;
    m_Options.most_waiting = 4;
    Begin();
    EXPECT_FALSE(m_Recorder->Keep("key"));
    Offer(7);
    EXPECT_TRUE(m_Recorder->Keep("key"));
    while (m_Recorder->Status().waiting > 0) std::this_thread::yield();
    Offer(2);
    EXPECT_TRUE(m_Recorder->Keep("event"));
    const auto files = m_Recorder->Finish("interrupted");
    ASSERT_EQ(files.size(), 2u);
    EXPECT_THAT(Numbers("run_0002.ome.tif"), ElementsAre(3, 4, 5, 6));
    EXPECT_THAT(Numbers("run_0003.ome.tif"), ElementsAre(7, 8));
    EXPECT_EQ(std::tuple(files[0].end.reason, files[1].end.reason), std::tuple("key", "event"));
}

// Several frames are compressed at a time, and yet written in their order.
TEST_F(CameraRecorderTest, EveryThirdFrameInFilesOfFour) {
    m_Options.every = 3;
    m_Options.files.split_frames = 4;
    m_Options.files.compression = Compression::kZstd;
    m_Options.most_waiting = 24;
    Begin();
    Offer(24);
    const auto files = m_Recorder->Finish("frames");
    ASSERT_EQ(files.size(), 2u);
    EXPECT_THAT(Numbers("run_0001.ome.tif"), ElementsAre(0, 3, 6, 9));
    EXPECT_THAT(Numbers("run_0002.ome.tif"), ElementsAre(12, 15, 18, 21));
    EXPECT_EQ(files[0].end.passed_over + files[1].end.passed_over, 16u);
    EXPECT_EQ(files[0].end.reason, "split");
    EXPECT_EQ(m_Recorder->Status().bytes, files[0].bytes + files[1].bytes);
}

TEST_F(CameraRecorderTest, WithoutAFrameThereIsNoFile) {
    Begin();
    EXPECT_TRUE(std::filesystem::exists(m_Options.files.file));
    EXPECT_TRUE(m_Recorder->Finish("interrupted").empty());
    EXPECT_FALSE(std::filesystem::exists(m_Options.files.file));
}

}  // namespace zel::record
