/// The SDK object, open while anything of the layer needs it.
#ifndef ZEL_LAYER_SDKSTATE_H
#define ZEL_LAYER_SDKSTATE_H

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "ZelSDK.h"
#include "zel/CameraInfo.h"
#include "zel/Error.h"
#include "zel/HotPlug.h"
#include "zel/detail/Registry.h"
#include "zel/detail/Texts.h"

namespace zel::detail {

class CameraState;

/// One for the whole program while any Sdk, Camera or Frame lives.
class SdkState {
  public:
    static std::shared_ptr<SdkState> shared() {
        static auto* const last = new std::weak_ptr<SdkState>;
        const std::lock_guard lock(life_mutex());
        if (auto state = last->lock()) return state;
        auto state = std::make_shared<SdkState>();
        state->m_Context = Registry<SdkState>::add(state);
        *last = state;
        return state;
    }

    SdkState() : m_Native(zel_create_sdk()) {
        if (m_Native && m_Native->Open()) return;
        zel_destroy_sdk(m_Native);
        throw Error(ErrorKind::failed, "the SDK can't be opened", "memory ran out or it is just being closed",
                    "try again");
    }
    ~SdkState() {
        Registry<SdkState>::remove(m_Context);
        const std::lock_guard lock(life_mutex());
        zel_destroy_sdk(m_Native);
    }
    SdkState(const SdkState&) = delete;
    SdkState& operator=(const SdkState&) = delete;

    ZelSDK* native() const { return m_Native; }

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

    void on_hot_plug(HotPlugHandler handler) {
        auto shared = handler ? std::make_shared<const HotPlugHandler>(std::move(handler)) : nullptr;
        const bool wanted = shared != nullptr;
        {
            const std::lock_guard lock(m_Mutex);
            m_Handler = std::move(shared);
        }
        if (!zel_set_camera_connect_callback(wanted ? &SdkState::connected : nullptr, m_Context) && wanted) {
            throw Error(ErrorKind::refused, "hot-plug events can't be watched", "the SDK is not open");
        }
    }

    /// The open cameras, each open once.
    std::mutex cameras_mutex;
    std::map<const void*, std::weak_ptr<CameraState>> cameras;

  private:
    // The next SDK object is created when the last one is gone. Never destroyed, as the registry.
    static std::mutex& life_mutex() {
        static auto* const mutex = new std::mutex;
        return *mutex;
    }

    static void ZEL_CALL connected(int event_id, int camera_index, const char* name, const char* serial_number,
                                   const char* interface_type, void* context) {
        const auto state = Registry<SdkState>::find(context);
        if (!state) return;
        std::shared_ptr<const HotPlugHandler> handler;
        {
            const std::lock_guard lock(state->m_Mutex);
            handler = state->m_Handler;
        }
        if (!handler) return;
        try {
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
    std::mutex m_Mutex;
    std::shared_ptr<const HotPlugHandler> m_Handler;
};

}  // namespace zel::detail

#endif
