// A stand-in for the camera object and its factory: it notes what the manager does with it.
#ifndef TESTS_SDK_FAKECAMERA_H
#define TESTS_SDK_FAKECAMERA_H

#include <atomic>
#include <string>
#include <vector>

#include "include/ZelCamera.h"

class ICameraInterface;

namespace zel::test {

class FakeCamera final : public ZelCamera {
  public:
    FakeCamera(ICameraInterface* transport, const char* name);
    ZEL_IMPLEMENTATION_DESTRUCTOR(FakeCamera)
    ~FakeCamera();
    bool Close() override;

    ICameraInterface* const m_Transport;
    const std::string m_Name;  // the factory's second argument; "(null)" for a null one

    std::atomic<bool> m_InUse{false};  // can't be retired
    std::atomic<bool> m_Suspended{false};

    // What happened since the last call, oldest first: "create NAME", "close NAME", "destroy NAME".
    static std::vector<std::string> TakeJournal();
    static int Alive();
    // The next object is not made.
    static void FailNext();
};

}  // namespace zel::test

#endif
