// A transport in memory. A test scripts what the camera answers and sees every byte the host sent and every operation
// it called.
//
//     ScriptedTransport camera;
//     camera.QueueReply(ValueReply(40));                        // answers the next datagram
//     camera.SetHandler([](const Bytes& datagram) { ... });     // answers whenever the queue is empty
//     camera.SetDelivery(ScriptedTransport::Delivery::kOneByte);
//
// Waiting passes through FakeClock::Advance when a clock was given, so silence costs no real time; without one a
// receive call without bytes answers at once. All operations may be called on any thread; handlers run on the caller's
// thread and may feed or script the transport themselves.
#ifndef TESTS_SUPPORT_SCRIPTEDTRANSPORT_H
#define TESTS_SUPPORT_SCRIPTEDTRANSPORT_H

#include <algorithm>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "link/ICameraInterface.h"
#include "link/IZelCameraCommon.h"
#include "tests/support/Datagrams.h"
#include "tests/support/FakeClock.h"

namespace zel::test {

class ScriptedTransport : public ICameraInterface {
  public:
    enum class Delivery {
        kWhole,   // as many bytes as are asked for
        kOneByte  // one byte per receive call
    };
    // Answers one datagram; an empty result is no answer.
    using Handler = std::function<Bytes(const Bytes& datagram)>;

    // What the operations answer, and values they pass on. Set before use, or from the thread that calls.
    struct Answers {
        int connect = 0;
        int disconnect = 0;
        int start = 0;
        int stop = 0;
        int start_trigger = 0;
        int prepare_acquisition = 0;
        bool stop_trigger = true;
        bool set_image_handler = true;
        bool set_event_handler = true;
        bool enable_events = true;
        bool set_status_value = true;
        bool led = true;  // of GetLedState and SetLedState
        int interface_type = CAMERA_TYPE_USB;
        int status_value = 0;
        int dropped_frames = 0;
        unsigned char led_state = 0;
        double throughput = 0, frame_rate = 0, latency = 0, utilization = 0;
        // Whether Connect, Start, Stop and StartTrigger call the camera object as a real transport does.
        bool call_common = true;
    };
    Answers m_Answers;

    explicit ScriptedTransport(FakeClock* clock = nullptr) : m_Clock(clock) {}
    virtual ~ScriptedTransport() = default;

    // ---- Script ----
    void QueueReply(Bytes reply) {
        Locked([&] { m_Queue.push_back(std::move(reply)); });
    }
    // The same reply several times.
    void QueueReplies(int count, const Bytes& reply) {
        for (int i = 0; i < count; ++i) QueueReply(reply);
    }
    void SetHandler(Handler handler) {
        Locked([&] { m_Handler = std::move(handler); });
    }
    // Puts bytes into the reply stream without a request.
    void Feed(const Bytes& bytes) {
        Locked([&] { m_Stream.insert(m_Stream.end(), bytes.begin(), bytes.end()); });
    }
    void SetDelivery(Delivery delivery) {
        Locked([&] { m_Delivery = delivery; });
    }
    // Every datagram from now on is this many bytes short: it is recorded, but the camera does not answer it.
    void SetShortSend(int missing_bytes) {
        Locked([&] { m_MissingBytes = missing_bytes; });
    }
    // What each receive call costs on the clock, besides waiting.
    void SetReceiveCost(std::uint32_t milliseconds) {
        Locked([&] { m_ReceiveCost = milliseconds; });
    }
    // A transport that breaks its contract: receive calls store nothing and answer this count.
    void SetFalseReceiveCount(std::optional<int> count) {
        Locked([&] { m_FalseCount = count; });
    }

    // ---- What happened ----
    std::vector<Bytes> Sent() const {
        return Locked([&] { return m_Sent; });
    }
    int Exchanges() const {
        return Locked([&] { return static_cast<int>(m_Sent.size()); });
    }
    // The datagrams that start with these bytes (GetRequest(index), TextRequest(text), ...).
    int CountSent(const Bytes& start) const {
        return Locked([&] {
            return static_cast<int>(std::count_if(m_Sent.begin(), m_Sent.end(), [&](const Bytes& sent) {
                return sent.size() >= start.size() && std::equal(start.begin(), start.end(), sent.begin());
            }));
        });
    }
    void ForgetSent() {
        Locked([&] { m_Sent.clear(); });
    }
    int ReceiveCalls() const {
        return Locked([&] { return m_ReceiveCalls; });
    }
    int LastReceiveTimeout() const {
        return Locked([&] { return m_LastReceiveTimeout; });
    }
    std::size_t UnreadBytes() const {
        return Locked([&] { return m_Stream.size(); });
    }
    // Every operation except SendData, RecvData and GetInterfaceType, in order: "Connect", "SetFrameCount 3", ...
    std::vector<std::string> Calls() const {
        return Locked([&] { return m_Calls; });
    }
    int CountCalls(const std::string& call) const {
        return Locked([&] { return static_cast<int>(std::count(m_Calls.begin(), m_Calls.end(), call)); });
    }
    void ForgetCalls() {
        Locked([&] { m_Calls.clear(); });
    }

    // ---- The transport's own actions ----
    IZelCameraCommon* Common() const {
        return Locked([&] { return m_Common; });
    }
    // Report a finished frame or an event to the registered function; false when there is none.
    bool EmitImage(ZelImage* image) {
        const auto target = Locked([&] { return std::pair(m_ImageHandler, m_ImageCamera); });
        if (target.first) target.first(image, target.second);
        return target.first != nullptr;
    }
    bool EmitEvent(unsigned id, int value = 0) {
        const auto target = Locked([&] { return std::pair(m_EventHandler, m_EventCamera); });
        const ZelCameraEvent event{id, value, {}};
        if (target.first) target.first(&event, target.second);
        return target.first != nullptr;
    }

    // ---- ICameraInterface ----
    int SendData(int len, const unsigned char* data) override {
        const Bytes datagram(data, data + std::max(len, 0));
        Handler handler;
        {
            const std::lock_guard lock(m_Lock);
            m_Sent.push_back(datagram);
            if (m_MissingBytes > 0) return std::max(0, len - m_MissingBytes);
            if (!m_Queue.empty()) {
                m_Stream.insert(m_Stream.end(), m_Queue.front().begin(), m_Queue.front().end());
                m_Queue.pop_front();
                return len;
            }
            handler = m_Handler;
        }
        if (handler) Feed(handler(datagram));
        return len;
    }

    int RecvData(int len, unsigned char* buffer, int timeout_ms) override {
        const std::lock_guard lock(m_Lock);
        ++m_ReceiveCalls;
        m_LastReceiveTimeout = timeout_ms;
        Pass(m_ReceiveCost);
        if (m_FalseCount) return *m_FalseCount;
        std::size_t count = std::min(static_cast<std::size_t>(std::max(len, 0)), m_Stream.size());
        if (m_Delivery == Delivery::kOneByte) count = std::min<std::size_t>(count, 1);
        if (count == 0 && len > 0) Pass(static_cast<std::uint32_t>(timeout_ms));
        std::copy_n(m_Stream.begin(), count, buffer);
        m_Stream.erase(m_Stream.begin(), m_Stream.begin() + static_cast<std::ptrdiff_t>(count));
        return static_cast<int>(count);
    }

    void SetCameraCommon(IZelCameraCommon* camera) override {
        Record(camera ? "SetCameraCommon" : "SetCameraCommon null");
        Locked([&] { m_Common = camera; });
    }
    int Connect() override {
        Record("Connect");
        if (m_Answers.connect) return m_Answers.connect;
        IZelCameraCommon* common = Common();
        return common && m_Answers.call_common ? common->ConnectCommon() : 0;
    }
    int Disconnect() override { return Record("Disconnect"), m_Answers.disconnect; }
    int Start() override {
        Record("Start");
        if (m_Answers.start) return m_Answers.start;
        IZelCameraCommon* common = Common();
        return common && m_Answers.call_common ? common->StartCommon() : 0;
    }
    int Stop() override {
        Record("Stop");
        if (m_Answers.stop) return m_Answers.stop;
        IZelCameraCommon* common = Common();
        return common && m_Answers.call_common ? common->StopCommon() : 0;
    }
    int GetInterfaceType() override { return m_Answers.interface_type; }
    int PrepareAcquisition(int* num_image_buffers) override {
        Record("PrepareAcquisition " + std::to_string(num_image_buffers ? *num_image_buffers : -1));
        return m_Answers.prepare_acquisition;
    }
    void SetFrameCount(int frames) override { Record("SetFrameCount " + std::to_string(frames)); }
    bool SetImageHandler(ZelImageHandler handler, ZelCamera* camera) override {
        Record(handler ? "SetImageHandler" : "SetImageHandler null");
        Locked([&] { m_ImageHandler = handler, m_ImageCamera = camera; });
        return m_Answers.set_image_handler;
    }
    bool SetEventHandler(ZelEventHandler handler, ZelCamera* camera) override {
        Record(handler ? "SetEventHandler" : "SetEventHandler null");
        Locked([&] { m_EventHandler = handler, m_EventCamera = camera; });
        return m_Answers.set_event_handler;
    }
    bool EnableEvents(int value) override {
        Record("EnableEvents " + std::to_string(value));
        return m_Answers.enable_events;
    }
    int GetStatusValue() override { return Record("GetStatusValue"), m_Answers.status_value; }
    int GetDroppedFrames() override { return Record("GetDroppedFrames"), m_Answers.dropped_frames; }
    int StartTrigger() override {
        Record("StartTrigger");
        if (m_Answers.start_trigger) return m_Answers.start_trigger;
        IZelCameraCommon* common = Common();
        return common && m_Answers.call_common ? common->StartTriggerCommon() : 0;
    }
    bool StopTrigger() override { return Record("StopTrigger"), m_Answers.stop_trigger; }
    bool SetStatusValue(int value) override {
        Record("SetStatusValue " + std::to_string(value));
        return m_Answers.set_status_value;
    }
    bool GetLedState(unsigned char* on) override {
        Record("GetLedState");
        if (on && m_Answers.led) *on = m_Answers.led_state;
        return m_Answers.led;
    }
    bool SetLedState(bool on) override {
        Record(on ? "SetLedState 1" : "SetLedState 0");
        if (m_Answers.led) m_Answers.led_state = on;
        return m_Answers.led;
    }
    void SetCameraObject(ZelCamera* camera) override {
        Record(camera ? "SetCameraObject" : "SetCameraObject null");
        Locked([&] { m_CameraObject = camera; });
    }
    ZelCamera* GetCameraObject() override {
        return Locked([&] { return m_CameraObject; });
    }
    double GetLinkThroughput() override { return m_Answers.throughput; }
    double GetLinkFrameRate() override { return m_Answers.frame_rate; }
    double GetLinkLatency() override { return m_Answers.latency; }
    double GetLinkUtilization() override { return m_Answers.utilization; }

  private:
    template <class Action>
    std::invoke_result_t<Action> Locked(Action action) const {
        const std::lock_guard lock(m_Lock);
        return action();
    }
    void Record(std::string call) {
        Locked([&] { m_Calls.push_back(std::move(call)); });
    }
    void Pass(std::uint32_t milliseconds) {
        if (m_Clock) m_Clock->Advance(milliseconds);
    }

    FakeClock* const m_Clock;
    mutable std::mutex m_Lock;
    std::deque<Bytes> m_Queue;
    Handler m_Handler;
    std::deque<unsigned char> m_Stream;
    Delivery m_Delivery = Delivery::kWhole;
    int m_MissingBytes = 0;
    std::uint32_t m_ReceiveCost = 0;
    std::optional<int> m_FalseCount;
    std::vector<Bytes> m_Sent;
    int m_ReceiveCalls = 0;
    int m_LastReceiveTimeout = 0;
    std::vector<std::string> m_Calls;
    IZelCameraCommon* m_Common = nullptr;
    ZelCamera* m_CameraObject = nullptr;
    ZelImageHandler m_ImageHandler = nullptr;
    ZelCamera* m_ImageCamera = nullptr;
    ZelEventHandler m_EventHandler = nullptr;
    ZelCamera* m_EventCamera = nullptr;
};

}  // namespace zel::test

#endif
