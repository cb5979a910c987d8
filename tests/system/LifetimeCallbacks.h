// The callbacks of a random test: they tell of calls that must not come any more, and one of them at a time does
// something inside that was planned.
#ifndef TESTS_SYSTEM_LIFETIMECALLBACKS_H
#define TESTS_SYSTEM_LIFETIMECALLBACKS_H

#include <atomic>
#include <functional>
#include <tuple>

#include "include/ZelCameraInternal.h"
#include "include/ZelSDK.h"

namespace zel::test {

// Where a call is made: inside a callback, beside another thread's exchange, or with nobody inside.
enum Place { kImage, kNotification, kScratchpad, kControl, kControlEx, kText, kConnect, kExchange, kOutside };
inline constexpr const char* kPlaceNames[] = {"image", "notification", "scratchpad", "control", "extended control",
                                              "text",  "connect",      "exchange",   "nobody"};

// Sets of callbacks, a bit each.
constexpr unsigned Bit(Place place) { return 1u << place; }
constexpr unsigned kFrameEnds = Bit(kImage) | Bit(kNotification), kFrames = kFrameEnds | Bit(kScratchpad);
constexpr unsigned kControls = Bit(kControl) | Bit(kControlEx), kAll = 2 * Bit(kConnect) - 1;

class LifetimeCallbacks;

// The callbacks of one camera; the connect callback has a set of its own. They outlive the SDK.
struct CallbackSet {
    LifetimeCallbacks& all;
    std::atomic<unsigned> over{0};  // from here on a call of these is a fault
    std::atomic<int> inside[kConnect + 1] = {};

    int Inside(unsigned which) const {
        int sum = 0;
        for (int place = 0; place <= kConnect; ++place) sum += which >> place & 1 ? inside[place].load() : 0;
        return sum;
    }
};

class LifetimeCallbacks {
  public:
    std::atomic<int> unwanted{-1};               // a callback that was called although it is over
    std::atomic<int> connections{0}, told{-99};  // connect callbacks, and the number that the last one told
    // What else is done in every callback; its image where it has one.
    std::function<void(Place, const CallbackSet&, ZelImage*)> always;

    // With null they are taken away.
    static int Install(ZelCamera& camera, CallbackSet* set) {
        if (set) set->over = 0;
        camera.SetImageCallback(set ? ZelImageCallback{On<kImage>} : nullptr, set);
        camera.SetImageNotificationCallback(set ? ZelImageNotificationCallback{On<kNotification>} : nullptr, set);
        static_cast<ZelCameraInternal&>(camera).SetScratchpadCallback(
            set ? ZelScratchpadCallback{On<kScratchpad>} : nullptr, set);
        camera.SetCameraControlCallbackEx(set ? ZelCameraControlCallbackEx{On<kControlEx>} : nullptr, set);
        camera.SetCameraControlCallback(set ? ZelCameraControlCallback{On<kControl>} : nullptr, set);
        return camera.SetTextCommandCallback(set ? ZelTextCommandCallback{On<kText>} : nullptr, set);
    }
    static int InstallConnect(CallbackSet* set) {
        if (set) set->over = 0;
        return zel_set_camera_connect_callback(set ? ZelCameraConnectCallback{On<kConnect>} : nullptr, set);
    }

    // A frame stays readable in its callback, whatever happened to the camera in there.
    static void Read(const ZelImage& image) {
        static std::atomic<unsigned> sum{0};
        sum += image.pixels[0] + image.pixels[image.w * image.h - 1] + image.image_number;
    }

    // The next call of this callback does `what`.
    void Plan(CallbackSet& set, Place place, std::function<void()> what) {
        m_Planned = std::move(what);
        m_PlannedIn = &set.inside[place];
        m_State = kWaiting;
    }
    bool Done() const { return m_State == kDone; }
    // Takes the plan back; false when it is being done or was.
    bool TakeBack() {
        int waiting = kWaiting;
        return m_State.compare_exchange_strong(waiting, kIdle);
    }

  private:
    enum { kIdle, kWaiting, kDoing, kDone };

    // The context of each is its last argument.
    template <Place place, class Result, class... Arguments>
    static Result ZEL_CALL On(Arguments... arguments) {
        const auto all = std::tuple(arguments...);
        auto& set = *static_cast<CallbackSet*>(std::get<sizeof...(arguments) - 1>(all));
        if constexpr (place == kConnect) set.all.told = std::get<1>(all);
        ++set.inside[place];
        if (set.over & Bit(place)) set.all.unwanted = place;
        set.all.DoPlanned(set.inside[place]);
        ZelImage* image = nullptr;
        if constexpr (place == kImage || place == kScratchpad) image = std::get<0>(all);
        if (set.all.always) set.all.always(place, set, image);
        if (image) Read(*image);
        --set.inside[place];
        if constexpr (place == kConnect) ++set.all.connections;
        return Result();
    }
    void DoPlanned(const std::atomic<int>& callback) {
        int waiting = kWaiting;
        if (m_State != kWaiting || m_PlannedIn != &callback || !m_State.compare_exchange_strong(waiting, kDoing))
            return;
        m_Planned();
        m_State = kDone;
    }
    std::function<void()> m_Planned;
    std::atomic<const std::atomic<int>*> m_PlannedIn{nullptr};
    std::atomic<int> m_State{kIdle};
};

}  // namespace zel::test

#endif
