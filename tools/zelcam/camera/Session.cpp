#include "tools/zelcam/camera/Session.h"

#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

constexpr int kAddresses = 3;

std::string ErrorText(ZelCamera* camera) {
    const int code = camera->GetLastError();
    if (code == ZEL_NO_ERROR) return "no error code";
    const char* const name = camera->GetLastErrorStr();
    return name ? name : "error code " + std::to_string(code);
}

}  // namespace

Session::Session() : m_Sdk(zel_create_sdk()) {
    if (!m_Sdk || !m_Sdk->Open()) {
        if (m_Sdk) zel_destroy_sdk(m_Sdk);
        throw Failure("the SDK can't be opened", "memory ran out", "close other programs and try again");
    }
    const int count = m_Sdk->GetNumberOfCameras();
    for (int number = 0; number < count; ++number) m_Cameras.push_back(Describe(number));
}

Session::~Session() { zel_destroy_sdk(m_Sdk); }

CameraEntry Session::Describe(int number) const {
    CameraEntry entry;
    entry.number = number;
    entry.name = TextOrEmpty(m_Sdk->GetCameraName(number));
    entry.serial = TextOrEmpty(m_Sdk->GetCameraSerialNumStr(number));
    entry.interface_type = TextOrEmpty(m_Sdk->GetCameraInterfaceTypeStr(number));
    for (int select = 0; select < kAddresses; ++select) {
        const std::string address = TextOrEmpty(m_Sdk->GetCameraAddressStr(number, select));
        if (!address.empty()) entry.addresses.push_back(address);
    }
    return entry;
}

OpenCamera::OpenCamera(const Session& session, const std::string& wanted)
    : m_Entry(session.Describe(SelectCamera(session.Cameras(), wanted))),
      m_Camera(session.Sdk()->GetCamera(m_Entry.number)) {
    if (!m_Camera) {
        throw Failure(Label() + " can't be used", "its interface library did not create it",
                      "check that no other program holds it", kNoCamera);
    }
    if (!m_Camera->Open()) {
        throw Failure(Label() + " can't be opened", ErrorText(m_Camera),
                      "check cable and power, and that no other program holds it", kNoCamera);
    }
}

OpenCamera::~OpenCamera() { m_Camera->Close(); }

std::string OpenCamera::LastError() const { return ErrorText(m_Camera); }

}  // namespace zelcam
