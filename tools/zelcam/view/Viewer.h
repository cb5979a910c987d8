// The viewer: its server, the cameras behind it, and the thread that makes pictures between them.
#ifndef ZELCAM_VIEWER_H
#define ZELCAM_VIEWER_H

#include <string>

#include "tools/zelcam/view/CameraHub.h"
#include "tools/zelcam/view/LiveFrame.h"
#include "tools/zelcam/view/PictureService.h"
#include "tools/zelcam/view/ViewServer.h"

namespace zelcam {

class Viewer : private PageListener {
  public:
    // Opens a camera when there is one, and serves. Throws.
    Viewer(const ServerOptions& server, const HubOptions& hub);
    ~Viewer();

    const ViewServer& Server() const { return m_Server; }
    bool QuitWanted() const { return m_Hub.QuitWanted(); }
    // "120 frames delivered; 0 lost on the link, 0 without a free buffer", of the last run
    std::string Summary() const;

  private:
    void Joined(int client) override;
    void Said(int client, std::string_view text) override;
    void Left(int client) override;

    ViewServer m_Server;
    Bell m_Bell;
    NewestFrame m_Newest{m_Bell};
    FrameLoans m_Loans;
    FrameTaker m_Taker{m_Newest, m_Loans};
    CameraHub m_Hub;
    PictureService m_Pictures;
};

}  // namespace zelcam

#endif
