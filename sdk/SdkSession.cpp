#include "sdk/SdkSession.h"

#include <system_error>
#include <thread>

#include "camera/ZelCameraFactory.h"
#include "platform/DynamicLibrary.h"
#include "sdk/CameraTables.h"
#include "sdk/Logger.h"
#include "sdk/PluginChoice.h"
#include "sdk/ZelCameraManager.h"

namespace zel {

// Never destroyed: a close may outlast the application's last call.
SdkSession& Session() {
    static SdkSession& session = *new SdkSession;
    return session;
}

bool SdkSession::Open() {
    platform::ScopedLock lock(m_Lock);
    if (!WaitForClose(lock)) return false;
    if (m_State == State::kOpen) return true;
    ZelCameraManager* const manager = ZelCameraManager::Create();
    if (!manager) {
        ZEL_LOG(SdkLogger().Get(), kLogError, "ZelSDKImpl::Open", "ZelCameraManager::Create() failed");
        return false;
    }
    Plugins().Settle();
    manager->Init();
    _zel_camera_manager = manager;
    m_State = State::kOpen;
    Tables().gate.Open(CameraTables::kNotOpen | CameraTables::kClosing);
    return true;
}

void SdkSession::Close() {
    CameraTables& tables = Tables();
    {
        platform::ScopedLock lock(m_Lock);
        if (m_State != State::kOpen) {
            WaitForClose(lock);
            return;
        }
        m_State = State::kClosing;
        tables.gate.Shut(CameraTables::kClosing);
    }
    {
        const platform::ScopedLock guard(tables.lock);
        tables.cameras.ForEach([](const RegisteredCamera& entry) { zel_camera_control_begin_end(entry.camera); });
    }
    if (!tables.CallerIsInside()) return Finish();
    if (FinishOnThread()) return;
    const platform::ScopedLock lock(m_Lock);
    m_Unfinished = true;
    m_Changed.notify_all();
}

// True when no close is under way any more; false for a caller that the close waits for. Finishes one that was left.
bool SdkSession::WaitForClose(platform::ScopedLock<platform::Mutex>& lock) {
    while (m_State == State::kClosing) {
        if (Tables().CallerIsInside()) return false;
        if (m_Unfinished) {
            m_Unfinished = false;
            lock.unlock();
            Finish();
            lock.lock();
            continue;
        }
        m_Changed.wait(lock);
    }
    return true;
}

// The library must stay in memory as long as the thread runs.
bool SdkSession::FinishOnThread() {
    platform::PinThisLibrary();
    try {
        std::thread([this] { Finish(); }).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

void SdkSession::Finish() {
    Tables().gate.AwaitAll();
    _zel_camera_manager.load()->Close();
    ZelCameraManager::Destroy();
    const platform::ScopedLock lock(m_Lock);
    _zel_camera_manager = nullptr;
    m_State = State::kClosed;
    m_Changed.notify_all();
}

}  // namespace zel
