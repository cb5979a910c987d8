// What anybody on the network can send to the viewer, through its real server: bytes as they are, a request, or a
// page's frames after a good one. The first byte chooses.
#include <atomic>
#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>
#include <optional>

#include "fuzz/Input.h"
#include "tools/zelcam/view/ViewMessages.h"
#include "tools/zelcam/view/ViewServer.h"

using namespace zelcam;
using zel::fuzz::Choices;
namespace net = boost::asio;

namespace {

constexpr int kInputsOfAServer = 400;  // fewer than the requests that it takes at once

struct Pages : PageListener {
    void Joined(int client) override {
        ++m_Open;
        m_Outlet->SendText(client, R"({"type":"hello"})");
    }
    void Said(int client, std::string_view text) override {
        FuzzCheck(text.size() <= ViewServer::kLongestText);
        try {
            const Json message = ParseMessage(text);
            ProbeIn(message);
            ViewIn(message);
        } catch (const std::exception& error) {
            m_Outlet->SendText(client, MessageText(EventMessage("error", error.what())));
        }
    }
    void Left(int) override { --m_Open; }

    PageOutlet* m_Outlet = nullptr;
    std::atomic<int> m_Open = 0;
};

// A server that has answered no more than its share.
ViewServer& Server() {
    struct Running {
        ViewServer server{{.token = "abcdefghijklmnopqrstuv"}};
    };
    static Pages s_Pages;
    static std::optional<Running> s_Running;
    static int s_Inputs = 0;
    if (s_Inputs++ % kInputsOfAServer == 0) {
        s_Running.reset();
        FuzzCheck(s_Pages.m_Open == 0);
        s_Pages.m_Outlet = &s_Running.emplace().server;
        s_Running->server.Run(s_Pages);
    }
    return s_Running->server;
}

std::string Head(const ViewServer& server, std::string_view file, bool upgrade) {
    const std::string host = "127.0.0.1:" + std::to_string(server.Port());
    std::string head = "GET /abcdefghijklmnopqrstuv/" + std::string(file) + " HTTP/1.1\r\nHost: " + host + "\r\n";
    if (upgrade) {
        head += "Origin: http://" + host +
                "\r\nConnection: Upgrade\r\nUpgrade: websocket\r\n"
                "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n";
    }
    return head;
}

// Frames of a page: each with what its head says of it, true or not.
std::string Frames(Choices& in) {
    std::string bytes;
    while (!in.Ended()) {
        const unsigned head = in.Byte(), length = in.Number(0, 200), said = in.Number(0, 15) ? length : in.Byte();
        bytes += static_cast<char>(in.Number(0, 7) ? 0x80 | (head & 0x0F) : head);  // mostly whole messages
        bytes += static_cast<char>(0x80 | std::min(said, 125u + in.Number(0, 2)));
        bytes.append(4, '\0');  // a mask that changes nothing
        for (unsigned i = 0; i < length && !in.Ended(); ++i) bytes += static_cast<char>(in.Byte());
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Choices in(data, size);
    ViewServer& server = Server();
    const unsigned kind = in.Number(0, 3);
    std::string sent;
    if (kind == 1) sent = Head(server, "", false);
    if (kind == 2) sent = Head(server, "socket", true);
    if (kind == 3) sent = Head(server, "socket", true) + "\r\n" + Frames(in);
    const auto rest = in.Rest();
    sent.append(rest.begin(), rest.end());
    if (kind == 1 || kind == 2) sent += "\r\n\r\n";

    net::io_context context;
    net::ip::tcp::socket socket(context);
    boost::system::error_code error;
    socket.connect({net::ip::make_address("127.0.0.1"), server.Port()}, error);
    FuzzCheck(!error);
    socket.set_option(net::socket_base::linger(true, 0), error);
    net::write(socket, net::buffer(sent), error);
    socket.shutdown(net::ip::tcp::socket::shutdown_send, error);
    // Until the server ends the connection, which it does without waiting for anything.
    std::string answer;
    net::read(socket, net::dynamic_buffer(answer), error);
    FuzzCheck(answer.empty() || answer.starts_with("HTTP/1.1 "));
    if (kind == 3)
        FuzzCheck(answer.empty() || answer.starts_with("HTTP/1.1 101 ") || answer.starts_with("HTTP/1.1 429 "));
    return 0;
}
