// Back ends that do what they should not, and what the host sees of it.
#include <gtest/gtest.h>

#include <deque>
#include <future>
#include <stdexcept>

#include "devices/kit/Bus.h"
#include "include/ZelParameters.h"
#include "tools/zelcam/check/HostCamera.h"

namespace zel::kit {
namespace {

constexpr SensorSize kSensor{8, 4, 12};
constexpr int kPatience = 10000;  // milliseconds

// Does as the test says.
class Device final : public BackEnd {
  public:
    Description Describe() const override { return {std::string(200, 'n'), "1", "none", {}}; }
    void PowerOn(ParameterTable& table) override {
        MayThrow();
        table.Store(SERIAL_NUMBER, "1");
    }
    std::optional<Attributes> AttributesOf(int index) override {
        if (!IsBasicEntry(index) && index != EXPOSURE_TIME && index != CCM_1_1) return std::nullopt;
        return SensorAttributes(index, kSensor);
    }
    int Read(int index, Value& value) override {
        if (index == CCM_1_1) value = std::string("no number");
        MayThrow();
        return 0;
    }
    int Write(int index, Value& value) override {
        MayThrow();
        if (index == EXPOSURE_TIME) value = std::get<int>(value) / 10 * 10;
        return 0;
    }
    void Start(FrameSink& sink, const Run& run) override {
        m_Triggered = run.triggered;
        m_Start(sink);
    }

    void MayThrow() const {
        if (m_Throw) throw std::runtime_error("the camera is on fire");
    }

    std::function<void(FrameSink&)> m_Start = [](FrameSink&) {};
    std::atomic<bool> m_Throw{false}, m_Triggered{false};
};

bool Black(std::span<std::uint8_t> memory) {
    std::ranges::fill(memory, std::uint8_t{0});
    return true;
}

// One camera on a bus, and a host that has opened it.
struct KitBackEnd : testing::Test {
    KitBackEnd() {
        auto device = std::make_unique<Device>();
        m_Device = device.get();
        m_Bus.Add(std::move(device));
        m_Transport = m_Bus.CreateTransport(0);
        m_Host.emplace(*m_Transport);
        m_Transport->SetCameraCommon(&*m_Host);
        m_Host->RegisterHandlers();
    }
    ~KitBackEnd() override {
        m_Transport->SetCameraCommon(nullptr);
        m_Bus.DestroyTransport(m_Transport);
    }
    // Runs until the back end's Start() has returned by itself.
    void RunOnce() {
        ASSERT_EQ(m_Transport->Connect(), 0);
        ASSERT_EQ(m_Transport->Start(), 0);
        ASSERT_EQ(m_Host->Set(CAMERA_STATE, 2), 0);
        int state = 2;
        while (m_Host->Get(CAMERA_STATE, state) && state == 2) std::this_thread::yield();
        EXPECT_EQ(state, 0) << "a run that its maker ends is a camera that has stopped";
        EXPECT_EQ(m_Transport->Stop(), 0);  // waits for the maker, who may not be back yet
    }

    Bus m_Bus{CAMERA_TYPE_USB};
    Device* m_Device = nullptr;
    ICameraInterface* m_Transport = nullptr;
    std::optional<zelcam::check::HostCamera> m_Host;
};

}  // namespace

TEST_F(KitBackEnd, WhatItThrowsIsARefusalAndTheCameraGoesOn) {
    m_Device->m_Throw = true;
    EXPECT_EQ(m_Transport->Connect(), ZEL_ERROR_CAMERA_COMM_FAILURE);
    m_Device->m_Throw = false;
    ASSERT_EQ(m_Transport->Connect(), 0);
    EXPECT_EQ(m_Host->GetText(SERIAL_NUMBER), "1") << "it is switched on again after it failed";
    int exposure = 0;
    m_Device->m_Throw = true;
    EXPECT_EQ(m_Host->Set(EXPOSURE_TIME, 5000), kExceptionChange);
    EXPECT_FALSE(m_Host->Get(EXPOSURE_TIME, exposure));
    m_Device->m_Throw = false;
    EXPECT_EQ(m_Host->Set(EXPOSURE_TIME, 5007), 0);
    EXPECT_TRUE(m_Host->Get(EXPOSURE_TIME, exposure));
    EXPECT_EQ(exposure, 5000) << "what the camera made of it";
    EXPECT_EQ(m_Host->Set(CAMERA_RESET, 1), 0);
    EXPECT_TRUE(m_Host->Get(EXPOSURE_TIME, exposure));
    EXPECT_NE(exposure, 5000) << "as it was switched on";
    m_Device->m_Start = [](FrameSink&) { throw std::runtime_error("no frames"); };
    RunOnce();
}

TEST_F(KitBackEnd, AValueOfAnotherTypeTravelsAsNothing) {
    ASSERT_EQ(m_Transport->Connect(), 0);
    const auto answer = m_Host->Request(SYNC_TABLE_CMD_GET, CCM_1_1);
    EXPECT_EQ(answer.data, std::vector<std::uint8_t>(8, 0));
    EXPECT_EQ(m_Host->Request(SYNC_TABLE_CMD_GET, SENSOR_TEMP).exception, kExceptionBadIndex);
}

TEST_F(KitBackEnd, DatagramsAreReadWholeHoweverLongTheyAre) {
    ASSERT_EQ(m_Transport->Connect(), 0);
    std::vector<std::uint8_t> data(300);
    data[0] = 0x88;
    data[1] = 0x13;
    EXPECT_EQ(m_Host->Request(SYNC_TABLE_CMD_SET, EXPOSURE_TIME, data).exception, 0);
    int exposure = 0;
    EXPECT_TRUE(m_Host->Get(EXPOSURE_TIME, exposure));
    EXPECT_EQ(exposure, 0x1388);
}

TEST_F(KitBackEnd, LostFramesAreHolesAndNumbersNeverGoBack) {
    m_Device->m_Start = [](FrameSink& sink) {
        sink.Give({}, Black);
        sink.Lose(2);
        sink.Give({}, Black);
        sink.Give({.number = 1}, Black);
        sink.Give({}, [](std::span<std::uint8_t>) { return false; });
        sink.Give({}, [](std::span<std::uint8_t>) -> bool { throw std::runtime_error("no light"); });
        sink.Give({.number = 9}, Black);
    };
    RunOnce();
    ASSERT_TRUE(m_Host->WaitForFrames(4, kPatience));
    EXPECT_EQ(m_Host->Snapshot().image_numbers, (std::vector<unsigned>{0, 3, 4, 9}));
    EXPECT_EQ(m_Transport->GetDroppedFrames(), 2);
    EXPECT_EQ(m_Host->Snapshot().returned, m_Host->Snapshot().taken) << "the record of the frame that failed, too";
}

TEST_F(KitBackEnd, ASequenceEndsWithItsLastFrameWhateverItsMakerDoes) {
    std::atomic<int> given{0};
    m_Device->m_Start = [&](FrameSink& sink) {
        while (sink.Give({}, Black) != HandOver::kEnded) ++given;
    };
    m_Transport->SetFrameCount(3);
    RunOnce();
    EXPECT_EQ(given, 3);
    EXPECT_EQ(m_Host->Snapshot().image_numbers.size(), 3u);
}

// A camera whose host does something at the moment in which a start has begun.
class StartMeeting final : public Camera {
  public:
    using Camera::Camera;
    void Passing(Operation operation) override {
        if (operation == Operation::kStart) m_Meanwhile();
    }
    std::function<void()> m_Meanwhile;
};

TEST_F(KitBackEnd, AStartThatAStopMeetsHasFailed) {
    auto camera = std::make_unique<StartMeeting>(std::make_unique<Device>());
    std::function<void()>& meanwhile = camera->m_Meanwhile;
    ICameraInterface* const transport = m_Bus.CreateTransport(m_Bus.AddCamera(std::move(camera)));
    zelcam::check::HostCamera host(*transport);
    transport->SetCameraCommon(&host);
    ASSERT_EQ(transport->Connect(), 0);
    meanwhile = [&] { EXPECT_EQ(transport->Stop(), 0); };
    EXPECT_EQ(transport->Start(), ZEL_ERROR_CAMERA_COMM_FAILURE);
    meanwhile = [] {};
    EXPECT_EQ(transport->Start(), 0);
    m_Bus.DestroyTransport(transport);
}

// A report that is on its way may be about to use it.
TEST_F(KitBackEnd, DestroyingATransportWaitsForReports) {
    static std::function<void()> s_Reported;
    std::thread destroying;
    std::atomic<bool> destroyed{false};
    s_Reported = [&] {
        destroying = std::thread([&] {
            m_Bus.DestroyTransport(m_Transport);
            destroyed = true;
        });
        const ICameraInterface* next = m_Transport;
        while (next == m_Transport) next = m_Bus.CreateTransport(0);  // the old one has left its place
        std::this_thread::sleep_for(std::chrono::milliseconds(20));   // in which nothing may happen
        EXPECT_FALSE(destroyed);
    };
    const int second = m_Bus.Add(std::make_unique<Device>());
    m_Bus.SetConnectionCallback([](int, int, int) { s_Reported(); }, 0);
    EXPECT_TRUE(m_Bus.ChangePlug(second, false));
    destroying.join();
    m_Bus.SetConnectionCallback(nullptr, 0);
    m_Transport = m_Bus.CreateTransport(0);
}

TEST_F(KitBackEnd, TheHostSaysHowLongARunIsAndWhatStartsItsFrames) {
    m_Device->m_Start = [&](FrameSink& sink) {
        EXPECT_TRUE(m_Transport->SetStatusValue(0)) << "without an end, as before";
        EXPECT_NE(sink.Give({}, Black), HandOver::kEnded);
        EXPECT_TRUE(m_Transport->SetStatusValue(1)) << "the frame that was";
        EXPECT_EQ(sink.Give({}, Black), HandOver::kEnded);
    };
    RunOnce();
    EXPECT_FALSE(m_Device->m_Triggered);
    EXPECT_TRUE(m_Transport->SetStatusValue(7) && !m_Transport->SetStatusValue(-1));
    EXPECT_EQ(m_Transport->GetStatusValue(), 7);
    std::promise<void> begun;
    m_Device->m_Start = [&](FrameSink&) { begun.set_value(); };
    EXPECT_EQ(m_Transport->Start(), 0);
    for (const auto& [command, answer] : {std::pair("cam.arm", "OK"), {"cam.stop", "OK"}, {"cam.run", "ERR"}}) {
        std::string reply;
        EXPECT_TRUE(m_Host->Text(command, reply));
        EXPECT_TRUE(reply.starts_with(answer)) << command << ": " << reply;
        if (command == std::string("cam.arm")) begun.get_future().wait();
    }
    EXPECT_TRUE(m_Device->m_Triggered);
}

TEST_F(KitBackEnd, ARegionEndsAtTheEdgeOfTheSensor) {
    ASSERT_EQ(m_Transport->Connect(), 0);
    for (const auto& [pixels, origin, size] :
         {std::tuple(H_ROI_PIXELS, H_ROI_ORIGIN, kSensor.width), {V_ROI_PIXELS, V_ROI_ORIGIN, kSensor.height}}) {
        for (const auto& [entry, value, exception] : {std::tuple(pixels, 2, 0),
                                                      {pixels, size, 0},
                                                      {origin, 1, 0},
                                                      {pixels, size, kExceptionChange},
                                                      {pixels, size - 1, 0}})
            EXPECT_EQ(m_Host->Set(entry, value), exception) << entry << " " << value;
    }
}

TEST_F(KitBackEnd, ACameraThatVanishesIsReportedOnceAndComesBack) {
    static std::deque<std::pair<int, int>> s_Reports;
    m_Bus.SetConnectionCallback([](int event, int camera, int) { s_Reports.emplace_back(event, camera); }, 0);
    std::promise<void> back, told_again;
    m_Device->m_Start = [&](FrameSink& sink) {
        sink.Vanish();
        back.get_future().wait();
        sink.Vanish();
        told_again.set_value();
    };
    ASSERT_EQ(m_Transport->Connect(), 0);
    ASSERT_EQ(m_Transport->Start(), 0);
    m_Host->Set(CAMERA_STATE, 2);  // the answer may vanish with the camera
    ASSERT_TRUE(m_Host->WaitForEvent(CAMERA_EVENT_DISCONNECT, kPatience));
    EXPECT_TRUE(m_Bus.ChangePlug(0, true));
    EXPECT_TRUE(m_Host->WaitForEvent(CAMERA_EVENT_RECONNECT, kPatience));
    back.set_value();
    told_again.get_future().wait();
    int state = -1;
    EXPECT_TRUE(m_Host->Get(CAMERA_STATE, state));
    EXPECT_EQ(state, 0);
    m_Transport->Disconnect();
    const int second = m_Bus.Add(std::make_unique<Device>());
    EXPECT_TRUE(m_Bus.ChangePlug(second, false)) << "its reports are waited for";
    for (const int camera : {second, 77, -1}) EXPECT_FALSE(m_Bus.CreateTransport(camera)) << camera;
    EXPECT_EQ(s_Reports, (std::deque<std::pair<int, int>>{{ICAMERA_INTERFACE_EVENT_ID_DISCONNECT, 0},
                                                          {ICAMERA_INTERFACE_EVENT_ID_CONNECT, second},
                                                          {ICAMERA_INTERFACE_EVENT_ID_DISCONNECT, second}}));
    EXPECT_EQ(std::string(m_Bus.Text(0, [](const Description& found) { return found.name; })).size(), 63u);
}

}  // namespace zel::kit
