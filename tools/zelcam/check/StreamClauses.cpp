// Datagrams and the stream of replies, and the text commands that travel in them.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>

#include "tools/zelcam/check/CameraSession.h"

namespace zelcam::check {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint8_t kRequest[] = {0, 0, 7, SYNC_TABLE_CMD_GET, 0, 4, H_SIZE, 0, 0, 0};
constexpr int kRequestLength = static_cast<int>(sizeof kRequest);
constexpr std::size_t kReplyLength = 13;  // a datagram with a value, and an exception datagram without a code
constexpr int kPatienceMs = 500;          // what the SDK gives RecvData

void SendRequest(CameraSession& session) {
    const int sent = session.transport.SendData(kRequestLength, kRequest);
    Require(sent == kRequestLength, fmt::format("SendData of {} bytes answered {}", kRequestLength, sent));
}

// The whole reply, asked for in pieces of so many bytes.
std::vector<std::uint8_t> ReplyInPieces(CameraSession& session, std::size_t piece) {
    constexpr std::uint8_t kGuard = 0xE7;
    SendRequest(session);
    std::vector<std::uint8_t> reply;
    int empty = 0;
    while (reply.size() < kReplyLength) {
        std::array<std::uint8_t, 64> bytes;
        bytes.fill(kGuard);
        const auto wanted = static_cast<int>(std::min(piece, kReplyLength - reply.size()));
        const int count = session.transport.RecvData(wanted, bytes.data(), kPatienceMs);
        Require(count >= 0 && count <= wanted, fmt::format("RecvData of {} bytes answered {}", wanted, count));
        Require(std::all_of(bytes.begin() + wanted, bytes.end(), [](auto byte) { return byte == kGuard; }),
                fmt::format("RecvData of {} bytes wrote more than that", wanted));
        reply.insert(reply.end(), bytes.begin(), bytes.begin() + count);
        empty = count == 0 ? empty + 1 : 0;
        Require(empty < 4, fmt::format("{} of {} bytes of a reply came", reply.size(), kReplyLength));
    }
    return reply;
}

std::string CheckSend(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Connect();
    ReplyInPieces(session, kReplyLength);
    return fmt::format("{} bytes", kRequestLength);
}

std::string CheckHeader(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Connect();
    const auto reply = ReplyInPieces(session, kReplyLength);
    const std::uint8_t expected[] = {0, 7, SYNC_TABLE_CMD_GET, 0, 4};
    Require(std::equal(std::begin(expected), std::end(expected), reply.begin() + 1),
            fmt::format("the reply of a value begins {:02x}", fmt::join(reply.begin(), reply.begin() + 6, " ")));
    Require(reply[11] == 0 && reply[12] == 0, "the second datagram is not the empty exception");
    return "length in two bytes, the high one first";
}

std::string CheckPieces(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Connect();
    const auto whole = ReplyInPieces(session, kReplyLength);
    for (const std::size_t piece : {1u, 2u, 3u, 5u}) {
        Require(ReplyInPieces(session, piece) == whole, fmt::format("in pieces of {} bytes the reply differs", piece));
    }
    return "1, 2, 3 and 5 bytes at a time";
}

std::string CheckKept(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Connect();
    const auto whole = ReplyInPieces(session, kReplyLength);
    SendRequest(session);
    std::array<std::uint8_t, kReplyLength> reply{};
    Require(session.host.Receive(std::span(reply).first(2)), "the reply did not come");
    Require(session.transport.RecvData(0, reply.data() + 2, 0) == 0, "RecvData of 0 bytes answers some");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    Require(session.host.Receive(std::span(reply).subspan(2)), "the rest of the reply did not come");
    Require(std::equal(whole.begin(), whole.end(), reply.begin()), "the rest of the reply is another one");
    return "two bytes, a pause, the rest";
}

std::string CheckTimeout(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Connect();
    std::string waits;
    for (const int timeout_ms : {0, 50, 200}) {
        std::uint8_t none[4] = {};
        const auto begun = Clock::now();
        const int count = session.transport.RecvData(4, none, timeout_ms);
        const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begun).count();
        Require(count == 0, fmt::format("it answered {} although nothing was sent", count));
        Require(waited >= timeout_ms * 6 / 10 && waited < timeout_ms + 2000,
                fmt::format("it waited {} ms instead of {}", waited, timeout_ms));
        waits += fmt::format("{}{} of {} ms", waits.empty() ? "" : ", ", waited, timeout_ms);
    }
    return waits;
}

// The payload of a reply to a text command.
std::string TextReply(CameraSession& session, const std::string& command) {
    std::string reply;
    const std::string shown = command.size() > 20 ? command.substr(0, 20) + "..." : command;
    Require(session.host.Text(command, reply), fmt::format("\"{}\" got no reply", shown));
    std::uint8_t more = 0;
    Require(session.transport.RecvData(1, &more, 20) == 0, fmt::format("bytes came behind the reply of \"{}\"", shown));
    return reply;
}

std::string CheckInfo(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Connect();
    const std::string reply = TextReply(session, "info");
    Require(reply.size() > 3, fmt::format("it has {} bytes", reply.size()));
    return fmt::format("{} bytes", reply.size());
}

// The host takes the last three bytes of every reply away.
std::string CheckReplyEnd(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Connect();
    for (const char* command : {"info", "name", "no such command"}) {
        const std::string reply = TextReply(session, command);
        Require(reply.size() >= 3 && reply.substr(reply.size() - 3) == std::string("\r\n\0", 3),
                fmt::format("the reply of \"{}\" does not", command));
    }
    return "three replies";
}

std::string CheckUnknownText(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Connect();
    const std::string reply = TextReply(session, "no such command");
    Require(!reply.empty(), "the reply is empty");
    Require(!TextReply(session, "info").empty(), "\"info\" is not answered behind it");
    return fmt::format("{} bytes", reply.size());
}

std::string CheckLineEnd(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Connect();
    Require(TextReply(session, "info\r\n") == TextReply(session, "info"), "the replies differ");
    return "\"info\"";
}

std::string CheckLongText(CheckedPlugin& plugin, int camera) {
    constexpr std::size_t kLongestCommand = 252;
    CameraSession session(plugin, camera);
    session.Connect();
    TextReply(session, std::string(kLongestCommand, 'x'));
    Require(!TextReply(session, "info").empty(), "\"info\" is not answered behind it");
    return fmt::format("{} characters", kLongestCommand);
}

constexpr Clause kStreamClauses[] = {
    {"stream", "send-count", "SendData answers how many bytes it was given", true, CheckSend},
    {"stream", "datagram-header", "replies carry their lengths as the protocol has them", true, CheckHeader},
    {"stream", "receive-pieces", "RecvData gives a reply in any pieces, and never more than asked", true, CheckPieces},
    {"stream", "receive-keeps", "bytes that were not asked for stay for the next call", true, CheckKept},
    {"stream", "receive-timeout", "RecvData waits its time when nothing comes, then answers 0", true, CheckTimeout},
    {"text", "text-info", "\"info\" is answered with one reply", true, CheckInfo},
    {"text", "text-reply-end", "a text reply ends in CR, LF and a zero", true, CheckReplyEnd},
    {"text", "text-unknown", "an unknown command is answered, too", true, CheckUnknownText},
    {"text", "text-line-end", "a line end behind a command changes nothing", true, CheckLineEnd},
    {"text", "text-longest", "a command of 252 characters is answered", true, CheckLongText},
};

}  // namespace

std::span<const Clause> StreamClauses() { return kStreamClauses; }

}  // namespace zelcam::check
