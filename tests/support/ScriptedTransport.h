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
#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
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

    // What the operations answer. Set before use, or from the thread that calls.
    struct Answers {
        int connect = 0;
        int disconnect = 0;
        int stop = 0;
        int prepare_acquisition = 0;
        int interface_type = CAMERA_TYPE_USB;
        // Whether Connect, Start, Stop and StartTrigger call the camera object as a real transport does.
        bool call_common = true;
    };
    Answers m_Answers;

    explicit ScriptedTransport(FakeClock* clock = nullptr) : m_Clock(clock) {}
    virtual ~ScriptedTransport() = default;

    // ---- Script ----
    void QueueReply(Bytes reply) {
        const std::lock_guard lock(m_Lock);
        m_Queue.push_back(std::move(reply));
    }
    // The same reply several times.
    void QueueReplies(int count, const Bytes& reply) {
        for (int i = 0; i < count; ++i) QueueReply(reply);
    }
    void SetHandler(Handler handler) { Write(m_Handler, std::move(handler)); }
    // Puts bytes into the reply stream without a request.
    void Feed(const Bytes& bytes) {
        const std::lock_guard lock(m_Lock);
        m_Stream.insert(m_Stream.end(), bytes.begin(), bytes.end());
    }
    void SetDelivery(Delivery delivery) { Write(m_Delivery, delivery); }
    // Every datagram from now on is this many bytes short: it is recorded, but the camera does not answer it.
    void SetShortSend(int missing_bytes) { Write(m_MissingBytes, missing_bytes); }
    // What each receive call costs on the clock, besides waiting.
    void SetReceiveCost(std::uint32_t milliseconds) { Write(m_ReceiveCost, milliseconds); }

    // ---- What happened ----
    std::vector<Bytes> Sent() const { return Read(m_Sent); }
    int Exchanges() const {
        const std::lock_guard lock(m_Lock);
        return static_cast<int>(m_Sent.size());
    }
    // The datagrams that start with these bytes (GetRequest(index), TextRequest(text), ...).
    int CountSent(const Bytes& start) const {
        const auto starts = [&](const Bytes& sent) { return std::ranges::mismatch(start, sent).in1 == start.end(); };
        return static_cast<int>(std::ranges::count_if(Sent(), starts));
    }
    void ForgetSent() { Write(m_Sent, {}); }
    int ReceiveCalls() const { return Read(m_ReceiveCalls); }
    int LastReceiveTimeout() const { return Read(m_LastReceiveTimeout); }
    std::size_t UnreadBytes() const {
        const std::lock_guard lock(m_Lock);
        return m_Stream.size() - m_Taken;
    }
    // The operations that matter to a session, in order: "Connect", "PrepareAcquisition 8", ...
    std::vector<std::string> Calls() const { return Read(m_Calls); }
    int CountCalls(const std::string& call) const { return static_cast<int>(std::ranges::count(Calls(), call)); }
    void ForgetCalls() { Write(m_Calls, {}); }

    // ---- The transport's own actions ----
    IZelCameraCommon* Common() const { return Read(m_Common); }
    // Report a finished frame or an event to the registered function; false when there is none.
    bool EmitImage(ZelImage* image) {
        const auto [handler, camera] = Read(m_OnImage);
        if (handler) handler(image, camera);
        return handler != nullptr;
    }
    bool EmitEvent(unsigned id, int value = 0) {
        const auto [handler, camera] = Read(m_OnEvent);
        const ZelCameraEvent event{id, value, {}};
        if (handler) handler(&event, camera);
        return handler != nullptr;
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
        std::size_t count = std::min(static_cast<std::size_t>(std::max(len, 0)), m_Stream.size() - m_Taken);
        if (m_Delivery == Delivery::kOneByte) count = std::min<std::size_t>(count, 1);
        if (count == 0 && len > 0) Pass(static_cast<std::uint32_t>(timeout_ms));
        std::copy_n(m_Stream.begin() + static_cast<std::ptrdiff_t>(m_Taken), count, buffer);
        m_Taken += count;
        if (m_Taken == m_Stream.size()) m_Stream.clear(), m_Taken = 0;
        return static_cast<int>(count);
    }

    void SetCameraCommon(IZelCameraCommon* camera) override {
        Record("SetCameraCommon");
        Write(m_Common, camera);
    }
    int Connect() override { return Answer("Connect", m_Answers.connect, &IZelCameraCommon::ConnectCommon); }
    int Disconnect() override { return Record("Disconnect"), m_Answers.disconnect; }
    int Start() override { return Answer("Start", 0, &IZelCameraCommon::StartCommon); }
    int Stop() override { return Answer("Stop", m_Answers.stop, &IZelCameraCommon::StopCommon); }
    int GetInterfaceType() override { return m_Answers.interface_type; }
    int PrepareAcquisition(int* num_image_buffers) override {
        Record("PrepareAcquisition " + std::to_string(num_image_buffers ? *num_image_buffers : -1));
        return m_Answers.prepare_acquisition;
    }
    void SetFrameCount(int frames) override { Record("SetFrameCount " + std::to_string(frames)); }
    bool SetImageHandler(ZelImageHandler handler, ZelCamera* camera) override {
        Record("SetImageHandler");
        return Write(m_OnImage, {handler, camera}), true;
    }
    bool SetEventHandler(ZelEventHandler handler, ZelCamera* camera) override {
        Record("SetEventHandler");
        return Write(m_OnEvent, {handler, camera}), true;
    }
    bool EnableEvents(int value) override { return Record("EnableEvents " + std::to_string(value)), true; }
    int GetStatusValue() override { return 0; }
    int GetDroppedFrames() override { return 0; }
    int StartTrigger() override { return Answer("StartTrigger", 0, &IZelCameraCommon::StartTriggerCommon); }
    bool StopTrigger() override { return Record("StopTrigger"), true; }
    bool SetStatusValue(int) override { return true; }
    bool GetLedState(unsigned char* on) override { return *on = m_Led, true; }
    bool SetLedState(bool on) override { return m_Led = on, true; }
    void SetCameraObject(ZelCamera*) override {}
    ZelCamera* GetCameraObject() override { return nullptr; }

  private:
    template <class Value>
    Value Read(const Value& member) const {
        const std::lock_guard lock(m_Lock);
        return member;
    }
    template <class Value>
    void Write(Value& member, std::type_identity_t<Value> value) {
        const std::lock_guard lock(m_Lock);
        member = std::move(value);
    }
    void Record(std::string call) {
        const std::lock_guard lock(m_Lock);
        m_Calls.push_back(std::move(call));
    }
    int Answer(const char* call, int code, int (IZelCameraCommon::*operation)()) {
        Record(call);
        IZelCameraCommon* common = Common();
        return code == 0 && common && m_Answers.call_common ? (common->*operation)() : code;
    }
    void Pass(std::uint32_t milliseconds) {
        if (m_Clock) m_Clock->Advance(milliseconds);
    }

    FakeClock* const m_Clock;
    mutable std::mutex m_Lock;
    std::deque<Bytes> m_Queue;
    Handler m_Handler;
    Bytes m_Stream;
    std::size_t m_Taken = 0;  // of the stream
    Delivery m_Delivery = Delivery::kWhole;
    int m_MissingBytes = 0;
    std::uint32_t m_ReceiveCost = 0;
    std::vector<Bytes> m_Sent;
    int m_ReceiveCalls = 0;
    int m_LastReceiveTimeout = 0;
    std::vector<std::string> m_Calls;
    IZelCameraCommon* m_Common = nullptr;
    std::atomic<bool> m_Led = false;
    std::pair<ZelImageHandler, ZelCamera*> m_OnImage;
    std::pair<ZelEventHandler, ZelCamera*> m_OnEvent;
};

}  // namespace zel::test

#endif
