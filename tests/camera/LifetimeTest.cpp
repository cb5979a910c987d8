// Operations that meet: what ends what, who waits for whom, and what a camera object answers at its end.
#include <atomic>
#include <functional>
#include <thread>

#include "camera/ZelCameraFactory.h"
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

// A place where a thread stays, once it has come there, until it may go on.
class Halt {
  public:
    void Stay() {
        m_Reached = true;
        while (!m_GoOn) std::this_thread::yield();
    }
    void Await() const {
        while (!m_Reached) std::this_thread::yield();
    }
    void GoOn() { m_GoOn = true; }

  private:
    std::atomic<bool> m_Reached{false}, m_GoOn{false};
};

struct LifetimeTest : CameraTest {
    LifetimeTest() {
        m_Camera->Open();
        m_Camera->SetImageNotificationCallback([](int, void* count) { ++*static_cast<int*>(count); }, &m_Notified);
        m_Camera->SetCameraControlCallback([](int, void* action) { (*static_cast<Action*>(action))(); }, &m_Action);
        m_Transport.ForgetCalls();
    }
    // Runs an action inside the camera control callback, on a thread of the transport's.
    void InsideCallback(const std::function<void()>& action) {
        m_Action = action;
        std::thread([this] { m_Transport.EmitEvent(CAMERA_EVENT_DISCONNECT); }).join();
    }

    using Action = std::function<void()>;
    Action m_Action = [] {};
    int m_Notified = 0;
};

using Operation = bool (*)(ZelCamera&);
struct Ending {
    const char* name;
    Operation operation;
    const char* call;  // what the transport is asked for in the end
};

// A hardware-triggered start whose second calculation never ends: it is under way until somebody ends it.
struct EndingTest : LifetimeTest, testing::WithParamInterface<Ending> {
    EndingTest() {
        Write(ZEL_PARAM_HW_TRIGGER_ACTIVE, 1);
        m_Transport.SetHandler([this](const Bytes& datagram) {
            if (m_Halts) m_Halt.Stay();
            Bytes answer = m_Table.Answer(datagram);
            m_Table.m_Values[CALC_STATE] = m_Transport.CountCalls("PrepareAcquisition 8") == 0 ? 2 : 1;
            return answer;
        });
        m_Starting = std::thread([this] { EXPECT_FALSE(m_Camera->StartTriggerAcquisition()); });
        while (m_Transport.CountCalls("PrepareAcquisition 8") == 0) std::this_thread::yield();
    }

    std::atomic<bool> m_Halts{false};
    Halt m_Halt;
    std::thread m_Starting;
};
INSTANTIATE_TEST_SUITE_P(
    , EndingTest,
    testing::Values(Ending{"Stop", [](ZelCamera& camera) { return camera.Stop(); }, "Stop"},
                    Ending{"StopTrigger", [](ZelCamera& camera) { return camera.StopTriggerAcquisition(0); },
                           "StopTrigger"},
                    Ending{"Close", [](ZelCamera& camera) { return camera.Close(); }, "Disconnect"}),
    [](const auto& ending) { return ending.param.name; });

TEST_P(EndingTest, EndsAStartThatIsUnderWay) {
    EXPECT_TRUE(GetParam().operation(*m_Camera));
    EXPECT_EQ(m_Transport.CountCalls(GetParam().call), 1);
    m_Starting.join();
}

TEST_P(EndingTest, IsLeftToTheStartWhenCalledInsideACallback) {
    m_Halts = true;
    m_Halt.Await();
    InsideCallback([this] {
        EXPECT_TRUE(GetParam().operation(*m_Camera));
        EXPECT_FALSE(m_Camera->Start()) << "somebody else has the turn";
        EXPECT_FALSE(m_Camera->StopTriggerAcquisition(1)) << "arms, which is not left to a start that is to end";
        m_Transport.EmitEvent(CAMERA_EVENT_IMAGE_READY);
        EXPECT_EQ(m_Notified, 0) << "the callback is the last one";
    });
    m_Halt.GoOn();
    m_Starting.join();
    EXPECT_EQ(m_Transport.CountCalls(GetParam().call), 1);
    int open = -1;
    m_Camera->IsOpen(&open);
    EXPECT_EQ(open, GetParam().name == std::string("Close") ? 0 : 1);
    EXPECT_TRUE(m_Camera->FreeScratchBuffers()) << "the gate is open again";
}

// A close tells whoever is inside to end before it queues for its turn; here a start meets it in between. A refused
// trigger state counts as success, one that was not sent any more does not.
TEST_F(LifetimeTest, AStartThatWasToldToEndAnswersFalse) {
    const struct {
        Operation start;
        Bytes last;  // what the start sends at its end
    } rows[] = {{[](ZelCamera& camera) { return camera.Start(); }, SetRequest(CAMERA_STATE, 2)},
                {[](ZelCamera& camera) { return camera.StartTriggerAcquisition(); }, SetRequest(TRIGGER_STATE, 1)}};
    m_Transport.m_Answers.call_common = false;
    for (const auto& row : rows) {
        m_Camera = std::make_unique<ZelCameraControl>(&m_Transport, "test");
        m_Transport.SetCameraCommon(m_Camera.get());
        m_Transport.SetHandler([&](const Bytes& datagram) {
            if (datagram == row.last) zel_camera_control_begin_end(m_Camera.get());
            return datagram == row.last ? Bytes{} : m_Table.Answer(datagram);
        });
        ASSERT_TRUE(m_Camera->Open());
        EXPECT_FALSE(row.start(*m_Camera));
        EXPECT_EQ(m_Camera->GetLastError(), ZEL_ERROR_UNSUPPORTED);
        EXPECT_EQ(m_Transport.CountSent(row.last), 1);
    }
}

// A transport whose link may take its time to come up, and a camera that answers nothing.
class SlowLink : public ScriptedTransport {
  public:
    explicit SlowLink(bool up) : m_Up(up) {
        SetHandler([this](const Bytes&) { return m_Halt.Stay(), Bytes{}; });
    }
    int Connect() override {
        if (!m_Up) m_Halt.Stay();
        return ScriptedTransport::Connect();
    }
    const bool m_Up;
    Halt m_Halt;
};

// The close comes either before the link is up or while the first reply is waited for.
TEST_F(LifetimeTest, CloseEndsAConnectionToASilentCamera) {
    for (const bool link_is_up : {false, true}) {
        SlowLink transport(link_is_up);
        ZelCameraControl camera(&transport, "");
        transport.SetCameraCommon(&camera);
        std::thread opening([&] { EXPECT_FALSE(camera.Open()); });
        transport.m_Halt.Await();
        std::thread closing([&] { EXPECT_TRUE(camera.Close()); });
        while (camera.FreeScratchBuffers()) std::this_thread::yield();  // refused once the close has begun
        EXPECT_EQ(camera.GetLastError(), ZEL_ERROR_CAMERA_COMM_FAILURE);
        EXPECT_FALSE(camera.TapBalanceGetTableConfig(nullptr, nullptr));
        transport.m_Halt.GoOn();
        opening.join();
        closing.join();
        EXPECT_EQ(transport.Exchanges(), link_is_up ? 1 : 0) << "nothing follows what was under way";
    }
}

TEST_F(LifetimeTest, ALibraryThatWasShutDownSuspendsItsCamerasUntilASignOfLife) {
    for (const bool by_transport : {false, true}) {
        ASSERT_TRUE(m_Camera->Open() && m_Camera->StartCommon() == 0);
        m_Transport.ForgetCalls();
        zel_camera_control_suspend(m_Camera.get());
        EXPECT_FALSE(m_Camera->Stop());
        m_Transport.EmitEvent(CAMERA_EVENT_IMAGE_READY);  // a sign of life
        EXPECT_EQ(m_Notified, 0) << "the transport could not be told to stop";
        zel_camera_control_suspend(m_Camera.get());
        EXPECT_TRUE(m_Camera->Close()) << "without a call of the transport";
        EXPECT_THAT(m_Transport.Calls(), testing::IsEmpty());
        if (!by_transport) zel_camera_control_resume(m_Camera.get());
        if (by_transport) m_Transport.Common()->GetFreeImage();
    }
    EXPECT_TRUE(m_Camera->Open());
}

}  // namespace
}  // namespace zel::test
