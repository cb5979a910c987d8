#include "link/TextProtocol.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "link/ICameraInterface.h"
#include "link/ReceiveBytes.h"

namespace zel {

namespace {

constexpr unsigned char kTextDatagramId = 9;
constexpr int kLongestPayload = 0xFFF;
constexpr int kReplyTrailer = 3;  // what a reply ends with: line end and zero byte

void NoCallLine(int) {}

// A text for a log line, bounded by what the buffer behind it holds.
const char* TextOrNull(const char* text) { return text ? text : "(null)"; }

}  // namespace

TextProtocol::TextProtocol(ICameraInterface* camera, const char* instance_name, ExchangeLock& exchange_lock)
    : m_Camera(camera), m_Logger("TextProtocol", instance_name), m_ExchangeLock(exchange_lock) {}

// On purpose: nothing is added to the text on its way to the wire, so a command carries a line end only when its caller
// wrote one. The transport's answer is not looked at.
bool TextProtocol::Send(const char* text) {
    ZEL_LOG(m_Logger, kLogTrace, "TextProtocol::Send", "ENTRY");
    if (!m_Camera) {
        ZEL_LOG(m_Logger, kLogError, "TextProtocol::Send", "m_Camera is 0");
        return false;
    }
    if (!text) text = "";
    ZEL_LOG(m_Logger, kLogTrace, "TextProtocol::Send", "Sending \"%s\"", text);

    const std::size_t length = std::min<std::size_t>(std::strlen(text), kLongestCommand);
    std::array<unsigned char, kDatagramHeaderSize + kLongestCommand> datagram{};
    datagram[0] = kTextDatagramId;
    datagram[2] = static_cast<unsigned char>(length);
    std::memcpy(datagram.data() + kDatagramHeaderSize, text, length);

    const int size = kDatagramHeaderSize + static_cast<int>(length);
    m_Camera->SendData(size, datagram.data());
    ZEL_LOG(m_Logger, kLogTrace, "TextProtocol::Send", "datagram:%4d len:%d ", datagram[0], size);
    return true;
}

bool TextProtocol::Recv(char* out, int /*timeout_ms*/) {
    if (!m_Camera) return false;
    std::array<unsigned char, kDatagramHeaderSize + kLongestPayload> buffer{};
    unsigned char* const payload = buffer.data() + kDatagramHeaderSize;
    int received = 0;

    if (!ReceiveBytes(*m_Camera, m_ExchangeLock, buffer.data(), kDatagramHeaderSize, received, NoCallLine)) {
        ZEL_LOG(m_Logger, kLogError, "TextProtocol::Recv",
                "\n***ERROR***: TextProtocol::Recv() - stage 1, timeout (timeout_ms:%d) bytes_to_recv:%d rx_index:%d "
                "str:\"%.*s\"\n",
                kReceiveStageMs, kDatagramHeaderSize - received, received, kReplyCapacity, TextOrNull(out));
        return false;
    }

    const int length = static_cast<std::int16_t>(BigEndian16(buffer.data() + 1));
    ZEL_LOG(m_Logger, kLogTrace, "TextProtocol::Recv", "datagram_id:%d   len:%d", buffer[0], length);
    if (length > kLongestPayload || length < 0) {
        ZEL_LOG(m_Logger, kLogError, "TextProtocol::Recv", "***ERROR***: TextProtocol::Recv() - bad length value %d\n",
                length);
        return false;
    }

    if (!ReceiveBytes(*m_Camera, m_ExchangeLock, payload, length, received, NoCallLine)) {
        ZEL_LOG(m_Logger, kLogError, "TextProtocol::Recv",
                "***ERROR***: stage 2, timeout (timeout_ms:%d) bytes_to_recv:%d rx_index:%d str:\"%.*s\"",
                kReceiveStageMs, length - received, kDatagramHeaderSize + received, kReplyCapacity, TextOrNull(out));
        return false;
    }

    // On purpose: the last three bytes are dropped whatever they are; of a shorter payload nothing is left.
    std::fill_n(payload + std::max(0, length - kReplyTrailer), std::min(length, kReplyTrailer),
                static_cast<unsigned char>(0));
    if (out) std::memcpy(out, payload, static_cast<std::size_t>(length));
    ZEL_LOG(m_Logger, kLogTrace, "TextProtocol::Recv", "EXIT");
    return true;
}

bool TextProtocol::Exchange(const char* text, char* out) {
    const platform::ScopedLock lock(m_ExchangeLock);
    if (out) out[0] = 0;
    return !m_ExchangeLock.Cancelled() && Send(text) && Recv(out, kReceiveStageMs);
}

}  // namespace zel
