// Who lives how long, and what threads may do at once. Whatever is wrong here shows as a hang or to a sanitizer.
#include "tests/layer/LayerFixture.h"

namespace zel::test {
namespace {

class LayerLifetimes : public LayerTest {};

TEST_F(LayerLifetimes, AFrameOutlivesItsCameraAndTheSdkAndClosesBoth) {
    Frame frame = Running().snap();
    const auto before = frame.copy();
    camera.reset();
    EXPECT_THROW(sdk->open(kMono), Error) << "its frame keeps it open";
    sdk.reset();
    EXPECT_EQ(frame.copy().pixels, before.pixels);
    save(frame, "layer_frame.tif");
    EXPECT_EQ(std::remove("layer_frame.tif"), 0);
    frame.reset();
    sdk.emplace();
    EXPECT_TRUE(Running().snap());
}

// A camera that is silent would cost two time-outs.
TEST_F(LayerLifetimes, ACameraThatDoesNotRunIsClosedWithoutBeingAskedAndATriggeredOneIsStopped) {
    const auto log_of_end = [&] {
        std::string log;
        usb("clear-log 1");
        camera.reset();
        EXPECT_TRUE(usb.Try("log 1", &log));
        return log;
    };
    Opened();
    EXPECT_EQ(log_of_end(), "");
    Opened().start({.trigger = Trigger::software});
    EXPECT_NE(log_of_end().find("text cam.stop"), std::string::npos);
}

TEST_F(LayerLifetimes, AnythingMayEndInsideAnyHandler) {
    for (const bool sdk_too : {false, true}) {
        for (const char* place : {"frame", "camera event", "hot-plug"}) {
            std::promise<void> done;
            const auto end = [&](const char* here) {
                if (here != std::string_view(place) || !camera) return;
                camera.reset();
                if (sdk_too) sdk.reset();
                done.set_value();
            };
            if (!sdk) sdk.emplace();
            Opened();
            camera->on_frame([&](const Frame& frame) { frame ? end("frame") : void(); });
            camera->on_event([&](const CameraEvent&) { end("camera event"); });
            sdk->on_hot_plug([&](const HotPlugEvent&) { end("hot-plug"); });
            camera->start();
            if (place == std::string_view("camera event")) usb("event 1 3");
            if (place == std::string_view("hot-plug")) usb("unplug 1");
            ASSERT_EQ(done.get_future().wait_for(kLong), std::future_status::ready) << place;
            if (sdk) sdk->on_hot_plug(nullptr);
            usb.Mend(1);
        }
    }
}

TEST_F(LayerLifetimes, WhatAHandlerHoldsGoesWithoutAHang) {
    Running();
    const auto frame = [&] { return std::make_shared<Frame>(camera->snap()); };
    camera->on_event([held = frame()](const CameraEvent&) {});
    sdk->on_hot_plug([held = frame()](const HotPlugEvent&) {});
    camera->on_frame([held = frame()](const Frame&) {});
    camera->on_frame(nullptr);
    EXPECT_EQ(camera->frames_held(), 2);
    camera->on_event([](const CameraEvent&) {});
    EXPECT_EQ(camera->frames_held(), 1);
    sdk->on_hot_plug(nullptr);
    EXPECT_EQ(camera->frames_held(), 0);
}

TEST_F(LayerLifetimes, WhatHandlersThrowIsDroppedAndTheFramesGoOn) {
    std::atomic<int> frames = 0, events = 0;
    Opened().on_frame([&](Frame) { throw ++frames; });
    camera->on_event([&](const CameraEvent&) { throw ++events; });
    camera->start();
    usb("event 1 2");
    WaitFor("frames and event", [&] { return frames > 20 && events > 0; });
    camera->on_frame([&](const Frame&) { --events; });
    WaitFor("the other handler", [&] { return events < -20; });
    camera->stop();
    camera->on_frame(nullptr);
    camera->start();
    EXPECT_TRUE(camera->wait_frame(kLong));
    EXPECT_EQ(camera->frames_held(), 0);
}

// The transport waits for the handler, and the handler for nobody.
TEST_F(LayerLifetimes, AHandlerStopsTheCameraWhileAnotherThreadDoes) {
    Opened();
    for (const bool handler_first : {false, true, false, true}) {
        std::promise<void> inside, go;
        std::shared_future<void> gone = go.get_future().share();
        std::atomic<int> calls = 0;
        std::atomic<bool> over = false;
        camera->on_frame([&, gone](const Frame&) {
            if (++calls > 1) return;
            if (handler_first) camera->stop();
            inside.set_value();
            gone.wait();
            camera->stop();
            EXPECT_THROW(camera->start(), Error);
            over = true;
        });
        camera->start();
        inside.get_future().wait();
        auto stopped = std::async(std::launch::async, [&] { return camera->stop() && over; });
        WaitFor("the stop", [&] { return !camera->running(); });
        std::this_thread::sleep_for(20ms);  // for a stop that would not wait
        go.set_value();
        ASSERT_EQ(stopped.wait_for(kLong), std::future_status::ready);
        EXPECT_TRUE(stopped.get()) << "the handler ran on after the stop";
    }
}

TEST_F(LayerLifetimes, AStopEndsAStartThatIsUnderWay) {
    Opened();
    usb("fault 1 calc-never");
    auto start = std::async(std::launch::async, [&] { camera->start(); });
    WaitFor("the start", [&] { return camera->running(); });
    EXPECT_TRUE(camera->stop());
    EXPECT_THROW(start.get(), Error);
    EXPECT_FALSE(camera->running());
    usb.Mend(1);
    camera->start();
    EXPECT_TRUE(camera->wait_frame(kLong));
}

TEST_F(LayerLifetimes, TheLastSdkEndsWhileAnotherIsMade) {
    sdk.reset();
    const auto loop = [] {
        for (int i = 0; i < 60; ++i) {
            const Sdk own;
            EXPECT_EQ(own.cameras().size(), 4u);
        }
    };
    auto other = std::async(std::launch::async, loop);
    loop();
    other.get();
    sdk.emplace();
}

TEST_F(LayerLifetimes, ACameraThatIsSilentKeepsNoOtherFromBeingOpened) {
    usb("fault 1 no-reply times=0");
    auto silent = std::async(std::launch::async, [&] { return sdk->open_found(kMono).info().number; });
    std::string exchanges;
    WaitFor("its first exchange", [&] { return usb.Try("exchanges 1", &exchanges) && exchanges != "0"; });
    EXPECT_EQ(sdk->open_found(kColor).info().number, +kColor);
    EXPECT_EQ(silent.wait_for(0s), std::future_status::timeout);
    EXPECT_THROW(sdk->open_found(kMono), Error) << "it is being opened";
    usb.Mend(1);
    EXPECT_EQ(silent.get(), +kMono);
}

TEST_F(LayerLifetimes, NoHandlerRunsOnAfterItsObject) {
    Frame held = Running().snap();
    for (const char* place : {"camera event", "hot-plug"}) {
        std::promise<void> inside, go;
        std::shared_future<void> gone = go.get_future().share();
        std::atomic<bool> over = false;
        const auto linger = [&, gone] {
            inside.set_value();
            gone.wait();
            over = true;
        };
        std::thread cause;
        if (place == std::string_view("hot-plug")) {
            sdk->on_hot_plug([&](const HotPlugEvent&) { linger(); });
            cause = std::thread([&] { usb("unplug 1"); });
        } else {
            camera->on_event([&](const CameraEvent&) { linger(); });
            cause = std::thread([&] { usb("event 1 3"); });
        }
        inside.get_future().wait();
        std::thread release([&] {
            std::this_thread::sleep_for(20ms);
            go.set_value();
        });
        place == std::string_view("hot-plug") ? sdk.reset() : camera.reset();
        EXPECT_TRUE(over) << place;
        cause.join();
        release.join();
    }
}

}  // namespace
}  // namespace zel::test
