#include "bindings/c/Call.h"

#include <string>

namespace zel::c {

namespace {

const char* NameOf(HandleKind kind) {
    switch (kind) {
        case HandleKind::kSdk:
            return "zel_sdk";
        case HandleKind::kCamera:
            return "zel_camera";
        case HandleKind::kFrame:
            return "zel_frame";
        case HandleKind::kNone:
            break;
    }
    return "unknown";
}

template <class Object>
void Require(const std::shared_ptr<Object>& object, const void* handle, HandleKind wanted) {
    if (object) return;
    const std::string name = NameOf(wanted);
    if (!handle) throw Failure(ZEL_STATUS_BAD_HANDLE, "the " + name + " is null");
    const HandleKind kind = KindOf(handle);
    throw Failure(ZEL_STATUS_BAD_HANDLE, "the handle is no " + name + " that is open",
                  kind == wanted ? "it was closed or released, or never was one"
                                 : "it looks like a handle of the kind " + std::string(NameOf(kind)));
}

}  // namespace

const std::shared_ptr<SdkObject>& Call::FindSdk(const zel_sdk* handle) {
    m_Sdk = Sdks::Find(handle);
    Require(m_Sdk, handle, HandleKind::kSdk);
    return m_Sdk;
}

CameraObject& Call::FindCamera(const zel_camera* handle) {
    m_Camera = Cameras::Find(handle);
    Require(m_Camera, handle, HandleKind::kCamera);
    m_Sdk = m_Camera->sdk();
    return *m_Camera;
}

FrameObject& Call::FindFrame(const zel_frame* handle) {
    m_Frame = Frames::Find(handle);
    Require(m_Frame, handle, HandleKind::kFrame);
    m_Sdk = m_Frame->sdk();
    return *m_Frame;
}

SdkObject& Call::TakeSdk(const zel_sdk* handle) {
    m_Sdk = Sdks::Take(handle);
    Require(m_Sdk, handle, HandleKind::kSdk);
    return *m_Sdk;
}

CameraObject& Call::TakeCamera(const zel_camera* handle) {
    m_Camera = Cameras::Take(handle);
    Require(m_Camera, handle, HandleKind::kCamera);
    m_Sdk = m_Camera->sdk();
    return *m_Camera;
}

void Call::TakeFrame(const zel_frame* handle) {
    m_Frame = Frames::Take(handle);
    Require(m_Frame, handle, HandleKind::kFrame);
    m_Sdk = m_Frame->sdk();
}

zel_status Call::End(const char* function) noexcept {
    const zel_status status = RememberException();
    if (m_Sdk) m_Sdk->TellFailure(function);
    return status;
}

void AnswerText(std::string_view answer, char* text, std::size_t size, std::size_t* length) {
    if (length) *length = answer.size();
    if (size == 0) return;
    RequirePointer(text, "text");
    CutInto(text, size, answer);
    if (answer.size() >= size) {
        throw Failure(ZEL_STATUS_TOO_SMALL, "the text has " + std::to_string(answer.size()) + " characters",
                      "there is room for " + std::to_string(size - 1), "hand in a larger array");
    }
}

}  // namespace zel::c
