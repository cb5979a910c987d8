// Operations that meet: what ends what, who waits for whom, and what a camera object answers at its end.
#include <atomic>
#include <functional>
#include <thread>

#include "camera/ZelCameraFactory.h"
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

// A hardware-triggered start whose second calculation never ends: it is under way until somebody ends it.
class LifetimeTest : public CameraTest {
  protected:
    LifetimeTest() {
        m_Camera->Open();
        m_Transport.ForgetCalls();
        m_Camera->SetParameterValue(ZEL_PARAM_HW_TRIGGER_ACTIVE, 1);
        m_Transport.SetHandler([this](const Bytes& datagram) {
            Bytes answer = m_Table.Answer(datagram);
            m_Table.m_Values[CALC_STATE] = m_Transport.CountCalls("PrepareAcquisition 8") == 0 ? 2 : 1;
            return answer;
        });
    }
    ~LifetimeTest() override {
        if (m_Starting.joinable()) m_Starting.join();
    }

    void StartForEver() {
        m_Starting = std::thread([this] { m_Started = m_Camera->StartTriggerAcquisition(); });
        while (m_Transport.CountCalls("PrepareAcquisition 8") == 0) std::this_thread::yield();
    }
    void AwaitStart() { m_Starting.join(); }

    // Runs an action inside the camera control callback, on a thread of the transport's.
    void InsideCallback(const std::function<void()>& action) {
        m_Action = action;
        m_Camera->SetCameraControlCallback([](int, void* context) { static_cast<LifetimeTest*>(context)->m_Action(); },
                                           this);
        std::thread([this] { m_Transport.EmitEvent(CAMERA_EVENT_DISCONNECT); }).join();
    }

    std::function<void()> m_Action;
    std::thread m_Starting;
    std::atomic<bool> m_Started{true};
};

using Operation = bool (*)(ZelCamera&);
struct Ending {
    const char* name;
    Operation operation;
    const char* call;  // what the transport is asked for in the end
};
class EndingTest : public LifetimeTest, public testing::WithParamInterface<Ending> {};
INSTANTIATE_TEST_SUITE_P(
    , EndingTest,
    testing::Values(Ending{"Stop", [](ZelCamera& camera) { return camera.Stop(); }, "Stop"},
                    Ending{"StopTrigger", [](ZelCamera& camera) { return camera.StopTriggerAcquisition(0); },
                           "StopTrigger"},
                    Ending{"Close", [](ZelCamera& camera) { return camera.Close(); }, "Disconnect"}),
    [](const auto& ending) { return ending.param.name; });

TEST_P(EndingTest, EndsAStartThatIsUnderWay) {
    StartForEver();
    EXPECT_TRUE(GetParam().operation(*m_Camera));
    EXPECT_EQ(m_Transport.CountCalls(GetParam().call), 1);
    AwaitStart();
    EXPECT_FALSE(m_Started);
}

TEST_P(EndingTest, IsLeftToTheStartWhenCalledInsideACallback) {
    StartForEver();
    InsideCallback([this] {
        EXPECT_TRUE(GetParam().operation(*m_Camera));
        EXPECT_FALSE(m_Camera->Start()) << "somebody else has the turn";
        EXPECT_FALSE(m_Camera->StopTriggerAcquisition(1)) << "arms, which is not left to a start that is to end";
        m_Camera->SetImageNotificationCallback([](int, void*) { ADD_FAILURE() << "the callback is the last one"; },
                                               nullptr);
        m_Transport.EmitEvent(CAMERA_EVENT_IMAGE_READY);
    });
    AwaitStart();
    EXPECT_FALSE(m_Started);
    m_Camera->SetImageNotificationCallback(nullptr, nullptr);
    const bool closed = GetParam().call == std::string("Disconnect");
    EXPECT_EQ(m_Transport.CountCalls(GetParam().call), 1);
    int open = -1;
    m_Camera->IsOpen(&open);
    EXPECT_EQ(open, closed ? 0 : 1);
    EXPECT_TRUE(m_Camera->FreeScratchBuffers()) << "the gate is open again";
}

TEST_F(LifetimeTest, StartsTakeTurns) {
    m_Transport.SetHandler([this](const Bytes& datagram) {
        m_Table.m_Values[CALC_STATE] = 2;
        return m_Table.Answer(datagram);
    });
    std::vector<std::thread> starts;
    for (int buffers : {2, 9, 30}) {
        starts.emplace_back([this, buffers] {
            m_Camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, buffers);
            EXPECT_TRUE(m_Camera->Start());
        });
    }
    for (std::thread& start : starts) start.join();
    const std::vector<std::string> calls = m_Transport.Calls();
    for (std::size_t i = 0; i + 1 < calls.size(); ++i) {
        if (calls[i] != "Start") continue;
        EXPECT_THAT(calls[i + 1], testing::StartsWith("PrepareAcquisition"));
    }
}

// A transport whose link takes its time to come up, and a camera that answers nothing. The close comes either before
// the link is up or while the first reply is waited for.
class SlowLink : public ScriptedTransport {
  public:
    using ScriptedTransport::ScriptedTransport;
    int Connect() override {
        m_Connecting = true;
        while (!m_Up) std::this_thread::yield();
        return ScriptedTransport::Connect();
    }
    std::atomic<bool> m_Connecting{false}, m_Up{false};
};

TEST_F(LifetimeTest, CloseEndsAConnectionToASilentCamera) {
    for (const bool link_is_up : {false, true}) {
        SlowLink transport(&m_Clock);
        std::atomic<bool> closing{false};
        transport.SetHandler([&](const Bytes&) {
            while (!closing) std::this_thread::yield();
            return Bytes{};
        });
        transport.m_Up = link_is_up;
        ZelCameraControl camera(&transport, "");
        transport.SetCameraCommon(&camera);
        bool opened = true;
        std::thread opening([&] { opened = camera.Open(); });
        while (!transport.m_Connecting || (link_is_up && transport.Exchanges() == 0)) std::this_thread::yield();
        std::thread closer([&] { EXPECT_TRUE(camera.Close()); });
        while (camera.FreeScratchBuffers()) std::this_thread::yield();  // refused once the close has begun
        EXPECT_EQ(camera.GetLastError(), ZEL_ERROR_CAMERA_COMM_FAILURE);
        transport.m_Up = closing = true;
        opening.join();
        closer.join();
        EXPECT_FALSE(opened);
        EXPECT_EQ(transport.Exchanges(), link_is_up ? 1 : 0) << "nothing follows what was under way";
    }
}

TEST_F(LifetimeTest, CloseWaitsForOperationsOfOthersButNotFromInside) {
    std::atomic<bool> inside{false}, leave{false}, closed{false};
    m_Camera->SetTextCommandCallback(
        [](const char*, void* context) { (*static_cast<std::function<void()>*>(context))(); }, &m_Action);
    m_Action = [&] {
        inside = true;
        while (!leave) std::this_thread::yield();
        EXPECT_FALSE(closed);
        EXPECT_TRUE(m_Camera->Close());  // a second close, which waits for nobody
    };
    m_Transport.SetHandler([](const Bytes&) { return Bytes{'o', 'k', '\n'}; });
    std::thread other([&] { m_Camera->SetTextCommand("hello"); });
    while (!inside) std::this_thread::yield();
    std::thread closer([&] {
        EXPECT_TRUE(m_Camera->Close());
        closed = true;
    });
    while (m_Camera->FreeScratchBuffers()) std::this_thread::yield();
    leave = true;
    other.join();
    closer.join();
}

TEST_F(LifetimeTest, ARetiredObjectAnswersFalseAndLeavesTheTransportAlone) {
    EXPECT_FALSE(zel_camera_control_retire(m_Camera.get())) << "it is open";
    m_Camera->Close();
    InsideCallback([this] { EXPECT_FALSE(zel_camera_control_retire(m_Camera.get())) << "somebody is inside"; });
    ASSERT_TRUE(zel_camera_control_retire(m_Camera.get()));
    m_Transport.ForgetCalls();
    m_Transport.ForgetSent();
    EXPECT_FALSE(m_Camera->Open());
    EXPECT_FALSE(m_Camera->Start());
    EXPECT_FALSE(m_Camera->SetParameterValue(ZEL_PARAM_GAIN, 1));
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_GAIN), ZEL_PARAM_GAIN);
    EXPECT_EQ(m_Camera->GetCameraName(), nullptr);
    EXPECT_EQ(static_cast<ZelCamera*>(m_Camera.get())->GetPendingImage(), nullptr);
    m_Camera->Close();
    m_Camera.reset();
    EXPECT_THAT(m_Transport.Calls(), testing::IsEmpty());
    EXPECT_EQ(m_Transport.Exchanges(), 0);
}

TEST_F(LifetimeTest, ALibraryThatWasShutDownSuspendsItsCamerasUntilASignOfLife) {
    for (const bool by_transport : {false, true}) {
        m_Transport.ForgetCalls();
        zel_camera_control_suspend(m_Camera.get());
        EXPECT_FALSE(m_Camera->Stop());
        EXPECT_TRUE(m_Camera->Close()) << "without a call of the transport";
        EXPECT_THAT(m_Transport.Calls(), testing::IsEmpty());
        if (by_transport) {
            m_Transport.EmitEvent(CAMERA_EVENT_RECONNECT);
            m_Transport.Common()->GetFreeImage();
        } else {
            zel_camera_control_resume(m_Camera.get());
        }
        EXPECT_TRUE(m_Camera->Open());
    }
}

TEST_F(LifetimeTest, NoCallbackBeginsOnceTheSdkIsBeingClosed) {
    int calls = 0;
    InsideCallback([&] { ++calls; });
    zel_camera_control_begin_end(m_Camera.get());
    m_Transport.EmitEvent(CAMERA_EVENT_DISCONNECT);
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(m_Camera->Start());
    EXPECT_TRUE(m_Camera->Close());
}

}  // namespace
}  // namespace zel::test
