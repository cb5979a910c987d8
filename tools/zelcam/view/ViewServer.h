// The viewer's server: HTTP for the page's files, a WebSocket for each page. It knows nothing of cameras.
#ifndef ZELCAM_VIEWSERVER_H
#define ZELCAM_VIEWSERVER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "tools/zelcam/view/Picture.h"

namespace zelcam {

// Who is told what the pages do. Called on the server's thread, which goes on when it returns; must not throw.
class PageListener {
  public:
    // client: its number, from 1 on; none comes twice.
    virtual void Joined(int client) = 0;
    virtual void Said(int client, std::string_view text) = 0;
    virtual void Left(int client) = 0;

  protected:
    ~PageListener() = default;
};

// What can be said to the pages. Any thread may; what is for a page that has left is dropped.
class PageOutlet {
  public:
    // A text that a page which is behind can do without is skipped for it.
    enum class Need { kAlways, kWhenInTime };
    virtual void SendText(int client, std::string text, Need need = Need::kAlways) = 0;
    virtual void SendTextToAll(std::string text) = 0;
    virtual void SendPicture(int client, PictureMessage picture) = 0;

  protected:
    ~PageOutlet() = default;
};

struct ServerOptions {
    std::string address = "127.0.0.1";  // to listen at
    std::uint16_t port = 0;             // 0: one that is free
    std::string token;
};

class ViewServer : public PageOutlet {
  public:
    static constexpr std::size_t kMostPages = 16;
    static constexpr std::size_t kLongestText = 16384;  // that a page may send

    // Listens, and answers from Run() on. Throws Failure when the address can't be had.
    explicit ViewServer(const ServerOptions& options);
    // Says good-bye to the pages, for a second at most.
    ~ViewServer();
    ViewServer(const ViewServer&) = delete;
    ViewServer& operator=(const ViewServer&) = delete;

    // Begins to answer. The listener must live until End() has returned.
    void Run(PageListener& listener);
    // The same as the end of this object: nobody is told anything afterwards.
    void End();

    // For a browser on this computer: "http://127.0.0.1:8080/TOKEN/".
    std::string Address() const;
    std::uint16_t Port() const;
    bool IsOpenToOthers() const;

    void SendText(int client, std::string text, Need need = Need::kAlways) override;
    void SendTextToAll(std::string text) override;
    void SendPicture(int client, PictureMessage picture) override;

  private:
    class Engine;
    std::unique_ptr<Engine> m_Engine;
};

}  // namespace zelcam

#endif
