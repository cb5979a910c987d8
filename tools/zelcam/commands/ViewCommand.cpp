// zelcam view: a camera live in a browser.
#include <chrono>
#include <cstdio>
#include <thread>

#include "platform/Browser.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/NumberCheck.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/view/Access.h"
#include "tools/zelcam/view/Viewer.h"

namespace zelcam {

namespace {

// How long the user's wish to end may go unnoticed.
constexpr std::chrono::milliseconds kEndCheck{50};

class ViewCommand : public Command {
  public:
    const char* Name() const override { return "view"; }
    const char* Help() const override { return "Show a camera live in a web browser, with all its settings"; }
    const char* Example() const override { return "view --camera 300101 --exposure 20000"; }

    void Declare(CLI::App& command) override {
        command.add_option("-c,--camera", m_Hub.camera,
                           "Number or serial number, see 'zelcam list' (default: the first one, now or later)");
        command.add_option("-p,--port", m_Server.port, "TCP port of the page; 0: one that is free")
            ->capture_default_str();
        command.add_flag("--no-browser", m_NoBrowser, "Print the page's address and open no browser");
        command
            .add_option("--listen", m_Server.address,
                        "Address of this computer where the page can be had: others that know the page's address can "
                        "then use the camera")
            ->capture_default_str();
        command.add_option("-o,--out", m_Hub.folder, "Folder for snapshots and recordings, made when missing")
            ->capture_default_str();
        command.add_option("-s,--seconds", m_Seconds, "End after so many seconds (default: with Ctrl-C)")
            ->check(SecondsBetween(0.01, 1e7));
        m_Hub.settings.Declare(command);
        // The page waits for as long as the user looks.
        command.remove_option(command.get_option("--timeout"));
        m_Hub.settings.DeclareProcessing(command);
        DeclareJson(command);
    }

    void Run(Json& result) override {
        m_Server.token = NewToken();
        CatchInterrupts();
        Viewer viewer(m_Server, m_Hub);
        Tell(viewer.Server());
        const auto start = std::chrono::steady_clock::now();
        const std::chrono::duration<double> seconds(m_Seconds);
        while (!Interrupted() && !viewer.QuitWanted()) {
            if (m_Seconds > 0.0 && std::chrono::steady_clock::now() - start >= seconds) break;
            std::this_thread::sleep_for(kEndCheck);
        }
        if (m_Json) return;
        Print("{}\n", viewer.Summary());
        static_cast<void>(result);
    }

  private:
    void Tell(const ViewServer& server) const {
        const std::string address = server.Address();
        if (server.IsOpenToOthers()) {
            std::fprintf(stderr,
                         "zelcam: whoever knows the page's address can use the camera from other computers, and "
                         "nothing is encrypted on the way\n");
        }
        if (m_Json) {
            PrintJson({{"address", address}, {"port", server.Port()}}, -1);
        } else {
            Print("the viewer is at {}, Ctrl-C ends it\n", address);
        }
        FlushOutput();
        if (m_NoBrowser || zel::platform::OpenInBrowser(address)) return;
        std::fprintf(stderr, "zelcam: no browser could be opened; open the address in one\n");
    }

    ServerOptions m_Server;
    HubOptions m_Hub;
    double m_Seconds = 0.0;
    bool m_NoBrowser = false;
};

}  // namespace

std::unique_ptr<Command> MakeViewCommand() { return std::make_unique<ViewCommand>(); }

}  // namespace zelcam
