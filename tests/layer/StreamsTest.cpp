// Frames of running cameras, and the reasons why there are none.
#include <gmock/gmock.h>

#include <ranges>
#include <sstream>

#include "tests/layer/LayerFixture.h"

namespace zel::test {
namespace {

using testing::HasSubstr;

struct LayerStreams : LayerTest {
    // As long as the camera takes for so many frames, whether there is a buffer for them or not.
    void BeBusyFor(unsigned frames) {
        const auto sent = [this] {
            std::string answer, word;
            usb.Try("frames 1", &answer);
            unsigned delivered = 0, lost = 0, no_buffer = 0;
            std::istringstream(answer) >> word >> delivered >> word >> lost >> word >> no_buffer;
            return delivered + no_buffer;
        };
        WaitFor("frames", [&, before = sent()] { return sent() >= before + frames; });
    }
    // The reason why no frame comes, and that the message an Error would carry has these words.
    void ExpectReason(Reason reason, const char* words, std::chrono::milliseconds timeout = kLong) {
        const FrameResult result = camera->wait_frame(timeout);
        ASSERT_FALSE(result) << words;
        EXPECT_EQ(result.reason(), reason) << words << ": " << result.why();
        EXPECT_THAT(result.why(), HasSubstr(words));
        try {
            camera->throw_no_frame(result.no_frame());
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), reason == Reason::link_lost ? ErrorKind::link_lost : ErrorKind::timeout);
            EXPECT_THAT(error.what(), HasSubstr(result.why()));
        }
    }
};

TEST_F(LayerStreams, NewestFramesPassOlderOnesOverAndAnEarlierRunIsOver) {
    Running();
    FrameCounter counter;
    for (Frame& frame : newest_frame(*camera, 10)) {
        BeBusyFor(5);
        counter.frame(frame.number(), frame.info().arrival_ms);
    }
    EXPECT_TRUE(camera->running()) << "it ran before the stream";
    counter.set_skipped(camera->skipped());
    EXPECT_GT(camera->skipped(), 0u);
    EXPECT_LE(camera->skipped(), counter.missing() + 8) << "those behind the last frame may wait";
    // Who was busy finds a new frame, not the last of those that filled the pool of eight first.
    camera->start();
    const unsigned first = camera->wait_newest(kLong)->number();
    BeBusyFor(20);
    const unsigned step = camera->wait_newest(kLong)->number() - first;
    EXPECT_GT(step, 8u);
    BeBusyFor(5);  // for frames that wait
    camera->start();
    unsigned next = 0;
    for (const Frame& frame : every_frame(*camera, 3)) EXPECT_EQ(frame.number(), next++);
    EXPECT_EQ(next, 3u);
    EXPECT_EQ(camera->skipped(), 0u);
}

// Also from a camera that runs for long before it hears how many. And nothing newer follows the last frame, however
// many wait with it.
TEST_F(LayerStreams, ASequenceHasTheFramesThatWereAskedFor) {
    Opened();
    for (const char* fault : {"clear", "delay 20 times=0 entry=CAMERA_STATE"}) {
        usb(std::string("fault 1 ") + fault);
        for (const unsigned frames : {1u, 6u}) {
            camera->start({.frames = static_cast<int>(frames)});
            unsigned number = 0;
            while (FrameResult result = camera->wait_frame(kLong)) EXPECT_EQ(result->number(), number++);
            EXPECT_EQ(number, frames) << fault;
            camera->start({.frames = static_cast<int>(frames)});
            unsigned last = camera->wait_newest(kLong)->number();
            WaitFor("the end", [&] { return camera->number(ZEL_PARAM_CAMSTATE) == 0; });
            while (FrameResult result = camera->wait_newest(kLong)) last = result->number();
            EXPECT_EQ(last, frames - 1) << fault;
        }
    }
    // Numbers need not begin with 0. The camera itself may have heard of the end in time, and counts what the link
    // lost.
    usb("fault 1 lose times=1");
    camera->start({.frames = 6});
    unsigned number = 1;
    while (FrameResult result = camera->wait_frame(kLong)) EXPECT_EQ(result->number(), number++);
    EXPECT_THAT(number, testing::AnyOf(7u, 6u));
}

static_assert(std::ranges::input_range<FrameStream> && std::ranges::viewable_range<FrameStream>);

TEST_F(LayerStreams, ARangeStartsAndStopsAndMayLoseItsFrames) {
    Opened();
    std::vector<Frame> kept;
    for (Frame& frame : every_frame(*camera)) {
        kept.push_back(std::move(frame));
        if (kept.size() == 3) break;
    }
    EXPECT_EQ(kept.size(), 3u);
    EXPECT_FALSE(camera->running());
    EXPECT_EQ(camera->frames_held(), 3);
    EXPECT_EQ(kept[2].number(), 2u);
    EXPECT_TRUE(camera->snap());
}

TEST_F(LayerStreams, EveryReasonHasItsWords) {
    Opened();
    ExpectReason(Reason::not_started, "not started");
    camera->set(settings::buffers, 2u);
    camera->start();
    std::vector<Frame> held;
    while (held.size() < 2) held.push_back(camera->wait_frame(kLong).take());
    ExpectReason(Reason::buffers_held, "all 2 image buffers are held", 50ms);
    camera->set(settings::buffers, 5u);
    EXPECT_THROW(camera->start(), Error) << "the pool would change under frames that are held";
    held.clear();
    camera->start({.trigger = Trigger::hardware});
    ExpectReason(Reason::waits_for_hardware, "trigger at its input", 50ms);
    camera->start({.trigger = Trigger::software});
    ExpectReason(Reason::waits_for_software, "the software trigger", 50ms);
    camera->set(settings::exposure, 10s);
    camera->start();
    ExpectReason(Reason::exposing, "the exposure of 10000 ms is not over", 50ms);
    camera->set(settings::exposure, 1ms);
    usb("fault 1 stall 0");
    camera->start();
    ExpectReason(Reason::silent, "sends nothing", 50ms);
    camera->interrupt();
    ExpectReason(Reason::interrupted, "interrupted");
    usb("fault 1 clear");
    EXPECT_TRUE(camera->wait_frame(std::chrono::milliseconds::max())) << "a wait without an end";
    camera->set(settings::buffers, 1u);
    camera->parameter(ZEL_PARAM_NUM_IMAGE_BUFFERS).set(0);
    EXPECT_THROW(camera->start(), Error);
}

TEST_F(LayerStreams, AnInterruptEndsAStreamThatIsNeverWaiting) {
    Running();
    int frames = 0;
    for ([[maybe_unused]] Frame& frame : every_frame(*camera)) {
        if (++frames == 5) camera->interrupt();
        std::this_thread::sleep_for(5ms);
    }
    EXPECT_EQ(frames, 5);
}

TEST_F(LayerStreams, ALostLinkIsTheReasonUntilTheNextStart) {
    for (const StartOptions& options : {StartOptions{}, StartOptions{.frames = 100000}}) {
        Opened().start(options);
        ASSERT_TRUE(camera->wait_frame(kLong));
        usb("unplug 1");
        while (camera->wait_frame(kLong)) continue;
        ExpectReason(Reason::link_lost, "the link to the camera is lost");
        usb("plug 1");
        EXPECT_FALSE(camera->link_lost());
        ExpectReason(Reason::link_lost, "the link to the camera is lost", 1h);  // at once
        camera->start();
        EXPECT_TRUE(camera->wait_frame(kLong));
    }
}

TEST_F(LayerStreams, HandlersAndWaitsShareARunWithoutLosingCount) {
    Running();
    std::atomic<unsigned> handled = 0;
    camera->on_frame([&](const Frame&) {
        ++handled;
        std::this_thread::sleep_for(3ms);
    });
    while (handled < 10) static_cast<void>(camera->try_frame(1ms));
    camera->on_frame(nullptr);
    unsigned taken = 0;
    std::uint64_t before = camera->skipped();
    while (camera->skipped() < before + 20) {
        taken += camera->wait_newest(kLong) ? 1 : 0;
        std::this_thread::sleep_for(5ms);
    }
    EXPECT_LT(before, 10u) << "what a handler took was not passed over";
    EXPECT_GT(taken, 0u);
    EXPECT_EQ(camera->frames_held(), 0);
}

}  // namespace
}  // namespace zel::test
