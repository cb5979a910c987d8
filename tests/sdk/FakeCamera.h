// A stand-in for the camera object and its factory: it notes what the manager does with it.
#ifndef TESTS_SDK_FAKECAMERA_H
#define TESTS_SDK_FAKECAMERA_H

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

    // What happened since the last call, oldest first: "create NAME", "close NAME", "destroy NAME".
    static std::vector<std::string> TakeJournal();
    static int Alive();
    // The next object is not made.
    static void FailNext();
};

}  // namespace zel::test

#endif
