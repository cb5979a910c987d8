#include "tests/sdk/FakeCamera.h"

#include "camera/ZelCameraFactory.h"

namespace {
zel::test::FakeCamera* Fake(ZelCamera* camera) { return static_cast<zel::test::FakeCamera*>(camera); }
}  // namespace

ZelCamera* zel_camera_control_create(ICameraInterface* camera, const char* instance_name) {
    if (!camera || zel::test::FakeCamera::s_FailNext.exchange(false)) return nullptr;
    return new zel::test::FakeCamera(instance_name);
}
void zel_camera_control_destroy(ZelCamera* camera) { ZelDelete(camera); }
bool zel_camera_control_inside(ZelCamera*) { return false; }
void zel_camera_control_begin_end(ZelCamera*) {}
bool zel_camera_control_retire(ZelCamera* camera) { return !Fake(camera)->m_InUse; }
void zel_camera_control_suspend(ZelCamera* camera) { Fake(camera)->m_Suspended = true; }
void zel_camera_control_resume(ZelCamera* camera) { Fake(camera)->m_Suspended = false; }
bool zel_camera_control_suspended(ZelCamera* camera) { return Fake(camera)->m_Suspended; }
void zel_camera_control_forget_transport(ZelCamera*) {}
