#include "sdk/CameraRegister.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "camera/ZelCameraFactory.h"
#include "include/ZelCamera.h"
#include "sdk/Logger.h"

namespace zel {

bool CameraRegister::Add(const RegisteredCamera& entry) try {
    // A transport whose camera object could not be made earlier has one now.
    for (RegisteredCamera& known : m_Entries) {
        if (!known.camera && known.camera_interface == entry.camera_interface) {
            known = entry;
            return true;
        }
    }
    m_Entries.push_back(entry);
    return true;
} catch (const std::exception&) {
    return false;
}

void CameraRegister::Remove(const ZelCamera* camera) {
    std::erase_if(m_Entries, [=](const RegisteredCamera& entry) { return entry.camera == camera; });
}

ZelCamera* CameraRegister::Current(const ICameraInterface* camera_interface) const {
    const auto newest = std::find_if(m_Entries.rbegin(), m_Entries.rend(), [=](const RegisteredCamera& entry) {
        return entry.camera_interface == camera_interface && !entry.retired;
    });
    return newest == m_Entries.rend() ? nullptr : newest->camera;
}

void CameraRegister::Retire(const ZelCamera* camera) {
    for (RegisteredCamera& entry : m_Entries) {
        if (entry.camera == camera) entry.retired = true;
    }
}

void CameraRegister::HandOut(const ZelCamera* camera) {
    for (RegisteredCamera& entry : m_Entries) {
        if (entry.camera == camera) entry.handed_out = true;
    }
}

bool CameraRegister::HandedOut(const ZelCamera* camera) const {
    return std::any_of(m_Entries.begin(), m_Entries.end(),
                       [=](const RegisteredCamera& entry) { return entry.camera == camera && entry.handed_out; });
}

bool CameraRegister::Knows(const ICameraInterface* camera_interface) const {
    const auto has = [&](const RegisteredCamera& entry) { return entry.camera_interface == camera_interface; };
    return std::any_of(m_Entries.begin(), m_Entries.end(), has) || std::any_of(m_Closing.begin(), m_Closing.end(), has);
}

const std::vector<RegisteredCamera>& CameraRegister::CloseAll(ZelCamera* const* first, int first_count) {
    auto next = m_Entries.begin();
    for (ZelCamera* const* camera = first; camera != first + first_count; ++camera) {
        const auto found = std::find_if(
            next, m_Entries.end(), [&](const RegisteredCamera& entry) { return *camera && entry.camera == *camera; });
        if (found != m_Entries.end()) {
            std::rotate(next, found, found + 1);
            ++next;
        }
    }
    m_Closing = std::exchange(m_Entries, {});
    return m_Closing;
}

void CameraRegister::Forget(const ZelCamera* camera) {
    for (RegisteredCamera& entry : m_Closing) {
        if (entry.camera == camera) entry.camera = nullptr;
    }
}

}  // namespace zel
