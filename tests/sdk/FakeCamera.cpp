#include "tests/sdk/FakeCamera.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "camera/ZelCameraFactory.h"

namespace zel::test {

namespace {

std::mutex s_Lock;
std::vector<std::string> s_Journal;
std::atomic<int> s_Alive{0};
std::atomic<bool> s_FailNext{false};

void Note(const std::string& line) {
    const std::lock_guard guard(s_Lock);
    s_Journal.push_back(line);
}

}  // namespace

FakeCamera::FakeCamera(ICameraInterface* transport, const char* name)
    : m_Transport(transport), m_Name(name ? name : "(null)") {
    ++s_Alive;
    Note("create " + m_Name);
}

FakeCamera::~FakeCamera() {
    --s_Alive;
    Note("destroy " + m_Name);
}

bool FakeCamera::Close() {
    Note("close " + m_Name);
    return true;
}

std::vector<std::string> FakeCamera::TakeJournal() {
    const std::lock_guard guard(s_Lock);
    return std::exchange(s_Journal, {});
}

int FakeCamera::Alive() { return s_Alive; }

void FakeCamera::FailNext() { s_FailNext = true; }

}  // namespace zel::test

ZelCamera* zel_camera_control_create(ICameraInterface* camera, const char* instance_name) {
    if (!camera || zel::test::s_FailNext.exchange(false)) return nullptr;
    return new zel::test::FakeCamera(camera, instance_name);
}

void zel_camera_control_destroy(ZelCamera* camera) { ZelDelete(camera); }

bool zel_camera_control_inside(ZelCamera*) { return false; }
void zel_camera_control_begin_end(ZelCamera*) {}
bool zel_camera_control_retire(ZelCamera* camera) { return !static_cast<zel::test::FakeCamera*>(camera)->m_InUse; }
void zel_camera_control_suspend(ZelCamera* camera) { static_cast<zel::test::FakeCamera*>(camera)->m_Suspended = true; }
void zel_camera_control_resume(ZelCamera* camera) { static_cast<zel::test::FakeCamera*>(camera)->m_Suspended = false; }
bool zel_camera_control_suspended(ZelCamera* camera) {
    return static_cast<zel::test::FakeCamera*>(camera)->m_Suspended;
}
void zel_camera_control_forget_transport(ZelCamera*) {}
