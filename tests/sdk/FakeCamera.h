// A stand-in for the camera object and its factory: it notes what the manager does with it.
#ifndef TESTS_SDK_FAKECAMERA_H
#define TESTS_SDK_FAKECAMERA_H

#include <atomic>
#include <string>
#include <vector>

#include "include/ZelCamera.h"

namespace zel::test {

class FakeCamera final : public ZelCamera {
  public:
    explicit FakeCamera(const char* name) : m_Name(name ? name : "(null)") { ++s_Alive; }
    ZEL_IMPLEMENTATION_DESTRUCTOR(FakeCamera)
    ~FakeCamera() {
        --s_Alive;
        s_Journal.push_back("destroy " + m_Name);
    }
    bool Close() override {
        s_Journal.push_back("close " + m_Name);
        return true;
    }

    const std::string m_Name;          // the factory's second argument
    std::atomic<bool> m_InUse{false};  // can't be retired
    std::atomic<bool> m_Suspended{false};

    inline static std::atomic<int> s_Alive{0};
    inline static std::atomic<bool> s_FailNext{false};  // the next object is not made
    inline static std::vector<std::string> s_Journal;   // "close NAME", "destroy NAME", oldest first
};

}  // namespace zel::test

#endif
