// Text commands and raw bytes to the camera.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "camera/ZelCameraControl.h"
#include "platform/Clock.h"

namespace zel {

namespace {
constexpr const char* kSetText = "ZelCameraControl::SetTextCommand";
constexpr int kTextBudgetMs = 5000;
constexpr int kPieceMs = 500;
constexpr int kHeaderSize = 3;
constexpr std::size_t kCommandCapacity = 253;

// A reply as it arrives: either a datagram (it begins with a datagram id, which no text does) or bare text.
class TextReply {
  public:
    unsigned char* Free() { return m_Bytes + m_Size; }
    int Room() const { return kCapacity - m_Size; }
    void Add(int bytes) { m_Size += std::clamp(bytes, 0, Room()); }

    bool Complete() const {
        if (m_Size == 0) return false;
        if (IsDatagram()) return m_Size >= kHeaderSize && m_Size >= kHeaderSize + m_Bytes[1] * 256 + m_Bytes[2];
        const unsigned char last = m_Bytes[m_Size - 1];
        return last == '\n' || last == '\r' || last == '\0';
    }

    // Zero-terminated: a zero byte always follows what was received.
    const char* Text() const {
        return reinterpret_cast<const char*>(m_Bytes) + (IsDatagram() ? std::min(kHeaderSize, m_Size) : 0);
    }

  private:
    static constexpr int kCapacity = TextProtocol::kReplyCapacity;

    bool IsDatagram() const { return m_Size > 0 && (m_Bytes[0] == 0 || m_Bytes[0] == 9); }

    unsigned char m_Bytes[kCapacity + 1] = {};
    int m_Size = 0;
};
}  // namespace

void ZelCameraControl::SendText(const char* text) { SendText(text, nullptr); }

void ZelCameraControl::SendText(const char* text, char* reply) { m_TextProtocol.Exchange(text, reply); }

const char* ZelCameraControl::GetCameraName() {
    const Operation entry(*this);
    if (!entry) return nullptr;
    if (!m_Camera) return nullptr;
    char reply[TextProtocol::kReplyCapacity] = {};
    SendText("name\r\n", reply);
    Text name{};
    std::memcpy(name.data(), reply, strnlen(reply, name.size() - 1));
    m_CameraName.Set(name);
    return m_CameraName.Address();
}

bool ZelCameraControl::SetCameraName(const char* name) {
    const Operation entry(*this);
    if (!entry) return false;
    if (!m_Camera || !name) return false;
    char command[TextProtocol::kLongestCommand + 1];
    std::snprintf(command, sizeof command, "name %.*s\r\n", TextProtocol::kLongestCommand - 7, name);
    return m_TextProtocol.Exchange(command, nullptr);
}

int ZelCameraControl::TextCommandCommon(const char* text, bool expect_reply) {
    const Callee entry(*this);
    if (!entry) return 1;
    if (!m_Camera || !text) return 1;
    const platform::ScopedLock exchange(m_ExchangeLock);
    if (!m_TextProtocol.Send(text)) return 1;
    return expect_reply && !m_TextProtocol.Recv(nullptr, kTextBudgetMs) ? 1 : 0;
}

// The line goes over the wire as it stands, without a datagram header.
bool ZelCameraControl::SetTextCommand(const char* text) {
    const Operation entry(*this);
    if (!entry) return false;
    if (!m_Camera || !text) return false;
    ZEL_LOG(m_Logger, kLogTrace, kSetText, "ZelCameraControl::SetTextCommand(\"%s\")\n", text);
    char command[kCommandCapacity];
    const int length = std::snprintf(command, sizeof command, "%.*s\r\n", static_cast<int>(kCommandCapacity) - 3, text);
    TextReply reply;
    {
        const platform::ScopedLock exchange(m_ExchangeLock);
        m_Camera->SendData(length, reinterpret_cast<const unsigned char*>(command));
        ZEL_LOG(m_Logger, kLogTrace, kSetText, "len:%d", length);
        const std::uint32_t start = platform::MillisecondClock();
        while (!reply.Complete()) {
            if (reply.Room() > 0) {
                reply.Add(m_Camera->RecvData(reply.Room(), reply.Free(), kPieceMs));
            } else {
                platform::SleepMilliseconds(kPieceMs);
            }
            if (m_Gate.Cancelled()) return false;
            if (!reply.Complete() && platform::MillisecondClock() - start > kTextBudgetMs) {
                ZEL_LOG(m_Logger, kLogError, kSetText,
                        "***ERROR***: SetTextCommand() failed to receive data timed out.");
                return false;
            }
        }
    }
    ZEL_LOG(m_Logger, kLogTrace, kSetText, "rx_buffer:\"%s\"", reply.Text());
    const Callbacks callbacks = CopyCallbacks();
    if (callbacks.text) callbacks.text(reply.Text(), callbacks.text_context);
    return true;
}

int ZelCameraControl::SendData(const unsigned char* data, int num_tx_bytes) {
    const Operation entry(*this);
    if (!entry) return 0;
    constexpr const char* kSend = "ZelCameraControl::SendData";
    if (!m_Camera) {
        ZEL_LOG(m_Logger, kLogTrace, kSend, "m_Camera == 0, returning 0");
        return 0;
    }
    ZEL_LOG(m_Logger, kLogTrace, kSend, "num_tx_bytes:%d data:%s", num_tx_bytes, PointerText(data).text);
    const int sent = data && num_tx_bytes > 0 ? m_Camera->SendData(num_tx_bytes, data) : 0;
    ZEL_LOG(m_Logger, kLogTrace, kSend, "returning %d bytes", sent);
    return sent;
}

int ZelCameraControl::RecvData(unsigned char* buffer, int num_rx_bytes, int timeout_ms) {
    const Operation entry(*this);
    if (!entry) return 0;
    constexpr const char* kRecv = "ZelCameraControl::RecvData";
    if (!m_Camera) {
        ZEL_LOG(m_Logger, kLogTrace, kRecv, "m_Camera == 0, returning 0");
        return 0;
    }
    ZEL_LOG(m_Logger, kLogTrace, kRecv, "num_tx_bytes:%d data:%s timeout_ms:%d", num_rx_bytes, PointerText(buffer).text,
            timeout_ms);
    const int received = buffer && num_rx_bytes > 0 ? m_Camera->RecvData(num_rx_bytes, buffer, timeout_ms) : 0;
    ZEL_LOG(m_Logger, kLogTrace, kRecv, "returning %d bytes", received);
    return received;
}

bool ZelCameraControl::GetCameraParameter(int index, int* value) {
    const Callee entry(*this);
    if (!entry) return false;
    // A block entry stores up to 32 bytes; the transport gets the first word.
    alignas(int) char value_or_block[SyncTable::kBlockCapacity] = {};
    if (!m_Camera || !value || !m_SyncTable->Get(index, value_or_block)) {
        ZEL_LOG(m_Logger, kLogError, "ZelCameraControlImpl::GetCameraParameter",
                "***ERROR***: ZelCameraControlImpl::GetCameraParameter() - m_SyncTable.Get() failed\n");
        return false;
    }
    std::memcpy(value, value_or_block, sizeof *value);
    return true;
}

bool ZelCameraControl::SyncTapBalanceGain() {
    const Callee entry(*this);
    if (!entry) return false;
    int gain = 0;
    if (!m_Camera || !m_SyncTable->Get(VGA_GAIN, &gain)) return false;
    m_TapBalance.SetGain(static_cast<float>(gain));
    return true;
}

}  // namespace zel
