// The SDK object and one open camera, released on every way out.
#ifndef ZELCAM_SESSION_H
#define ZELCAM_SESSION_H

#include <string>
#include <vector>

#include "tools/zelcam/camera/CameraSelector.h"

class ZelCamera;
class ZelSDK;

namespace zelcam {

class Session {
  public:
    // Opens the SDK and looks for cameras. Throws Failure.
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    ZelSDK* Sdk() const { return m_Sdk; }
    const std::vector<CameraEntry>& Cameras() const { return m_Cameras; }
    // The description of a camera as the SDK has it now.
    CameraEntry Describe(int number) const;

  private:
    ZelSDK* m_Sdk;
    std::vector<CameraEntry> m_Cameras;
};

// One camera, open while this object lives.
class OpenCamera {
  public:
    // wanted: as SelectCamera() takes it. Throws Failure.
    OpenCamera(const Session& session, const std::string& wanted);
    ~OpenCamera();
    OpenCamera(const OpenCamera&) = delete;
    OpenCamera& operator=(const OpenCamera&) = delete;

    ZelCamera* operator->() const { return m_Camera; }
    ZelCamera* Get() const { return m_Camera; }
    const CameraEntry& Entry() const { return m_Entry; }
    // "camera 0"
    std::string Label() const { return "camera " + std::to_string(m_Entry.number); }
    // Text of the transport's last error: "ZEL_ERROR_CAMERA_COMM_FAILURE", "no error code".
    std::string LastError() const;

  private:
    CameraEntry m_Entry;
    ZelCamera* m_Camera;
};

}  // namespace zelcam

#endif
