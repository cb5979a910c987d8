// Every camera object that the manager made and has not destroyed yet, with what it takes to destroy it. An object
// stays here when another one takes its place in the tables, so that closing the SDK finds all of them.
#ifndef SDK_CAMERAREGISTER_H
#define SDK_CAMERAREGISTER_H

#include <vector>

#include "link/CameraInterfaceLibrary.h"

class ZelCamera;

namespace zel {

struct RegisteredCamera {
    ZelCamera* camera = nullptr;  // null when only the transport could be made
    ICameraInterface* camera_interface = nullptr;
    DestroyCameraInterfaceFunction destroy_camera_interface = nullptr;
};

class CameraRegister {
  public:
    // False when memory ran out.
    bool Add(const RegisteredCamera& entry);
    // Whether this camera object is alive and was made around this transport.
    bool Holds(const ZelCamera* camera, const ICameraInterface* camera_interface) const;
    // Whether any entry has this transport, those being closed included.
    bool Knows(const ICameraInterface* camera_interface) const;
    // Takes all entries out of the register and lists them: those of `first`, in that order, then the others in the
    // order of their making. The list stays until the next call or ForgetClosed().
    const std::vector<RegisteredCamera>& CloseAll(ZelCamera* const* first, int first_count);
    void ForgetClosed() { m_Closing.clear(); }

  private:
    std::vector<RegisteredCamera> m_Entries;
    std::vector<RegisteredCamera> m_Closing;
};

// Closes and deletes the camera objects and has their transports destroyed. Transports that several entries share are
// destroyed once, after the last of these camera objects.
void DestroyCameras(const std::vector<RegisteredCamera>& cameras);

}  // namespace zel

#endif
