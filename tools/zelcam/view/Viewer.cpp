#include "tools/zelcam/view/Viewer.h"

#include <exception>
#include <utility>

#include "tools/zelcam/text/TextTools.h"
#include "tools/zelcam/view/ViewMessages.h"

namespace zelcam {

Viewer::Viewer(const ServerOptions& server, const HubOptions& hub)
    : m_Server(server),
      m_Hub(hub, m_Server, m_Taker, m_Newest, m_Loans),
      m_Pictures(m_Server, m_Newest, m_Bell, m_Taker, [this] { return m_Hub.Condition(); }) {
    m_Hub.OnRun([this] { m_Pictures.BeginRun(); });
    m_Hub.Begin();
    m_Server.Run(*this);
}

// Nobody asks for anything any more, and no run begins, when the parts end.
Viewer::~Viewer() {
    m_Server.End();
    m_Hub.End();
}

std::string Viewer::Summary() const {
    const TakenFrames taken = m_Taker.Taken();
    const CameraCondition condition = m_Hub.Condition();
    const std::uint64_t no_buffer = taken.missing > condition.lost_on_link ? taken.missing - condition.lost_on_link : 0;
    return Counted(taken.delivered, "frame") + " delivered in the last run; " + std::to_string(condition.lost_on_link) +
           " lost on the link, " + std::to_string(no_buffer) + " without a free buffer";
}

void Viewer::Joined(int client) {
    m_Pictures.Join(client);
    m_Hub.Welcome(client);
}

void Viewer::Left(int client) { m_Pictures.Leave(client); }

void Viewer::Said(int client, std::string_view text) {
    try {
        Json message = ParseMessage(text);
        const std::string& type = message["type"].get_ref<const std::string&>();
        if (type == "view") return m_Pictures.Look(client, ViewIn(message));
        if (type == "probe") return m_Pictures.Measure(client, ProbeIn(message));
        if (type == "shown") {
            const double at = Has(message, "at") && message["at"].is_number() ? message["at"].get<double>() : 0.0;
            return m_Pictures.Shown(client, NumberIn(message, "frame", 0, 0xffffffffu), at);
        }
        m_Hub.Request(client, std::move(message));
    } catch (const std::exception& error) {
        m_Server.SendText(client, MessageText(EventMessage("error", error.what())));
    }
}

}  // namespace zelcam
