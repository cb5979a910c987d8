// The one file that sees Boost: its headers take longer to compile than all of the viewer's.
#include "tools/zelcam/view/ViewServer.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/span_body.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <deque>
#include <map>
#include <optional>
#include <thread>
#include <utility>

#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/view/Access.h"
#include "tools/zelcam/view/PageFiles.h"
#include "tools/zelcam/view/RateLimit.h"

namespace zelcam {

namespace {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using boost::system::error_code;
using net::ip::tcp;
using Clock = RateLimit::Clock;

constexpr std::size_t kMostConnections = 64;      // pages and requests for files
constexpr int kMostRequests = 100;                // of one connection
constexpr unsigned kLongestHeader = 8192;         // bytes
constexpr std::chrono::seconds kRequestTime{10};  // for a request and its answer, and for a handshake
constexpr std::chrono::seconds kSilence{20};      // a page that answers no ping for so long has left
constexpr std::chrono::milliseconds kGoodBye{1000};
constexpr std::chrono::milliseconds kPause{100};
constexpr std::size_t kMostTexts = 512;  // that wait for a page, before it is given up
constexpr std::size_t kMostTextBytes = 4u << 20;
constexpr std::size_t kTextsInTime = 8;  // beyond, a page is behind
// A slider that is dragged sends a text for each move of the mouse.
constexpr double kTextsPerSecond = 500, kTextBurst = 1000;
constexpr double kRequestsPerSecond = 200, kRequestBurst = 600;

using Request = http::request<http::empty_body>;
using Response = http::response<http::span_body<const char>>;

// A header that must be there once.
std::string_view Single(const Request& request, http::field field) {
    const auto range = request.equal_range(field);
    if (range.first == range.second || std::next(range.first) != range.second) return {};
    const auto value = range.first->value();
    return {value.data(), value.size()};
}

std::string_view View(beast::string_view text) { return {text.data(), text.size()}; }

void ProtectPage(http::fields& fields, std::string_view host) {
    const std::string policy =
        "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self' ws://" +
        std::string(host) + "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
    fields.set("Content-Security-Policy", policy);
    fields.set("X-Content-Type-Options", "nosniff");
    fields.set("X-Frame-Options", "DENY");
    fields.set("Referrer-Policy", "no-referrer");
    fields.set("Cross-Origin-Opener-Policy", "same-origin");
    fields.set("Cross-Origin-Embedder-Policy", "require-corp");
    fields.set("Cross-Origin-Resource-Policy", "same-origin");
    fields.set("Cache-Control", "no-store");
}

}  // namespace

class ViewServer::Engine {
  public:
    explicit Engine(const ServerOptions& options) : m_Acceptor(m_Context), m_GoodBye(m_Context), m_Pause(m_Context) {
        error_code error;
        const auto fail = [&] {
            if (!error) return;
            const std::string what = options.address + ", port " + std::to_string(options.port);
            throw Failure("the viewer can't listen at " + what, error.message(), "choose another --port or --listen",
                          kRefused);
        };
        const auto address = net::ip::make_address(options.address, error);
        fail();
        const tcp::endpoint endpoint(address, options.port);
        m_Acceptor.open(endpoint.protocol(), error);
        fail();
#ifndef BOOST_ASIO_WINDOWS
        // There it would let another program take the port.
        m_Acceptor.set_option(net::socket_base::reuse_address(true), error);
#endif
        m_Acceptor.bind(endpoint, error);
        fail();
        m_Acceptor.listen(net::socket_base::max_listen_connections, error);
        fail();
        m_Port = m_Acceptor.local_endpoint(error).port();
        fail();
        m_Access.emplace(options.token, address.to_string(), m_Port);
    }

    void Run(PageListener& listener) {
        m_Listener = &listener;
        Accept();
        m_Thread = std::thread([this] { Work(); });
    }
    void End();

    const Access& Rules() const { return *m_Access; }
    std::uint16_t Port() const { return m_Port; }

    // Has something done on the server's thread.
    template <class Work>
    void Post(Work work) {
        net::post(m_Context, std::move(work));
    }
    void SendText(int client, const std::shared_ptr<const std::string>& text, Need need);
    void SendTextToAll(const std::shared_ptr<const std::string>& text);
    void SendPicture(int client, PictureMessage picture);

  private:
    class Connection;
    class Page;

    void Work();
    void Accept();
    bool Join(int number, const std::weak_ptr<Page>& page);
    void Leave(int number);

    // Of the server's thread alone. They outlive the context, whose end ends the connections.
    std::map<int, std::weak_ptr<Page>> m_Pages;
    std::size_t m_Connections = 0;
    int m_NextClient = 1;
    bool m_Ending = false;
    RateLimit m_Requests{kRequestsPerSecond, kRequestBurst};

    std::optional<Access> m_Access;
    std::uint16_t m_Port = 0;
    PageListener* m_Listener = nullptr;
    net::io_context m_Context{1};
    tcp::acceptor m_Acceptor;
    net::steady_timer m_GoodBye;
    net::steady_timer m_Pause;
    std::thread m_Thread;
};

// A page that is open in a browser. It lives for as long as something is being read from or sent to it.
class ViewServer::Engine::Page : public std::enable_shared_from_this<Page> {
  public:
    Page(Engine& engine, beast::tcp_stream stream, int number)
        : m_Engine(engine), m_Number(number), m_Socket(std::move(stream)) {
        ++m_Engine.m_Connections;
    }
    ~Page() { --m_Engine.m_Connections; }
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    void Begin(const Request& request) {
        beast::get_lowest_layer(m_Socket).expires_never();
        m_Socket.set_option(websocket::stream_base::timeout{kRequestTime, kSilence, true});
        m_Socket.read_message_max(kLongestText);
        m_Socket.auto_fragment(false);
        error_code ignored;
        beast::get_lowest_layer(m_Socket).socket().set_option(tcp::no_delay(true), ignored);
        m_Socket.async_accept(request, [self = shared_from_this()](error_code error) {
            if (error || !self->m_Engine.Join(self->m_Number, self)) return;
            self->m_Open = true;
            self->m_Engine.m_Listener->Joined(self->m_Number);
            self->Read();
        });
    }

    void SendText(const std::shared_ptr<const std::string>& text, Need need) {
        if (!m_Open || m_Closing || (need == Need::kWhenInTime && m_Texts.size() >= kTextsInTime)) return;
        m_TextBytes += text->size();
        m_Texts.push_back(text);
        if (m_Texts.size() > kMostTexts || m_TextBytes > kMostTextBytes) return Drop();
        Write();
    }
    void SendPicture(PictureMessage picture) {
        if (!m_Open || m_Closing) return;
        m_Picture = std::move(picture);
        Write();
    }
    // Says good-bye once everything is sent.
    void Close() {
        m_Closing = true;
        Write();
    }
    // Ends the connection at once.
    void Drop() {
        if (!std::exchange(m_Open, false)) return;
        error_code ignored;
        beast::get_lowest_layer(m_Socket).socket().close(ignored);
        m_Engine.Leave(m_Number);
    }

  private:
    void Read() {
        m_Socket.async_read(m_Input, [self = shared_from_this()](error_code error, std::size_t) {
            if (error || !self->m_Open) return self->Drop();
            // Only texts make sense, and only so many.
            if (!self->m_Socket.got_text() || !self->m_Rate.Allows(Clock::now())) return self->Drop();
            const auto bytes = self->m_Input.cdata();
            self->m_Engine.m_Listener->Said(self->m_Number, {static_cast<const char*>(bytes.data()), bytes.size()});
            self->m_Input.consume(bytes.size());
            self->Read();
        });
    }

    auto Written() {
        return [self = shared_from_this()](error_code error, std::size_t) {
            self->m_Writing = false;
            self->m_SentPicture.samples.reset();
            if (error) return self->Drop();
            self->Write();
        };
    }

    // Texts go before pictures.
    void Write() {
        if (!m_Open || m_Writing) return;
        if (!m_Texts.empty()) {
            m_Writing = true;
            m_SentText = std::move(m_Texts.front());
            m_Texts.pop_front();
            m_TextBytes -= m_SentText->size();
            m_Socket.text(true);
            m_Socket.async_write(net::buffer(*m_SentText), Written());
        } else if (m_Picture) {
            m_Writing = true;
            m_SentPicture = std::move(*m_Picture);
            m_Picture.reset();
            m_Socket.binary(true);
            const std::array<net::const_buffer, 2> message{net::buffer(m_SentPicture.header),
                                                           net::buffer(*m_SentPicture.samples)};
            m_Socket.async_write(message, Written());
        } else if (m_Closing) {
            m_Writing = true;
            m_Socket.async_close(websocket::close_code::going_away,
                                 [self = shared_from_this()](error_code) { self->Drop(); });
        }
    }
    Engine& m_Engine;
    const int m_Number;
    websocket::stream<beast::tcp_stream> m_Socket;
    beast::flat_buffer m_Input;
    RateLimit m_Rate{kTextsPerSecond, kTextBurst};
    bool m_Open = false;
    bool m_Writing = false;
    bool m_Closing = false;
    std::deque<std::shared_ptr<const std::string>> m_Texts;
    std::size_t m_TextBytes = 0;
    std::optional<PictureMessage> m_Picture;
    // What is being sent.
    std::shared_ptr<const std::string> m_SentText;
    PictureMessage m_SentPicture;
};

// A connection that asks for files, or becomes a page.
class ViewServer::Engine::Connection : public std::enable_shared_from_this<Connection> {
  public:
    Connection(Engine& engine, tcp::socket socket) : m_Engine(engine), m_Stream(std::move(socket)) {
        ++m_Engine.m_Connections;
    }
    ~Connection() { --m_Engine.m_Connections; }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void Read() {
        m_Parser.emplace();
        m_Parser->header_limit(kLongestHeader);
        m_Parser->body_limit(0);
        m_Stream.expires_after(kRequestTime);
        http::async_read(m_Stream, m_Input, *m_Parser, [self = shared_from_this()](error_code error, std::size_t) {
            if (!error) return self->Answer(self->m_Parser->release());
            // What is no HTTP is told so, unless the other side has left or said nothing.
            const bool malformed = error.category() == make_error_code(http::error::bad_method).category() &&
                                   error != http::error::end_of_stream && error != http::error::partial_message;
            if (malformed) self->Refuse(http::status::bad_request, "This is not a request.\n", {});
        });
    }

  private:
    void Answer(const Request& request) {
        const RequestFacts facts{View(request.target()), Single(request, http::field::host), Origin(request),
                                 websocket::is_upgrade(request)};
        const Access& rules = m_Engine.Rules();
        if (++m_Requests > kMostRequests || !m_Engine.m_Requests.Allows(Clock::now())) {
            return Refuse(http::status::too_many_requests, "Too many requests.\n", request);
        }
        switch (rules.Judge(facts)) {
            case Verdict::kWrongHost:
                return Refuse(http::status::bad_request, "The viewer does not go by this name.\n", request);
            case Verdict::kForeign:
                return Refuse(http::status::forbidden, "The viewer answers its own page alone.\n", request);
            case Verdict::kUnknown:
                return Refuse(http::status::not_found, "There is nothing here.\n", request);
            case Verdict::kGood:
                break;
        }
        const std::string_view path = *rules.PathOf(facts.target);
        if (facts.upgrade) return Upgrade(path, request);
        if (request.method() != http::verb::get && request.method() != http::verb::head) {
            return Refuse(http::status::method_not_allowed, "Files can be read.\n", request);
        }
        const PageFile* const file = FindPageFile(path);
        if (!file) return Refuse(http::status::not_found, "There is nothing here.\n", request);
        Respond(http::status::ok, file->type, file->contents, request, request.keep_alive());
    }

    // An origin that is there twice is nobody's.
    static std::optional<std::string_view> Origin(const Request& request) {
        if (request.count(http::field::origin) == 0) return std::nullopt;
        return Single(request, http::field::origin);
    }

    void Upgrade(std::string_view path, const Request& request) {
        if (path != "socket") return Refuse(http::status::not_found, "There is nothing here.\n", request);
        if (m_Engine.m_Pages.size() >= kMostPages) {
            return Refuse(http::status::service_unavailable, "Too many pages are open.\n", request);
        }
        std::make_shared<Page>(m_Engine, std::move(m_Stream), m_Engine.m_NextClient++)->Begin(request);
    }

    void Refuse(http::status status, std::string_view text, const Request& request) {
        Respond(status, "text/plain; charset=utf-8", text, request, false);
    }

    // The contents are constants.
    void Respond(http::status status, std::string_view type, std::string_view contents, const Request& request,
                 bool keep) {
        m_Response = Response(status, 11);
        m_Response.set(http::field::content_type, beast::string_view(type.data(), type.size()));
        ProtectPage(m_Response, status == http::status::ok ? Single(request, http::field::host) : "");
        m_Response.keep_alive(keep);
        m_Response.content_length(contents.size());
        if (request.method() != http::verb::head) m_Response.body() = {contents.data(), contents.size()};
        m_Stream.expires_after(kRequestTime);
        http::async_write(m_Stream, m_Response, [self = shared_from_this(), keep](error_code error, std::size_t) {
            if (error) return;
            if (keep && !self->m_Engine.m_Ending) return self->Read();
            error_code ignored;
            self->m_Stream.socket().shutdown(tcp::socket::shutdown_send, ignored);
        });
    }

    Engine& m_Engine;
    beast::tcp_stream m_Stream;
    beast::flat_buffer m_Input;
    std::optional<http::request_parser<http::empty_body>> m_Parser;
    Response m_Response;
    int m_Requests = 0;
};

// What fails without memory is one connection.
void ViewServer::Engine::Work() {
    while (true) {
        try {
            m_Context.run();
            return;
        } catch (const std::exception&) {
        }
    }
}

void ViewServer::Engine::Accept() {
    m_Acceptor.async_accept([this](error_code error, tcp::socket socket) {
        if (m_Ending || error == net::error::operation_aborted) return;
        if (error) {
            // Without a handle for the connection it stays in the queue, and asking for it again at once fails as well.
            m_Pause.expires_after(kPause);
            m_Pause.async_wait([this](error_code) { Accept(); });
            return;
        }
        if (m_Connections < kMostConnections) {
            std::make_shared<Connection>(*this, std::move(socket))->Read();
        }
        Accept();
    });
}

bool ViewServer::Engine::Join(int number, const std::weak_ptr<Page>& page) {
    if (m_Ending || m_Pages.size() >= kMostPages) return false;
    m_Pages[number] = page;
    return true;
}

void ViewServer::Engine::Leave(int number) {
    if (m_Pages.erase(number) > 0) m_Listener->Left(number);
    if (m_Ending && m_Pages.empty()) m_GoodBye.cancel();
}

void ViewServer::Engine::SendText(int client, const std::shared_ptr<const std::string>& text, Need need) {
    const auto entry = m_Pages.find(client);
    if (entry == m_Pages.end()) return;
    if (const auto page = entry->second.lock()) page->SendText(text, need);
}

void ViewServer::Engine::SendTextToAll(const std::shared_ptr<const std::string>& text) {
    // A page that is given up leaves the list.
    const auto pages = m_Pages;
    for (const auto& [number, entry] : pages) {
        if (const auto page = entry.lock()) page->SendText(text, Need::kAlways);
    }
}

void ViewServer::Engine::SendPicture(int client, PictureMessage picture) {
    const auto entry = m_Pages.find(client);
    if (entry == m_Pages.end()) return;
    if (const auto page = entry->second.lock()) page->SendPicture(std::move(picture));
}

void ViewServer::Engine::End() {
    if (!m_Thread.joinable()) return;
    Post([this] {
        m_Ending = true;
        error_code ignored;
        m_Acceptor.close(ignored);
        m_GoodBye.expires_after(kGoodBye);
        m_GoodBye.async_wait([this](error_code) { m_Context.stop(); });
        const auto pages = m_Pages;
        for (const auto& [number, entry] : pages) {
            if (const auto page = entry.lock()) page->Close();
        }
        if (m_Pages.empty()) m_GoodBye.cancel();
    });
    m_Thread.join();
}

ViewServer::ViewServer(const ServerOptions& options) : m_Engine(std::make_unique<Engine>(options)) {}
ViewServer::~ViewServer() { End(); }

void ViewServer::Run(PageListener& listener) { m_Engine->Run(listener); }
void ViewServer::End() { m_Engine->End(); }
std::string ViewServer::Address() const { return m_Engine->Rules().PageAddress(); }
std::uint16_t ViewServer::Port() const { return m_Engine->Port(); }
bool ViewServer::IsOpenToOthers() const { return m_Engine->Rules().IsOpenToOthers(); }

void ViewServer::SendText(int client, std::string text, Need need) {
    m_Engine->Post([this, client, need, shared = std::make_shared<const std::string>(std::move(text))] {
        m_Engine->SendText(client, shared, need);
    });
}

void ViewServer::SendTextToAll(std::string text) {
    m_Engine->Post(
        [this, shared = std::make_shared<const std::string>(std::move(text))] { m_Engine->SendTextToAll(shared); });
}

void ViewServer::SendPicture(int client, PictureMessage picture) {
    m_Engine->Post(
        [this, client, message = std::move(picture)]() mutable { m_Engine->SendPicture(client, std::move(message)); });
}

}  // namespace zelcam
