/// The SDK object, open while anything of the layer needs it.
#ifndef ZEL_LAYER_SDKSTATE_H
#define ZEL_LAYER_SDKSTATE_H

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ZelUsers.h"
#include "zel/CameraInfo.h"
#include "zel/Error.h"
#include "zel/HotPlug.h"
#include "zel/detail/Calls.h"
#include "zel/detail/Registry.h"
#include "zel/detail/Texts.h"

namespace zel::detail {

class CameraState;

/// One for all of the program that this header was compiled into together, while any Sdk, Camera or Frame of it lives.
class SdkState {
  public:
    static std::shared_ptr<SdkState> shared() {
        if (auto state = current()) return state;
        auto state = std::make_shared<SdkState>();
        state->m_Context = Registry<SdkState>::add(state);
        Life& all = life();
        const std::lock_guard lock(all.mutex);
        if (auto other = all.last.lock()) return other;
        all.last = state;
        return state;
    }

    SdkState() : m_Native(zel_retain_sdk()) {
        if (m_Native) return;
        throw Error(ErrorKind::failed, "the SDK can't be opened", "memory ran out or it is just being closed",
                    "try again");
    }
    ~SdkState() {
        Registry<SdkState>::remove(m_Context);
        zel_release_sdk();
    }
    SdkState(const SdkState&) = delete;
    SdkState& operator=(const SdkState&) = delete;

    ZelSDK* native() const { return m_Native; }

    /// The cameras that a search finds.
    std::vector<CameraInfo> search() {
        const std::lock_guard lock(m_SearchMutex);
        std::vector<CameraInfo> found;
        const int count = m_Native->GetNumberOfCameras();
        for (int number = 0; number < count; ++number) found.push_back(describe(number));
        return found;
    }
    /// What the last search knows of a camera, and its object: null when there is none.
    CameraInfo info(int number) {
        const std::lock_guard lock(m_SearchMutex);
        return describe(number);
    }
    ZelCamera* camera(int number) {
        const std::lock_guard lock(m_SearchMutex);
        return m_Native->GetCamera(number);
    }

    /// `owner` hears of cameras that are plugged in and unplugged from now on, and who did before does not.
    void on_hot_plug(const void* owner, HotPlugHandler handler) {
        auto shared = handler ? std::make_shared<const HotPlugHandler>(std::move(handler)) : nullptr;
        const bool wanted = shared != nullptr;
        {
            const std::lock_guard lock(m_Mutex);
            m_Handler.swap(shared);
            m_HandlerOwner = owner;
        }
        // It stays when nobody listens any more, so that two threads can't leave it switched off by mistake.
        if (wanted && !zel_set_camera_connect_callback(&SdkState::connected, m_Context)) {
            throw Error(ErrorKind::refused, "hot-plug events can't be watched", "the SDK is not open");
        }
    }
    /// The owner is gone: its handler is switched off and not running any more, unless this is called inside a handler.
    void end_hot_plug(const void* owner) {
        std::shared_ptr<const HotPlugHandler> handler;
        {
            const std::lock_guard lock(m_Mutex);
            if (m_HandlerOwner == owner) m_Handler.swap(handler);
        }
        Call::wait_for(owner);
    }

    /// The open cameras, each open once.
    std::mutex cameras_mutex;
    std::map<const void*, std::weak_ptr<CameraState>> cameras;

  private:
    // Never destroyed, as the registry.
    struct Life {
        std::mutex mutex;
        std::weak_ptr<SdkState> last;
    };
    static std::shared_ptr<SdkState> current() {
        Life& all = life();
        const std::lock_guard lock(all.mutex);
        return all.last.lock();
    }
    static Life& life() {
        static Life* const all = new Life;
        return *all;
    }

    CameraInfo describe(int number) const {
        constexpr int kAddresses = 3;
        CameraInfo info;
        info.number = number;
        info.name = text_or_empty(m_Native->GetCameraName(number));
        info.serial = text_or_empty(m_Native->GetCameraSerialNumStr(number));
        info.interface_type = text_or_empty(m_Native->GetCameraInterfaceTypeStr(number));
        for (int select = 0; select < kAddresses; ++select) {
            std::string address = text_or_empty(m_Native->GetCameraAddressStr(number, select));
            if (!address.empty()) info.addresses.push_back(std::move(address));
        }
        return info;
    }

    static void ZEL_CALL connected(int event_id, int camera_index, const char* name, const char* serial_number,
                                   const char* interface_type, void* context) {
        std::optional<Call> call;  // over when nothing is held here any more
        const auto state = Registry<SdkState>::find(context);
        if (!state) return;
        std::shared_ptr<const HotPlugHandler> handler;
        try {
            {
                const std::lock_guard lock(state->m_Mutex);
                handler = state->m_Handler;
                if (!handler) return;
                call.emplace(state->m_HandlerOwner);
            }
            HotPlugEvent event;
            event.connected = event_id == ZEL_CAMERA_CONNECT;
            event.camera.number = camera_index;
            event.camera.name = text_or_empty(name);
            event.camera.serial = text_or_empty(serial_number);
            event.camera.interface_type = text_or_empty(interface_type);
            (*handler)(event);
        } catch (...) {
            // The plug-in that called can't do anything about it.
        }
    }

    ZelSDK* m_Native;
    void* m_Context = nullptr;
    std::mutex m_SearchMutex;  // the texts of a search are replaced by the next one
    std::mutex m_Mutex;        // never held while the SDK or the application is called
    std::shared_ptr<const HotPlugHandler> m_Handler;
    const void* m_HandlerOwner = nullptr;
};

/// What an Sdk object keeps: the SDK, and the handler that was set there.
class SdkUse {
  public:
    SdkUse() : m_State(SdkState::shared()) {}
    ~SdkUse() { m_State->end_hot_plug(this); }
    SdkUse(const SdkUse&) = delete;
    SdkUse& operator=(const SdkUse&) = delete;

    const std::shared_ptr<SdkState>& state() const { return m_State; }
    void on_hot_plug(HotPlugHandler handler) { m_State->on_hot_plug(this, std::move(handler)); }

  private:
    std::shared_ptr<SdkState> m_State;
};

}  // namespace zel::detail

#endif
