// A stay inside the camera manager: there is one, and it is not destroyed meanwhile. Converts to false while the SDK is
// not open.
#ifndef SDK_MANAGERUSE_H
#define SDK_MANAGERUSE_H

#include "sdk/CameraTables.h"
#include "sdk/ZelCameraManager.h"

namespace zel {

class ManagerUse {
  public:
    ManagerUse() : m_Entry(Tables().gate), m_Manager(m_Entry ? _zel_camera_manager.load() : nullptr) {}

    explicit operator bool() const { return m_Manager != nullptr; }
    ZelCameraManager* operator->() const { return m_Manager; }

  private:
    const platform::OperationGate::Entry m_Entry;
    ZelCameraManager* const m_Manager;
};

}  // namespace zel

#endif
